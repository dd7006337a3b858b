#include "raster/convert.h"

#include <bit>

#include "params/ink_order.h"
#include "platform/bytes.h"
#include "raster/column_modes.h"
#include "raster/row_converters.h"

namespace qrn {
namespace {

using Worker = void (*)(Job&, ConvertParams&);

struct Variant {
  const ColumnMode* mode;
  Worker forward, reverse;
};

constexpr Variant kVariants[] = {
    {&kDual3, Dual3Forward, Dual3Reverse},    {&kDual4, Dual4Forward, Dual4Reverse},
    {&kDual6, Dual6Forward, Dual6Reverse},    {&kDual8, Dual8Forward, Dual8Reverse},
    {&kSingle, SingleForward, SingleReverse},
};

// Enters one row of the colour, bit and column as they were located. A row without a bit has none.
void EnterRow(const Job& job, ConvertParams& params, std::uint32_t head, std::uint8_t rowBit,
              std::uint16_t column, std::uint32_t firstRow) {
  if (rowBit == 0) return;
  params.firstJet = head - head % 2;
  params.rows[params.rowCount++] = {Low8(head % 2),
                                    Low8(static_cast<unsigned>(std::countr_zero(rowBit))),
                                    job.curColor, column, firstRow};
}

// Row A prints the first line of every pair of lines, row B the second.
void ConvertDual(Job& job, ConvertParams& params) {
  const std::uint32_t head = LocateRowsDual(job);
  // PHA prints lines that lie further down the page than PHB's.
  const std::uint32_t firstRow = job.passRow + (head == 1 ? 0u : kHeadLines - job.headGapY);
  EnterRow(job, params, head, job.rowBitA, job.rowColA, firstRow);
  EnterRow(job, params, head, job.rowBitB, job.rowColB, firstRow + 1);
}

void ConvertSingle(Job& job, ConvertParams& params) {
  LocateRowsSingle(job.singleHead, job);
  EnterRow(job, params, job.singleHead, job.rowBitA, job.rowColA,
           SingleFirstRow(job, job.passIndex, job.passDir));
}

// Bit and column of one row of a colour.
void SetRow(Job& job, std::uint32_t slot, std::uint32_t gap, bool rowA) {
  (rowA ? job.rowBitA : job.rowBitB) = Low8(1u << slot);
  (rowA ? job.rowColA : job.rowColB) = Low16(RowColumn(job, slot) + gap);
}

}  // namespace

void ConvertColor(Job& job, ConvertParams& params) {
  job.dualHead == 1 ? ConvertDual(job, params) : ConvertSingle(job, params);
}

void RunWorker(Job& job, ConvertParams& params) {
  const ColumnMode* const mode = ModeOf(job);
  for (const Variant& variant : kVariants) {
    if (variant.mode == mode) (job.passDir == 0 ? variant.forward : variant.reverse)(job, params);
  }
}

std::uint32_t LocateRowsDual(Job& job) {
  constexpr std::uint32_t kRows = 2 * kPlanes;  // of both heads, PHA first
  std::uint32_t rowA = 0, rowB = 0, found = 0;
  for (std::uint32_t row = 0; row < kRows && found < 2; ++row) {
    if (job.inkOrder[row / kPlanes][row % kPlanes] != job.curColor) continue;
    rowB = rowA;
    rowA = row;
    ++found;
  }
  const std::uint32_t head = rowA / kPlanes;

  // The head that comes second in the direction of travel fires a head distance later.
  const bool second = (job.passDir == 0) == (head == 1);
  const std::uint32_t gap = second ? job.headGapX : 0;
  SetRow(job, rowA % kPlanes, gap, true);
  SetRow(job, rowB % kPlanes, gap, false);
  return head;
}

void LocateRowsSingle(std::uint32_t head, Job& job) {
  job.rowBitA = job.rowBitB = 0;
  job.rowColA = job.rowColB = 0;
  for (std::uint32_t slot = 0, found = 0; slot < kPlanes && found < 2; ++slot) {
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
