// Conversion of one pass: finds the nozzle rows that carry each colour, and runs the worker that
// fits the heads, the pass count and the direction over all of them. Host's thread.
#ifndef QRN_RASTER_CONVERT_H_
#define QRN_RASTER_CONVERT_H_

#include <cstddef>
#include <cstdint>

#include "job/job.h"

namespace qrn {

// One nozzle row of the pass and the lines that it prints.
struct PassRow {
  std::uint8_t head, slot;
  std::uint8_t plane;      // colour plane
  std::uint16_t column;    // output column offset
  std::uint32_t firstRow;  // row of nozzle 0's line; two rows on for each nozzle
};
constexpr std::uint32_t kPassRows = 2 * kNozzleRows;

// What a worker converts, and where it has written.
struct ConvertParams {
  PassRow rows[kPassRows];
  std::uint32_t rowCount;
  // Byte of a column that nozzle 0 of PHA fires: 0, or 4 when neither head is in use, which prints
  // two nozzles on.
  std::uint32_t firstJet;
  std::uint16_t nozzleCount;       // nozzles in front of the feathered ones; set by the worker
  std::size_t firstByte, endByte;  // of PrintOutBuf, that have been written
};

// Converts the current pass into PrintOutBuf, or marks it empty, and sets its size fields.
void ConvertPass(Job& job);
// True when the rows of the pass hold no pixel; otherwise the byte range of the pass is set.
[[nodiscard]] bool IsPassBlank(Job& job);

// The share of curColor in the conversion of the current pass: finds its nozzle rows and enters
// them. Their dots are placed by RunWorker, with those of all other colours: eight nozzle rows
// share every byte of a column, and one colour at a time would write each four times. A colour that
// the one head in use does not carry has no rows.
void ConvertColor(Job& job, ConvertParams& params);

// Runs the worker over all rows that have been entered: their dots go into PrintOutBuf, the pixels
// out of the pass buffers. A two-head pass count other than 3, 4, 6, 8 converts nothing.
void RunWorker(Job& job, ConvertParams& params);

// Sets rowBitA/B and rowColA/B for curColor with two heads. Returns the head whose bytes both rows
// use.
std::uint32_t LocateRowsDual(Job& job);

// The same with one head, whose bytes are those `head` on; a row that the colour does not have gets
// bit 0.
void LocateRowsSingle(std::uint32_t head, Job& job);

// First of the rows, two apart, that a pass of one head prints. With an odd step the two passes of
// a phase start on rows of both parities by themselves. With an even one all passes start on even
// rows: in reverse (direction 1) the first pass of the pair then takes the odd lines, which forward
// passes never reach.
std::uint32_t SingleFirstRow(const Job& job, std::uint32_t passIndex, std::uint32_t direction);

// Output column offset of a nozzle row in the current direction.
std::uint16_t RowColumn(const Job& job, std::uint32_t slot);

}  // namespace qrn

#endif  // QRN_RASTER_CONVERT_H_
