#include "raster/locate_rows.h"

#include "base/bytes.h"

namespace qrn {
namespace {

// Bit and column of one nozzle row of a colour.
void SetRow(Job& job, std::uint32_t slot, std::uint32_t gap, bool rowA) {
  (rowA ? job.rowBitA : job.rowBitB) = Low8(1u << slot);
  (rowA ? job.rowColA : job.rowColB) = Low16(RowColumn(job, slot) + gap);
}

}  // namespace

std::uint32_t LocateRowsDual(Job& job) {
  std::uint32_t rowA = 0, rowB = 0, found = 0;
  for (std::uint32_t row = 0; row < kBothHeadsNozzleRows && found < 2; ++row) {
    if (job.inkOrder[row / kNozzleRows][row % kNozzleRows] != job.curColor) continue;
    rowB = rowA;
    rowA = row;
    ++found;
  }
  const std::uint32_t head = rowA / kNozzleRows;

  // The head that comes second in the direction of travel fires a head distance later.
  const bool second = (job.passDir == 0) == (head == 1);
  const std::uint32_t gap = second ? job.headGapX : 0;
  SetRow(job, rowA % kNozzleRows, gap, true);
  SetRow(job, rowB % kNozzleRows, gap, false);
  return head;
}

void LocateRowsSingle(std::uint32_t head, Job& job) {
  job.rowBitA = job.rowBitB = 0;
  job.rowColA = job.rowColB = 0;
  for (std::uint32_t slot = 0, found = 0; slot < kNozzleRows && found < 2; ++slot) {
    if (GetInkColor(job, head, slot) == job.curColor) SetRow(job, slot, 0, found++ == 0);
  }
}

std::uint32_t SingleFirstRow(const Job& job, std::uint32_t passIndex, std::uint32_t direction) {
  const bool oddLines = direction != 0 && job.passStep % 2 == 0 && passIndex % 2 == 0;
  return job.passStep * passIndex + (oddLines ? 1 : 0);
}

std::uint16_t RowColumn(const Job& job, std::uint32_t slot) {
  const bool mirrored = job.headMirror == 1;
  const bool reverse = job.passDir == 1;
  const std::uint16_t offset = job.rowOffset[slot];
  return mirrored == reverse ? offset
                             : Low16(static_cast<std::uint32_t>(job.rowOffset[0]) - offset);
}

}  // namespace qrn
