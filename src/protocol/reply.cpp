#include "protocol/reply.h"

#include "diag/job_log.h"
#include "params/printer_params.h"
#include "platform/bytes.h"
#include "platform/platform.h"
#include "platform/shared.h"
#include "protocol/command.h"
#include "protocol/printer_state.h"

namespace qrn {
namespace {

constexpr std::uint16_t kStatusSpoolOverflow = 7;
constexpr std::uint32_t kSpoolOverflowMs = 3000;
constexpr std::uint32_t kPauseMs = 2000;
constexpr std::uint32_t kConnectRetryMs = 2000;
constexpr std::uint32_t kPauseReplyBytes =
    kReplyUpdateAt + sizeof(std::uint16_t);  // the log shows the word at 14

void TakePause(Job& job, const std::uint8_t* reply, std::uint32_t bytes) {
  SetPrinterState(job, 1, 0);
  LogPrint("Rx JOBS_Pause, size:%d, %X-%X-%X\n", static_cast<int>(bytes),
           static_cast<unsigned>(U16(reply + kReplyPauseWordAAt)),
           static_cast<unsigned>(U16(reply + kReplyPauseWordBAt)),
           static_cast<unsigned>(U16(reply + kReplyUpdateAt)));
  (void)TakeParamUpdate(reply, bytes);  // without one there is nothing to take over
  ThePlatform().SleepMs(kPauseMs);
}

// The job's state in replies to swaths and pause polls. False when the reply is too short for what
// it reports.
bool TakeJobState(Job& job, const ReplyRec& record, const std::uint8_t* reply,
                  std::uint32_t bytes) {
  switch (record.sub) {
    case kJobGone:
      if (LoadShared(job.bPrnCancel) == 0) {
        LogPrint("Rx op取消作业\r\n");
        SetPrinterState(job, 0, 1);
      }
      return true;
    case kJobCancelled:
      SetPrinterState(job, 0, 1);
      LogPrint("Rx JOBS_CANCEL(%d)\n", LoadShared(job.bPrnCancel));
      return true;
    case kJobPaused:
      if (bytes < kPauseReplyBytes) return false;
      TakePause(job, reply, bytes);
      return true;
    case kJobResumed:
    case kJobRunning:
      SetPrinterState(job, 0, 0);
      return true;
    default:
      return true;
  }
}

// What a reply to this command must hold to be understood.
std::uint32_t BytesNeeded(std::uint8_t command) {
  switch (command) {
    case kCmdConnect:
      return kReplyPayloadAt;
    case kCmdSwath:
    case kCmdPausePoll:
      return offsetof(ReplyRec, status);
    default:
      return offsetof(ReplyRec, sub);
  }
}

// A printer that is starting up refuses with one of these; it is asked again until it is ready.
bool IsRetriedConnectStatus(std::uint16_t status) {
  return (status & 0xFFF0u) == 0x50u || status == 3 || status == 4 || status == 5;
}

ReplyVerdict TakeConnect(Job& job, const ReplyRec& record, const std::uint8_t* reply,
                         std::uint32_t bytes) {
  if (record.ok == 1) {
    const bool usable = ParsePrinterParams(job, reply + kReplyPayloadAt, bytes - kReplyPayloadAt);
    return usable ? kReplyTaken : kReplyRefused;
  }
  LogPrint("Rx 打印机未进入工作状态: %d-%d \n", record.status & 15, record.status >> 4);
  if (record.status != 0 && !IsRetriedConnectStatus(record.status)) return kReplyRefused;
  ThePlatform().SleepMs(kConnectRetryMs);
  return kReplyAgain;
}

}  // namespace

ReplyRec DecodeReply(const std::uint8_t* reply, std::uint32_t bytes) {
  const auto field = [reply, bytes](std::size_t at) {
    return at + sizeof(std::uint16_t) <= bytes ? U16(reply + at) : std::uint16_t{0};
  };
  return {field(offsetof(ReplyRec, code)), field(offsetof(ReplyRec, ok)),
          field(offsetof(ReplyRec, sub)), field(offsetof(ReplyRec, status))};
}

bool TakeParamUpdate(const std::uint8_t* reply, std::uint32_t bytes) {
  if (bytes < kReplyUpdateAt || U16(reply + kReplyPauseWordBAt) != kParamUpdateMark) return false;
  UpdateFwPara(GetJob(), reply + kReplyUpdateAt, bytes - kReplyUpdateAt);
  return true;
}

ReplyVerdict ParseReply(Job& job, const std::uint8_t* reply, std::uint32_t bytes) {
  const ReplyRec record = DecodeReply(reply, bytes);
  if (bytes >= sizeof record.code && record.code != job.nTxCmd) return kReplyOther;
  if (bytes < BytesNeeded(job.nTxCmd)) return kReplyAgain;

  switch (job.nTxCmd) {
    case kCmdSwath:
    case kCmdPausePoll:
      if (!TakeJobState(job, record, reply, bytes)) return kReplyAgain;
      break;
    case kCmdConnect:
      return TakeConnect(job, record, reply, bytes);
    case kCmdJobEnd:
      StoreShared(job.bJobEndRx, 1);
      LogPrint("Rx 作业结束\n");
      break;
    case kCmdCancel:
      SetPrinterState(job, 0, 1);
      LogPrint("RxOP 取消作业\n");
      break;
    default:
      break;
  }
  if (record.ok == 1) return kReplyTaken;
  if (job.nTxCmd == kCmdSwath && record.status == kStatusSpoolOverflow) {
    LogPrint("Rx cmm spool overflow, sleep(3000)");
    ThePlatform().SleepMs(kSpoolOverflowMs);
  }
  return kReplyAgain;
}

}  // namespace qrn
