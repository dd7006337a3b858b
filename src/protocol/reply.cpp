#include "protocol/reply.h"

#include <algorithm>

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

void TakePause(Job& job, const std::uint8_t* reply, std::uint32_t bytes) {
  SetPrinterState(job, 1, 0);
  LogPrint("Rx JOBS_Pause, size:%d, %X-%X-%X\n", static_cast<int>(bytes),
           static_cast<unsigned>(ReplyWord(reply, bytes, kReplyPauseWordAAt)),
           static_cast<unsigned>(ReplyWord(reply, bytes, kReplyPauseWordBAt)),
           static_cast<unsigned>(ReplyWord(reply, bytes, kReplyUpdateAt)));
  TakeParamUpdate(reply, bytes);
  ThePlatform().SleepMs(kPauseMs);
}

// The job's state in replies to swaths and pause polls.
void TakeJobState(Job& job, std::uint16_t state, const std::uint8_t* reply, std::uint32_t bytes) {
  switch (state) {
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

// A printer that is starting up refuses with one of these; it is asked again until it is ready.
bool IsRetriedConnectStatus(std::uint16_t status) {
  return (status & 0xFFF0u) == 0x50u || status == 3 || status == 4 || status == 5;
}

ReplyVerdict TakeConnect(Job& job, const ReplyRec& record, const std::uint8_t* reply,
                         std::uint32_t bytes) {
  if (record.ok == 1) {
    const std::uint32_t payloadAt = std::min(bytes, kReplyPayloadAt);
    const bool usable = ParsePrinterParams(job, reply + payloadAt, bytes - payloadAt);
    return usable ? kReplyTaken : kReplyRefused;
  }
  LogPrint("Rx 打印机未进入工作状态: %d-%d \n", record.status & 15, record.status >> 4);
  if (record.status != 0 && !IsRetriedConnectStatus(record.status)) return kReplyRefused;
  ThePlatform().SleepMs(kConnectRetryMs);
  return kReplyAgain;
}

}  // namespace

std::uint16_t ReplyWord(const std::uint8_t* reply, std::uint32_t bytes, std::uint32_t at) {
  return at + sizeof(std::uint16_t) <= bytes ? U16(reply + at) : std::uint16_t{0};
}

ReplyRec DecodeReply(const std::uint8_t* reply, std::uint32_t bytes) {
  const auto word = [reply, bytes](std::uint32_t at) { return ReplyWord(reply, bytes, at); };
  const bool tellsState = bytes >= offsetof(ReplyRec, status);
  return {word(offsetof(ReplyRec, code)), word(offsetof(ReplyRec, ok)),
          tellsState ? word(offsetof(ReplyRec, sub)) : std::uint16_t{kJobUntold},
          word(offsetof(ReplyRec, status))};
}

void TakeParamUpdate(const std::uint8_t* reply, std::uint32_t bytes) {
  if (ReplyWord(reply, bytes, kReplyPauseWordBAt) != kParamUpdateMark) return;
  UpdateFwPara(GetJob(), reply + kReplyUpdateAt, bytes - kReplyUpdateAt);
}

ReplyVerdict ParseReply(Job& job, const std::uint8_t* reply, std::uint32_t bytes) {
  const ReplyRec record = DecodeReply(reply, bytes);
  if (record.code != job.nTxCmd) return kReplyOther;

  switch (job.nTxCmd) {
    case kCmdSwath:
    case kCmdPausePoll:
      TakeJobState(job, record.sub, reply, bytes);
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
