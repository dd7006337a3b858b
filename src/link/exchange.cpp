#include "link/exchange.h"

#include <algorithm>

#include "base/bytes.h"
#include "diag/driver_error.h"
#include "diag/job_log.h"
#include "job/stop_request.h"
#include "job/swath.h"
#include "link/frame.h"
#include "link/reconnect.h"
#include "link/transport.h"
#include "platform/platform.h"
#include "protocol/command.h"
#include "protocol/printer_state.h"
#include "protocol/reply.h"
#include "protocol/reply_format.h"

namespace qrn {
namespace {

constexpr std::uint32_t kBufferPollMs = 500;
constexpr std::uint32_t kBufferWaitLogMs = 5000;
constexpr std::uint32_t kPacketSwathNoAt = kPacketSwathHeaderAt + offsetof(SwathHeader, swathNo);
constexpr std::uint32_t kPacketFeedStepsAt =
    kPacketSwathHeaderAt + offsetof(SwathHeader, feedSteps);

std::uint8_t g_reply[3000];

// A message on its way.
struct Message {
  const std::uint8_t* packet;
  std::uint32_t packetBytes;
  const std::uint8_t* data;
  std::uint32_t dataBytes;

  std::uint32_t Code() const { return U32(packet + kPacketCodeAt); }
  int SwathNo() const { return static_cast<int>(U32(packet + kPacketSwathNoAt)); }
};

enum class Attempt { kDelivered, kRefused, kAgain, kLinkLost };

void LogAttempt(const Job& job, const Message& message, int resends) {
  if (message.dataBytes != 0) {
    LogPrint("Tx Swath%d(%d) size:%d", message.SwathNo(), resends,
             static_cast<int>(message.dataBytes));
  } else if (message.Code() == kCmdSwath) {
    LogPrint("Tx empty Swath%d(%d)  steps:%d", message.SwathNo(), resends,
             static_cast<int>(U32(message.packet + kPacketFeedStepsAt)));
  } else {
    LogPrint("Tx Cmm %d-%X(%d)", static_cast<int>(message.Code()),
             static_cast<unsigned>(job.nTxCmd), resends);
  }
}

Attempt LinkLost(const char* what) {
  LogPrint("%s", what);
  return Attempt::kLinkLost;
}

// Receives the next reply into g_reply; false when the link is lost. LinkRecv also counts chunks
// that did not fit: *bytes ends at the capacity.
bool ReceiveReply(Job& job, std::uint32_t* bytes) {
  if (LinkRecv(job, g_reply, sizeof g_reply, bytes) == 0) return false;
  *bytes = std::min(*bytes, std::uint32_t{sizeof g_reply});
  return true;
}

// Reads replies until one answers this message.
Attempt TakeReply(Job& job, const Message& message, std::uint32_t startMs) {
  for (;;) {
    std::uint32_t replyBytes = 0;
    if (!ReceiveReply(job, &replyBytes)) return LinkLost("Rec fail!\n");
    switch (ParseReply(job, g_reply, replyBytes)) {
      case kReplyTaken:
        if (message.dataBytes != 0) {
          LogPrint("Swath%03d sended:%d", message.SwathNo(),
                   static_cast<int>(ThePlatform().TickMs() - startMs));
        }
        return Attempt::kDelivered;
      case kReplyRefused:
        LogPrint("FW错误 REPLY FAIL\n");
        return Attempt::kRefused;
      case kReplyAgain:
        return Attempt::kAgain;
      case kReplyOther:
        break;
    }
  }
}

// A swath is given up when the job stops. One that only feeds the paper still gets its first
// attempt.
bool IsGivenUp(Job& job, const Message& message, bool repeated) {
  return message.Code() == kCmdSwath && (message.dataBytes != 0 || repeated) &&
         IsStopRequested(job);
}

Attempt TryOnce(Job& job, const Message& message, int resends, int reconnections) {
  if (IsGivenUp(job, message, resends != 0 || reconnections != 0)) {
    LogPrint("Tx swathing... bur quit!");
    return Attempt::kDelivered;
  }
  const std::uint32_t startMs = ThePlatform().TickMs();
  LogAttempt(job, message, resends);
  if (LinkSend(job.hDevice, message.packet, message.packetBytes, kTypeCmm) == 0)
    return LinkLost("send(CMM) fail!\n");
  if (message.dataBytes != 0 &&
      LinkSend(job.hDevice, message.data, message.dataBytes, kTypeData) == 0) {
    return LinkLost("send(DATA) fail!\n");
  }
  return TakeReply(job, message, startMs);
}

// True when the printer has room for this much swath data, or has cancelled.
bool TakeBufferReply(Job& job, std::uint32_t replyBytes, std::uint32_t dataBytes) {
  TakeQueriedState(job, g_reply, replyBytes);
  if (DecodeReply(g_reply, replyBytes).sub == kJobCancelled) return true;
  const std::uint32_t room = ReplyWord(g_reply, replyBytes, kReplyPayloadAt) |
                             std::uint32_t{ReplyWord(g_reply, replyBytes, kReplyPayloadAt + 2)}
                                 << 16;
  return room >= dataBytes / 2;
}

}  // namespace

int TxExchange(Job& job, const std::uint8_t* packet, std::uint32_t packetBytes,
               const std::uint8_t* data, std::uint32_t dataBytes) {
  const Message message{packet, packetBytes, data, dataBytes};
  if (dataBytes != 0) TxWaitFwBuffer(job, dataBytes);
  int resends = 0, reconnections = 0;
  for (;;) {
    switch (TryOnce(job, message, resends, reconnections)) {
      case Attempt::kDelivered:
        return 1;
      case Attempt::kRefused:
        return 0;
      case Attempt::kAgain:
        if (message.Code() == kCmdSwath) TxWaitFwBuffer(job, dataBytes);
        ++resends;
        break;
      case Attempt::kLinkLost:
        ++reconnections;
        if (LinkReconnect(job) == 0) {
          LogPrint("重新连接失败!\n");
          RaiseError(kErrorLinkGivenUp);
          return 0;
        }
        LogPrint("连接%d成功!\n", reconnections);
        break;
    }
  }
}

void TxWaitFwBuffer(Job& job, std::uint32_t dataBytes) {
  std::uint8_t packet[kCommandBytes] = {};
  PutU32(packet + kPacketCodeAt, kCmdBufferQuery);
  PutU32(packet + kPacketDataSizeAt, dataBytes);
  std::uint32_t spanStart = ThePlatform().TickMs();
  while (!IsStopRequested(job)) {
    if (LinkSend(job.hDevice, packet, sizeof packet, kTypeCmm) == 0) return;
    std::uint32_t replyBytes = 0;
    do {  // what holds no code answers nothing
      if (!ReceiveReply(job, &replyBytes)) return;
    } while (replyBytes < sizeof(ReplyRec::code));
    if (TakeBufferReply(job, replyBytes, dataBytes)) return;
    ThePlatform().SleepMs(kBufferPollMs);
    if (ThePlatform().TickMs() - spanStart > kBufferWaitLogMs) {
      spanStart = ThePlatform().TickMs();
      LogPrint("Fw buffer wait 5s...");
    }
  }
}

}  // namespace qrn
