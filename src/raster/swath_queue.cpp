#include "raster/swath_queue.h"

#include "base/bytes.h"
#include "base/shared.h"
#include "diag/driver_error.h"
#include "diag/job_log.h"
#include "job/stop_request.h"
#include "platform/platform.h"

namespace qrn {
namespace {

constexpr std::uint32_t kWaitLogAttempts = 50;
constexpr std::uint8_t kStartLevel = 3;  // slots in use before the first is taken

std::uint8_t NextSlot(std::uint8_t slot) { return Low8((slot + 1u) % kSwathSlots); }

}  // namespace

void ResetQueue(Job& job) {
  for (Swath& slot : job.swathQueue) {
    slot.header = SwathHeader{};
    slot.header.speed = HeaderSpeed(job);
    StoreShared(slot.state, kSwathFree);
  }
  StoreShared(job.queueRd, 0);
  StoreShared(job.queueWr, 0);
  StoreShared(job.queueUsed, 0);
}

Swath* QueueGetFree(Job& job) {
  const std::uint8_t slot = LoadShared(job.queueWr);
  Swath& swath = job.swathQueue[slot];
  if (LoadShared(swath.state) != kSwathFree) return nullptr;
  StoreShared(swath.state, kSwathFilling);
  StoreShared(job.queueWr, NextSlot(slot));
  AddShared(job.queueUsed, 1);
  return &swath;
}

Swath* GetPcBuffer(Job& job) {
  const std::uint32_t start = ThePlatform().TickMs();
  std::uint32_t attempts = 0;
  Swath* swath = nullptr;
  for (;;) {
    if (IsStopRequested(job)) {
      LogPrint("Get Pc buffer... bur quit!");
      return nullptr;
    }
    // The stop test covers this; it is met only when the thread ends between the two.
    if (LoadShared(job.bTxEnd) == 1) {
      LogPrint("打印数据已经准备好，但TX线程已经结束\n");
      RaiseError(kErrorPrinterGone);
      return nullptr;
    }
    swath = QueueGetFree(job);
    if (swath != nullptr) break;
    ThePlatform().SleepMs(kPollMs);
    if (++attempts == kWaitLogAttempts) LogPrint("PC buffer wait...");
  }
  ++job.swathCount;
  if (attempts > 1) LogPrint("PC overflow: %d", static_cast<int>(ThePlatform().TickMs() - start));
  return swath;
}

Swath* QueueGetReady(Job& job) {
  if (LoadShared(job.queueStarted) == 0) {
    if (LoadShared(job.queueUsed) < kStartLevel) return nullptr;
    StoreShared(job.queueStarted, 1);
  }
  Swath& swath = job.swathQueue[LoadShared(job.queueRd)];
  if (LoadShared(swath.state) != kSwathReady) return nullptr;
  StoreShared(swath.state, kSwathSending);
  StoreShared(job.queueRd, NextSlot(LoadShared(job.queueRd)));
  if (LoadShared(job.queueUsed) > 0) {
    AddShared(job.queueUsed, static_cast<std::uint8_t>(-1));
  } else {
    LogPrint("Queue ready Error overflow:%d-%d", LoadShared(job.queueRd), LoadShared(job.queueWr));
  }
  return &swath;
}

void SetSwathState(Swath* swath, SwathState state) {
  if (swath != nullptr) StoreShared(swath->state, state);
}

void WaitSwathQueue(Job& job) {
  StoreShared(job.queueStarted, 1);
  SetSwathState(job.pPendingSwath, kSwathReady);
  LogPrint("\nWait swath Queue sended.%d-%d-%d", LoadShared(job.queueRd), LoadShared(job.queueWr),
           LoadShared(job.queueUsed));
  while (LoadShared(job.queueUsed) != 0 && LoadShared(job.bTxRun) != 0 &&
         LoadShared(job.bPrnCancel) != 1) {
    ThePlatform().SleepMs(kPollMs);
  }
  LogPrint("All swath sended!");
}

}  // namespace qrn
