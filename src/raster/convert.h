// Conversion of one colour of one pass: finds the nozzle rows that carry the colour and runs the
// worker that fits the heads, the pass count and the direction. Host's thread; there is one
// ConvertParams, so conversions never run side by side.
//
// PrintOutBuf is a sequence of columns of 720 bytes, one firing position of the carriage each:
//
//   column:  | plane 0, 360 bytes        | plane 1, 360 bytes        |
//   plane:   | PHA n0 | PHB n0 | PHA n1 | PHB n1 | ...   n = nozzle 0..179
//   byte:    bit s = nozzle row s of that head
//
// Drop level 2 or 3 sets the bit in plane 0, level 1 or 3 in plane 1.
#ifndef QRN_RASTER_CONVERT_H_
#define QRN_RASTER_CONVERT_H_

#include <cstdint>

#include "host/job.h"

namespace qrn {

constexpr std::uint32_t kPlaneBytes = 2 * kNozzles;
constexpr std::uint32_t kColumnBytes = 2 * kPlaneBytes;
constexpr std::uint32_t kPixelsPerByte = 4;
constexpr std::uint32_t kSingleColumnPixels = 3;  // pixels of a column with one head

// Pixels of a line that an output column stands for. Requires: the final pass count.
constexpr std::uint32_t ColumnPixels(const Job& job) {
  return job.dualHead == 1 ? job.passCount : kSingleColumnPixels;
}

struct ConvertParams {
  std::uint8_t* pLine;        // first line of the current nozzle pair
  std::uint8_t* pLine2;       // second line of it
  std::uint16_t nozzleCount;  // nozzles in front of the feathered ones
  std::uint16_t colStep;      // bytes of PrintOutBuf from one input group to the next
  std::uint32_t outOffset;    // first output column of the current group, in bytes
};

// Converts curColor of the current pass from pPassSrc into PrintOutBuf and clears what it has
// placed. A two-head pass count other than 3, 4, 6, 8 converts nothing, nor does a colour that the
// one head in use does not carry.
void ConvertColor(Job& job);

// Sets rowBitA/B, rowColA/B and pOutA/B for curColor with two heads, and the head whose bytes both
// rows use; 1.
int LocateRowsDual(Job& job, std::uint32_t* head);

// The same with one head, whose bytes are those `head` on; a row that the colour does not have gets
// bit 0. 1.
int LocateRowsSingle(std::uint32_t head, Job& job);

// Output column offset of a nozzle row in the current direction.
std::uint16_t RowColumn(const Job& job, std::uint32_t slot);

}  // namespace qrn

#endif  // QRN_RASTER_CONVERT_H_
