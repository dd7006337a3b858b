#include "raster/one_head.h"

#include <algorithm>

#include "diag/job_log.h"
#include "raster/column_modes.h"
#include "raster/locate_rows.h"

namespace qrn {
namespace {

std::uint32_t DirectionOf(const Job& job, std::uint32_t passIndex) {
  if (job.bidirectional != 1) return job.fixedDir;
  return passIndex % 2 == 0 ? 1 : 0;  // the first pass of all is a reverse one
}

enum class Met { kNever, kInPart, kWhole };

// How the two passes of a phase meet a line of the band. The line comes in after the history and
// moves up a band at a time, as far as it is carried on.
Met MetByPhase(const Job& job, std::uint32_t phase, std::uint32_t line) {
  Met best = Met::kNever;
  for (std::uint32_t row = job.historyRows + line;; row -= job.swathH) {
    for (const std::uint32_t pass : {2 * phase, 2 * phase + 1}) {
      const std::uint32_t down = row - SingleFirstRow(job, pass, DirectionOf(job, pass));
      if (down % 2 != 0 || down >= kHeadLines) continue;
      const bool feathered = down / 2 >= kNozzles - job.featherRows;
      best = std::max(best, feathered ? Met::kInPart : Met::kWhole);
    }
    if (row < job.swathH || row - job.swathH >= kBothHeadsRows) return best;
  }
}

// Of the lines of every band.
struct Extent {
  int notPrinted, inPart;
};

// Bands may be higher than what a pass prints whole, because the step is rounded up, and may come
// in further down than lines are carried on.
Extent ExtentOf(const Job& job) {
  Extent extent{};
  for (std::uint32_t line = 0; line < job.swathH; ++line) {
    std::uint32_t never = 0, whole = 0;
    for (std::uint32_t phase = 0; phase < kSinglePhases; ++phase) {
      const Met met = MetByPhase(job, phase, line);
      never += met == Met::kNever ? 1 : 0;
      whole += met == Met::kWhole ? 1 : 0;
    }
    extent.notPrinted += never == kSinglePhases ? 1 : 0;
    extent.inPart += never < kSinglePhases && whole < kSinglePhases ? 1 : 0;
  }
  return extent;
}

}  // namespace

void WarnOfUnprintedLines(const Job& job) {
  const std::uint32_t gridDots = job.passCount / 2u;
  if (gridDots != kSinglePhases) {
    LogPrint("One head: columns of %d dots on a grid of %d, width and reverse passes do not fit",
             static_cast<int>(kSinglePhases), static_cast<int>(gridDots));
  }
  // With an even step all passes start on even rows, and a nozzle row prints every other row from
  // there. Only reverse passes take the rows between.
  const bool evenStep = job.passStep % 2 == 0;
  const bool forwardOnly = job.bidirectional != 1 && job.fixedDir == 0;
  const char* const between = job.historyRows % 2 == 0 ? "odd" : "even";
  if (evenStep && forwardOnly) {
    LogPrint("One head: %s lines are not printed (forward passes, even step %d)", between,
             job.passStep);
  } else if (evenStep) {
    LogPrint("One head: %s lines are printed one line too high (even step %d)", between,
             job.passStep);
  }
  const Extent extent = ExtentOf(job);
  if (extent.notPrinted + extent.inPart > 0) {
    LogPrint("One head: of every %d lines %d are not printed, %d in part", job.swathH,
             extent.notPrinted, extent.inPart);
  }
}

void WarnOfUnprintedColors(const Job& job) {
  unsigned missing = 0;
  for (std::uint8_t color = 0; color < kColors; ++color) {
    bool found = false;
    for (std::uint32_t row = 0; row < kNozzleRows; ++row)
      found |= GetInkColor(job, job.singleHead, row) == color;
    if (!found) missing |= 1u << color;
  }
  if (missing != 0) LogPrint("One head: colors 0x%02X have no nozzle row", missing);
  if (job.singleHead == kSingleUnknown) {
    LogPrint(
        "Neither PHA nor PHB is in use (0x%02X): the last two nozzles of every row print wrong",
        static_cast<unsigned>(job.headMask));
  }
}

}  // namespace qrn
