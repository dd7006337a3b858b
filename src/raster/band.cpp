#include "raster/band.h"

#include <algorithm>
#include <cstring>

#include "params/printer_params.h"
#include "platform/bytes.h"
#include "raster/convert.h"
#include "raster/pass_rows.h"
#include "raster/pass_size.h"
#include "raster/swath_builder.h"

namespace qrn {
namespace {

// Zeros in front of what a worker has written and behind it, as far as the swath carries.
void ClearMargins(Job& job, const ConvertParams& params) {
  const std::size_t end = SwathDataSize(job);
  const std::size_t first = std::min(params.firstByte, end);
  const std::size_t last = std::min(params.endByte, end);
  std::memset(job.PrintOutBuf, 0, first);
  std::memset(job.PrintOutBuf + last, 0, end - last);
}

}  // namespace

void CompleteBand(Job& job) {
  if (!RunPasses(job)) return;
  job.feedLine = job.linesReceived;
  ShiftPassBuffers(job);
}

bool RunPasses(Job& job) {
  for (std::uint32_t i = 0; i < job.passCount; ++i) {
    job.passDir = NextSwathDir(job);
    ConvertPass(job);
    ++job.passNo;
    if (!PutSwath(job)) return false;
  }
  return true;
}

void ConvertPass(Job& job) {
  if (job.swathCount >= job.nSwathLimit) {
    job.passEmpty = 1;
    return;
  }
  job.passIndex = Low8(job.passNo % job.passCount);
  job.passRow = Low16(static_cast<std::uint32_t>(job.passStep) * job.passIndex);
  job.passEmpty = IsPassBlank(job) ? 1 : 0;
  if (job.passEmpty == 1) return;

  ConvertParams params{};
  for (std::uint8_t color = 0; color < job.nColors; ++color) {
    job.curColor = color;
    ConvertColor(job, params);
  }
  RunWorker(job, params);
  SetPassSize(job);
  ClearMargins(job, params);
}

bool IsPassBlank(Job& job) {
  if (AreRowsBlank(job, job.passRow, job.checkRows)) return true;
  job.passLeftByte = 0;
  job.passBits = job.nLineBits;
  job.passRightByte = job.nLineBits / 8;
  return false;
}

// The rows stay where they are, the ring's first row moves on. Rows behind the 720 that a band
// carries on are blank, and so are all from the new band's first on.
void ShiftPassBuffers(Job& job) {
  job.Mem.firstRow = RingIndex(job, job.swathH);
  const std::uint32_t kept = std::min<std::uint32_t>(kShiftRows, job.historyRows);
  ClearRows(job, kept, job.Mem.layout.rows - kept);
}

}  // namespace qrn
