#include "protocol/reply.h"

#include <algorithm>

#include "base/shared.h"
#include "diag/job_log.h"
#include "params/connect.h"
#include "platform/platform.h"
#include "protocol/command.h"
#include "protocol/printer_state.h"
#include "protocol/reply_format.h"

namespace qrn {
namespace {

constexpr std::uint16_t kStatusSpoolOverflow = 7;
constexpr std::uint32_t kSpoolOverflowMs = 3000;
constexpr std::uint32_t kConnectRetryMs = 2000;

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

ReplyVerdict ParseReply(Job& job, const std::uint8_t* reply, std::uint32_t bytes) {
  const ReplyRec record = DecodeReply(reply, bytes);
  if (record.code != job.nTxCmd) return kReplyOther;

  switch (job.nTxCmd) {
    case kCmdSwath:
    case kCmdPausePoll:
      TakeRepliedState(job, reply, bytes);
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
