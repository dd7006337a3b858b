// Walks the columns of a pass, driven from the output. A strip of 1024 columns is aligned at once,
// so that the run of a nozzle row is sought and read once for all of them. Then it is laid in tiles
// of 256 columns, which stay in the first cache while the nozzles, eight of both heads at a time,
// put their 16 bytes into every one. Host's thread; there is one strip, so walks never run side by
// side.
#ifndef QRN_RASTER_TILE_WALK_H_
#define QRN_RASTER_TILE_WALK_H_

#include <cstddef>
#include <cstdint>

#include "job/job.h"
#include "raster/convert.h"

namespace qrn {

// The columns of the pass in the order in which pixels come: forward they rise, in reverse they
// fall.
struct ColumnWalk {
  std::uint32_t phase;
  bool reverse;
  std::uint32_t columns;         // that any nozzle row reaches
  std::uint32_t firstColumn;     // of PrintOutBuf, where the walk begins
  std::uint16_t firstRowColumn;  // column offset of the nozzle row that comes first in the walk
};

// Lays the dots of all entered rows: every byte of the walk's columns is written.
void LayColumns(const Job& job, const ConvertParams& params, const ColumnWalk& walk);

// Takes the printed pixels of the phase out of the rows.
void TakeOutPixels(const Job& job, const ConvertParams& params, std::uint32_t phase);

}  // namespace qrn

#endif  // QRN_RASTER_TILE_WALK_H_
