#include "raster/line_intake.h"

#include <algorithm>

#include "diag/job_log.h"
#include "job/stop_request.h"
#include "raster/band.h"
#include "raster/pass_rows.h"

namespace qrn {
namespace {

constexpr int kFlushCyclesSingle = 4;
constexpr int kFlushCyclesDual = 5;  // PHA's lines still have to pass PHB

bool IsLineUsable(const Job& job, std::uint32_t color, const std::uint8_t* line) {
  return color < job.nColors && color < kColors && line != nullptr;
}

void LogUnusableLine(Job& job, std::uint32_t color, std::uint32_t bytes) {
  if (job.bBadLineLogged == 1) return;
  job.bBadLineLogged = 1;
  LogPrint("AddLine: unusable line, color:%d, bytes:%d", static_cast<int>(color),
           static_cast<int>(bytes));
}

}  // namespace

int AddLine(Job& job, std::uint32_t color, std::uint32_t bytes, const std::uint8_t* line) {
  if (job.linesReceived >= job.nHeight) return 1;
  if (!IsLineUsable(job, color, line)) {
    LogUnusableLine(job, color, bytes);
    return 0;
  }
  // A job that never got its buffers has nowhere to put a line.
  if (job.Mem.pPassBuffer[color] == nullptr) return 0;
  StoreRow(job, color, static_cast<std::uint32_t>(job.historyRows) + job.bandLine, line,
           std::min(bytes, job.lineStride));
  if (color + 1 != job.nColors) return 1;
  ++job.linesReceived;
  ++job.bandLine;
  if (job.bandLine == job.swathH) {
    CompleteBand(job);  // one that stopped early shows in the stop tests; intake goes on
    job.bandLine = 0;
  }
  return 1;
}

void FlushLastBands(Job& job) {
  LogPrint("Rip last swath %d-%d", static_cast<int>(job.linesReceived),
           static_cast<int>(job.nHeight));
  if (job.swathCount >= job.nSwathLimit) {
    job.passEmpty = 1;
    return;
  }
  if (IsAbortRequested(job) || job.PrintOutBuf == nullptr) return;
  const int cycles = job.dualHead == 1 ? kFlushCyclesDual : kFlushCyclesSingle;
  for (int cycle = 0; cycle < cycles; ++cycle) {
    if (!RunPasses(job)) return;
    ShiftPassBuffers(job);
  }
  job.swathStarted = 0;
  job.emptyPasses = 0;
}

}  // namespace qrn
