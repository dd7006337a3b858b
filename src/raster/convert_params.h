// What goes into the conversion of a pass and what comes out of it. ConvertPass and ConvertColor
// fill the one in, a worker reads it and returns the other. Host's thread.
#ifndef QRN_RASTER_CONVERT_PARAMS_H_
#define QRN_RASTER_CONVERT_PARAMS_H_

#include <cstddef>
#include <cstdint>

#include "job/heads.h"

namespace qrn {

// One nozzle row that prints in the pass, and the lines that it prints.
struct NozzleRow {
  std::uint8_t head, slot;  // 0 = PHA, 1 = PHB; place of the row in the head
  std::uint8_t color;
  std::uint16_t column;     // output column offset
  std::uint32_t firstLine;  // window line of nozzle 0; each nozzle's is two further on
};

// What goes in.
struct ConvertParams {
  NozzleRow nozzleRows[kBothHeadsNozzleRows];
  std::uint32_t nozzleRowCount;
  // Byte of a column that nozzle 0 of PHA fires: 0, or 4 when neither head is in use, which prints
  // two nozzles on.
  std::uint32_t firstJet;
  std::uint32_t nozzleCount;  // nozzles that are not feathered; the feathered ones follow them
};

// What comes out: the bytes [begin, end) of PrintOutBuf that have been written.
struct WrittenBytes {
  std::size_t begin, end;
};

}  // namespace qrn

#endif  // QRN_RASTER_CONVERT_PARAMS_H_
