#include "protocol/printer_state.h"

#include "base/shared.h"
#include "diag/job_log.h"
#include "params/connect.h"
#include "platform/platform.h"
#include "protocol/reply_format.h"

namespace qrn {
namespace {

constexpr std::uint32_t kPauseMs = 2000;

// Hands a firmware parameter update on when a pause reply announces one.
void TakeParamUpdate(Job& job, const std::uint8_t* reply, std::uint32_t bytes) {
  if (ReplyWord(reply, bytes, kReplyPauseWordBAt) != kParamUpdateMark) return;
  UpdateFwPara(job, reply + kReplyUpdateAt, bytes - kReplyUpdateAt);
}

void TakePause(Job& job, const std::uint8_t* reply, std::uint32_t bytes) {
  SetPrinterState(job, 1, 0);
  LogPrint("Rx JOBS_Pause, size:%d, %X-%X-%X\n", static_cast<int>(bytes),
           static_cast<unsigned>(ReplyWord(reply, bytes, kReplyPauseWordAAt)),
           static_cast<unsigned>(ReplyWord(reply, bytes, kReplyPauseWordBAt)),
           static_cast<unsigned>(ReplyWord(reply, bytes, kReplyUpdateAt)));
  TakeParamUpdate(job, reply, bytes);
  ThePlatform().SleepMs(kPauseMs);
}

}  // namespace

void SetPrinterState(Job& job, std::uint8_t pause, std::uint8_t cancel) {
  if (pause == LoadShared(job.bPrnPause) && cancel == LoadShared(job.bPrnCancel)) return;
  StoreShared(job.bPrnPause, pause);
  StoreShared(job.bPauseSeen, pause);
  // The latch before the cancel: whoever sees the cancel finds the latch set.
  if (LoadShared(job.bCancelLatch) == 0) StoreShared(job.bCancelLatch, cancel);
  StoreShared(job.bPrnCancel, cancel);
  LogPrint("CMM%d: Pause-%d, Cancel-%d\r\n", 1, pause, cancel);
}

void TakeRepliedState(Job& job, const std::uint8_t* reply, std::uint32_t bytes) {
  switch (DecodeReply(reply, bytes).sub) {
    case kJobGone:
      if (LoadShared(job.bPrnCancel) == 0) {
        LogPrint("Rx op取消作业\r\n");
        SetPrinterState(job, 0, 1);
      }
      break;
    case kJobCancelled:
      SetPrinterState(job, 0, 1);
      LogPrint("Rx JOBS_CANCEL(%d)\n", LoadShared(job.bPrnCancel));
      break;
    case kJobPaused:
      TakePause(job, reply, bytes);
      break;
    case kJobResumed:
    case kJobRunning:
      SetPrinterState(job, 0, 0);
      break;
    default:
      break;
  }
}

void TakeQueriedState(Job& job, const std::uint8_t* reply, std::uint32_t bytes) {
  switch (DecodeReply(reply, bytes).sub) {
    case kJobCancelled:
      SetPrinterState(job, 1, 1);
      break;
    case kJobPaused:
      SetPrinterState(job, 1, 0);
      TakeParamUpdate(job, reply, bytes);
      break;
    case kJobResumed:
    case kJobRunning:
      SetPrinterState(job, 0, 0);
      break;
    default:
      break;
  }
}

}  // namespace qrn
