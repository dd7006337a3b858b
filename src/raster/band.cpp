#include "raster/band.h"

#include <algorithm>

#include "raster/convert.h"
#include "raster/pass_rows.h"
#include "raster/swath_builder.h"

namespace qrn {

void CompleteBand(Job& job) {
  if (!RunPasses(job)) return;
  job.feedLine = job.linesReceived;
  ShiftPassBuffers(job);
}

std::uint8_t NextSwathDir(Job& job) {
  if (job.bidirectional != 1) return job.fixedDir;
  job.passDir = job.passDir == 0 ? 1 : 0;
  return job.passDir;
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

// The rows stay where they are; the ring's start moves on. Lines after those that a band carries on
// are blank, and so are all from the new band's first line on.
void ShiftPassBuffers(Job& job) {
  job.Mem.ringStart = RingIndex(job, job.swathH);
  const std::uint32_t kept = std::min<std::uint32_t>(kBothHeadsRows, job.historyRows);
  ClearRows(job, kept, job.Mem.layout.rows - kept);
}

}  // namespace qrn
