// Layout of PrintOutBuf: a sequence of columns of 720 bytes, one firing position of the carriage
// each:
//
//   column:  | plane 0, 360 bytes        | plane 1, 360 bytes        |
//   plane:   | PHA n0 | PHB n0 | PHA n1 | PHB n1 | ...   n = nozzle 0..179
//   byte:    bit s = nozzle row s of that head
//
// Drop level 2 or 3 sets the bit in plane 0, level 1 or 3 in plane 1.
#ifndef QRN_RASTER_PRINT_OUT_H_
#define QRN_RASTER_PRINT_OUT_H_

#include <cstdint>

namespace qrn {

constexpr std::uint32_t kNozzles = 180;             // nozzles of a row
constexpr std::uint32_t kHeadLines = 2 * kNozzles;  // that a head covers
constexpr std::uint32_t kPlaneBytes = 2 * kNozzles;
constexpr std::uint32_t kColumnBytes = 2 * kPlaneBytes;

}  // namespace qrn

#endif  // QRN_RASTER_PRINT_OUT_H_
