#include "raster/convert.h"

#include "params/ink_order.h"
#include "platform/bytes.h"
#include "raster/row_converters.h"

namespace qrn {
namespace {

constexpr std::uint32_t kHeadLines = 2 * kNozzles;  // lines that a head covers

using Worker = void (*)(Job&, ConvertParams&);

struct Variant {
  std::uint8_t passCount;  // 0 = any
  std::uint16_t colStep;
  Worker forward, reverse;
};

constexpr Variant kDualVariants[] = {
    {3, kColStep<Dual3>, Dual3Forward, Dual3Reverse},
    {4, kColStep<Dual4>, Dual4Forward, Dual4Reverse},
    {6, kColStep<Dual6>, Dual6Forward, Dual6Reverse},
    {8, kColStep<Dual8>, Dual8Forward, Dual8Reverse},
};

constexpr Variant kSingleVariant = {0, kColStep<Single>, SingleForward, SingleReverse};

ConvertParams g_params;

void RunWorker(Job& job, const Variant& variant, std::uint8_t* source) {
  g_params.pLine = source;
  g_params.nozzleCount = Low16(kNozzles - job.featherRows);
  g_params.colStep = variant.colStep;
  (job.passDir == 0 ? variant.forward : variant.reverse)(job, g_params);
}

void ConvertDual(Job& job) {
  for (const Variant& variant : kDualVariants) {
    if (variant.passCount != job.passCount) continue;
    std::uint32_t head = 0;
    (void)LocateRowsDual(job, &head);  // always 1
    // PHA prints lines that lie further down the page than PHB's.
    const std::size_t rows = head == 1 ? 0 : kHeadLines - job.headGapY;
    RunWorker(job, variant, job.pPassSrc + rows * job.lineStride);
    return;
  }
}

void ConvertSingle(Job& job) {
  (void)LocateRowsSingle(job.singleHead, job);  // always 1
  if (job.rowBitA != 0) RunWorker(job, kSingleVariant, job.pPassSrc);
}

// Bit, column and output of one row of a colour.
void SetRow(Job& job, std::uint32_t slot, std::uint32_t gap, std::uint32_t head, bool rowA) {
  const std::uint16_t column = Low16(RowColumn(job, slot) + gap);
  (rowA ? job.rowBitA : job.rowBitB) = Low8(1u << slot);
  (rowA ? job.rowColA : job.rowColB) = column;
  (rowA ? job.pOutA : job.pOutB) = job.PrintOutBuf + std::size_t{kColumnBytes} * column + head;
}

}  // namespace

void ConvertColor(Job& job) { job.dualHead == 1 ? ConvertDual(job) : ConvertSingle(job); }

int LocateRowsDual(Job& job, std::uint32_t* head) {
  constexpr std::uint32_t kRows = 2 * kPlanes;  // of both heads, PHA first
  std::uint32_t rowA = 0, rowB = 0, found = 0;
  for (std::uint32_t row = 0; row < kRows && found < 2; ++row) {
    if (job.inkOrder[row / kPlanes][row % kPlanes] != job.curColor) continue;
    rowB = rowA;
    rowA = row;
    ++found;
  }
  *head = rowA / kPlanes;

  // The head that comes second in the direction of travel fires a head distance later.
  const bool second = (job.passDir == 0) == (*head == 1);
  const std::uint32_t gap = second ? job.headGapX : 0;
  SetRow(job, rowA % kPlanes, gap, *head, true);
  SetRow(job, rowB % kPlanes, gap, *head, false);
  return 1;
}

int LocateRowsSingle(std::uint32_t head, Job& job) {
  job.rowBitA = job.rowBitB = 0;
  job.rowColA = job.rowColB = 0;
  job.pOutA = job.pOutB = job.PrintOutBuf + head;
  for (std::uint32_t slot = 0, found = 0; slot < kPlanes && found < 2; ++slot) {
    if (GetInkColor(job, head, slot) == job.curColor) SetRow(job, slot, 0, head, found++ == 0);
  }
  return 1;
}

std::uint16_t RowColumn(const Job& job, std::uint32_t slot) {
  const bool mirrored = job.headMirror == 1;
  const bool reverse = job.passDir == 1;
  const std::uint16_t offset = job.rowOffset[slot];
  return mirrored == reverse ? offset
                             : Low16(static_cast<std::uint32_t>(job.rowOffset[0]) - offset);
}

}  // namespace qrn
