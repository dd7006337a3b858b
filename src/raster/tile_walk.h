// Packs the columns of a pass, driven from the output. It walks them in strips and tiles:
//
//   strip   1024 columns. The runs of all nozzle rows are aligned for it, so that each run is
//           looked up and read once for all of its columns.
//   tile    256 columns of a strip. Of every one the nozzles, eight of both heads at a time, write
//           16 bytes of either plane: the cache lines of these stay in the first cache.
//
// Both are in the scratch of the job's memory, so walks never run side by side. Host's thread.
#ifndef QRN_RASTER_TILE_WALK_H_
#define QRN_RASTER_TILE_WALK_H_

#include <cstddef>
#include <cstdint>

#include "base/bytes.h"
#include "job/job.h"
#include "job/print_out.h"
#include "raster/convert_params.h"
#include "raster/kernels.h"

namespace qrn {

constexpr std::uint32_t kStripColumns = kPixelsPerByte * kStripBytes;
// 32 KiB of cache lines: two for each column, one with 16 bytes of either plane.
constexpr std::uint32_t kTileColumns = 256;
constexpr std::uint32_t kJetGroups = DivUp(kNozzles, kGroupNozzles);

// The working memory of a walk. Rows that a group's occupancy does not name are zeros, from one
// walk to the next.
struct ConvertScratch {
  JetGroup groups[kJetGroups];  // a strip, aligned
  alignas(kCacheLineBytes) std::uint8_t tile[kTileColumns * kColumnBytes];
};
// The size to obtain, with room to align it. It starts as all zeros.
constexpr std::size_t kConvertScratchBytes = sizeof(ConvertScratch) + alignof(ConvertScratch);
// The job's. Requires: its memory.
ConvertScratch& ScratchOf(Job& job);

// The columns of the pass in the order in which the pixels of a line reach them: forward they rise,
// in reverse they fall.
struct ColumnWalk {
  std::uint32_t phase;
  bool reverse;
  std::uint32_t columns;         // that any nozzle row reaches
  std::uint32_t firstColumn;     // of PrintOutBuf, where the walk begins
  std::uint16_t firstRowColumn;  // column offset of the nozzle row that comes first in the walk
  // Lowest of `count` columns from the walk's column `from` on.
  std::uint32_t LowestColumn(std::uint32_t from, std::uint32_t count) const {
    return reverse ? firstColumn + 1 - from - count : firstColumn + from;
  }
};

// Packs the dots of all entered nozzle rows: every byte of the walk's columns is written.
void PackColumns(Job& job, const ConvertParams& params, const ColumnWalk& walk);

}  // namespace qrn

#endif  // QRN_RASTER_TILE_WALK_H_
