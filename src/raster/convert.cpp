#include "raster/convert.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "base/bytes.h"
#include "raster/column_modes.h"
#include "raster/locate_rows.h"
#include "raster/pass_rows.h"
#include "raster/pass_size.h"

namespace qrn {
namespace {

// Enters one nozzle row of curColor, bit and column as they were located. A row without a bit does
// not exist.
void EnterRow(const Job& job, ConvertParams& params, std::uint32_t head, std::uint8_t rowBit,
              std::uint16_t column, std::uint32_t firstLine) {
  if (rowBit == 0) return;
  params.firstJet = head - head % 2;
  params.nozzleRows[params.nozzleRowCount++] = {
      .head = Low8(head % 2),
      .slot = Low8(static_cast<unsigned>(std::countr_zero(rowBit))),
      .color = job.curColor,
      .column = column,
      .firstLine = firstLine,
  };
}

// A pass that prints covers whole lines: reverse passes begin at the right end.
void SetPassRange(Job& job) {
  job.passLeftByte = 0;
  job.passBits = job.nLineBits;
  job.passRightByte = job.nLineBits / 8;
}

// Row A prints the first line of every pair of lines, row B the second.
void ConvertDual(Job& job, ConvertParams& params) {
  const std::uint32_t head = LocateRowsDual(job);
  // PHA prints lines that lie further down the page than PHB's.
  const std::uint32_t firstLine = job.passRow + (head == 1 ? 0u : kHeadLines - job.headGapY);
  EnterRow(job, params, head, job.rowBitA, job.rowColA, firstLine);
  EnterRow(job, params, head, job.rowBitB, job.rowColB, firstLine + 1);
}

// A single head prints by row A alone (docs/one-head.md).
void ConvertSingle(Job& job, ConvertParams& params) {
  LocateRowsSingle(job.singleHead, job);
  EnterRow(job, params, job.singleHead, job.rowBitA, job.rowColA,
           SingleFirstRow(job, job.passIndex, job.passDir));
}

// Zeros before and after what a worker has written, as far as the swath carries.
void ClearMargins(Job& job, const WrittenBytes& written) {
  const std::size_t end = SwathDataSize(job);
  const std::size_t first = std::min(written.begin, end);
  const std::size_t last = std::min(written.end, end);
  std::memset(job.PrintOutBuf, 0, first);
  std::memset(job.PrintOutBuf + last, 0, end - last);
}

}  // namespace

void ConvertPass(Job& job) {
  if (job.swathCount >= job.nSwathLimit) {
    job.passEmpty = 1;
    return;
  }
  job.passIndex = Low8(job.passNo % job.passCount);
  job.passRow = Low16(static_cast<std::uint32_t>(job.passStep) * job.passIndex);
  job.passEmpty = IsPassBlank(job) ? 1 : 0;
  if (job.passEmpty == 1) return;
  SetPassRange(job);

  ConvertParams params{};
  params.nozzleCount = kNozzles - job.featherRows;
  for (std::uint8_t color = 0; color < job.nColors; ++color) {
    job.curColor = color;
    ConvertColor(job, params);
  }
  const WrittenBytes written = RunWorker(job, params);
  SetPassSize(job);
  ClearMargins(job, written);
}

bool IsPassBlank(const Job& job) { return AreRowsBlank(job, job.passRow, job.checkRows); }

void ConvertColor(Job& job, ConvertParams& params) {
  job.dualHead == 1 ? ConvertDual(job, params) : ConvertSingle(job, params);
}

WrittenBytes RunWorker(Job& job, const ConvertParams& params) {
  const ColumnMode* const mode = ModeOf(job);
  if (mode == nullptr) return {};
  return (job.passDir == 0 ? mode->forward : mode->reverse)(job, params);
}

}  // namespace qrn
