// Where the nozzle rows of a colour are: the look-up in the ink order, and the lines and columns
// that they begin at. Host's thread, except where noted.
#ifndef QRN_RASTER_LOCATE_ROWS_H_
#define QRN_RASTER_LOCATE_ROWS_H_

#include <cstdint>

#include "job/job.h"

namespace qrn {

// Sets rowBitA/B and rowColA/B for curColor with two heads. Row A, which prints the first line of
// every pair of lines, is the later of the colour's two rows in the ink order. Returns the head
// whose bytes both rows use.
std::uint32_t LocateRowsDual(Job& job);

// The same with one head, whose bytes are those `head` on. Row A is the first that carries the
// colour; a row that the colour does not have gets bit 0.
void LocateRowsSingle(std::uint32_t head, Job& job);

// First of the lines, two apart, that a pass of one head prints. With an odd step the two passes of
// a phase start on lines of both parities by themselves. With an even one all passes start on even
// lines: in reverse (direction 1) the first pass of the pair then takes the odd lines, which
// forward passes never reach. Also transmit thread, within the connect.
std::uint32_t SingleFirstRow(const Job& job, std::uint32_t passIndex, std::uint32_t direction);

// Output column offset of a nozzle row in the current direction.
std::uint16_t RowColumn(const Job& job, std::uint32_t slot);

}  // namespace qrn

#endif  // QRN_RASTER_LOCATE_ROWS_H_
