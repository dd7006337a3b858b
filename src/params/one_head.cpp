#include "params/one_head.h"

#include "diag/job_log.h"
#include "params/ink_order.h"
#include "raster/column_modes.h"

namespace qrn {
namespace {

constexpr std::uint8_t kNoHead = 4;  // of singleHead

}  // namespace

void WarnOfUnprintedLines(const Job& job) {
  const std::uint32_t gridDots = job.passCount / 2u;
  if (gridDots != kSingleColumnPixels) {
    LogPrint("One head: columns of %d dots on a grid of %d, width and reverse passes do not fit",
             static_cast<int>(kSingleColumnPixels), static_cast<int>(gridDots));
  }
  // With an even step all passes start on even rows, and a nozzle row prints every other row from
  // there. Only reverse passes reach for the rows between.
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
  // The step is rounded up, so that a band may be higher than what a pass prints whole. Forward
  // passes of an even step meet each of their lines twice.
  const int wholeLines = static_cast<int>((kNozzles - job.featherRows) * 2);
  if (job.swathH > wholeLines && !(evenStep && forwardOnly)) {
    LogPrint("One head: of each phase %d lines of every %d are not printed whole",
             job.swathH - wholeLines, job.swathH);
  }
}

void WarnOfUnprintedColors(const Job& job) {
  unsigned missing = 0;
  for (std::uint8_t color = 0; color < kPlanes; ++color) {
    bool found = false;
    for (std::uint32_t row = 0; row < kPlanes; ++row)
      found |= GetInkColor(job, job.singleHead, row) == color;
    if (!found) missing |= 1u << color;
  }
  if (missing != 0) LogPrint("One head: colors 0x%02X have no nozzle row", missing);
  if (job.singleHead == kNoHead) {
    LogPrint(
        "Neither PHA nor PHB is in use (0x%02X): the last two nozzles of every row print wrong",
        static_cast<unsigned>(job.headMask));
  }
}

}  // namespace qrn
