#include "raster/swath_builder.h"

#include <algorithm>
#include <utility>

#include "base/bytes.h"
#include "base/shared.h"
#include "diag/job_log.h"
#include "job/stop_request.h"
#include "raster/pass_size.h"
#include "raster/swath_queue.h"

namespace qrn {
namespace {

constexpr std::uint32_t kFeedStepsMax = 0x7FFFFFFF;  // bit 31 of feedSteps is never set
constexpr std::uint16_t kNoBiDirShift = 32;

// Byte positions become dots, counted from before the margin.
double DotsOf(const Job& job, std::uint32_t byte) {
  return static_cast<std::uint32_t>(byte * 8u / job.nBitsPerPixel + job.marginDots);
}

void SetPositions(Job& job, SwathHeader& header) {
  const double resFactor = job.resFactor;
  const double dotsPerUnit = 2.0 * resFactor;  // dots in 1/150 inch
  const std::uint16_t left = TruncateLow16(DotsOf(job, job.passLeftByte) / dotsPerUnit);
  const std::uint16_t right =
      TruncateLow16(DotsOf(job, job.passRightByte) / dotsPerUnit + job.passRowPad / resFactor);
  if (job.passDir == 0) {
    header.startPos = left;
    header.endPos = right;
  } else {
    header.endPos = left;
    header.startPos =
        Low16(static_cast<std::uint32_t>(right) + LoadShared(job.biDirOfs) - kNoBiDirShift);
  }
}

void MarkPendingReady(Job& job) {
  SetSwathState(job.pPendingSwath, kSwathReady);
  job.pPendingSwath = nullptr;
}

}  // namespace

bool PutSwath(Job& job) {
  if (job.passEmpty == 1) {
    MarkPendingReady(job);
    LogPrint("swath%d empty\n", static_cast<int>(job.passNo - 1));
    ++job.emptyPasses;
    return true;
  }
  // Paper is not fed over blank passes before the image: it starts where the ink starts.
  if (job.emptyPasses > 0 && job.swathStarted == 1) {
    EmptySteps(job, static_cast<std::uint64_t>(LoadShared(job.swathSteps)) * job.emptyPasses);
  }
  job.emptyPasses = 0;
  job.swathStarted = 1;
  Swath* swath = GetPcBuffer(job);
  if (swath == nullptr || IsStopRequested(job)) return false;
  CreateSwath(job, *swath);
  MarkPendingReady(job);
  job.pPendingSwath = swath;
  return true;
}

void CreateSwath(Job& job, Swath& swath) {
  swath.dataSize = SwathDataSize(job);
  // Both buffers have the same size, and the slot's old data have been sent: nothing is copied.
  std::swap(swath.pSwathData, job.PrintOutBuf);

  SwathHeader& header = swath.header;
  SetPositions(job, header);
  header.dir = header.dir2 = job.passDir;
  AdvanceFeedLine(job, swath);
  header.speed = HeaderSpeed(job);
  header.feedSteps = LoadShared(job.swathSteps);
  header.swathNo = job.swathCount;
  header.reserved0 = header.reserved3 = 0;
  header.reserved26 = 0;
  LogPrint("Create Swath%d, %d, pos:%d-%d Csteps:%d, lines:%d", static_cast<int>(job.swathCount),
           job.passDir, header.startPos, header.endPos, static_cast<int>(header.feedSteps),
           static_cast<int>(header.feedLine));
}

void EmptySteps(Job& job, std::uint64_t steps) {
  if (LoadShared(job.bPrnCancel) == 1) return;
  LogPrint("EmptySteps: %d\n", static_cast<int>(Low32(steps)));
  while (steps > 0) {
    const std::uint32_t chunk = Low32(std::min<std::uint64_t>(steps, kFeedStepsMax));
    steps -= chunk;
    Swath* swath = GetPcBuffer(job);
    if (swath == nullptr) {
      LogPrint("EmptySwathPswath=NULL\r\n");
      return;
    }
    swath->dataSize = 0;
    swath->header.swathNo = job.swathCount;
    swath->header.feedSteps = chunk;
    SetSwathState(swath, kSwathReady);
  }
}

void AdvanceFeedLine(Job& job, Swath& swath) {
  swath.header.stepLines = job.passStep;
  job.feedLine =
      Low32(std::min<std::uint64_t>(std::uint64_t{job.feedLine} + job.passStep, job.nHeight));
  swath.header.feedLine = job.feedLine;
}

}  // namespace qrn
