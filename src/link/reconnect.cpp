#include "link/reconnect.h"

#include "base/bytes.h"
#include "diag/driver_error.h"
#include "diag/job_log.h"
#include "link/frame.h"
#include "link/transport.h"
#include "link/usb_device.h"
#include "platform/platform.h"
#include "protocol/command.h"

namespace qrn {
namespace {

constexpr std::uint32_t kFirstWaitMs = 3000;
constexpr std::uint32_t kWaitGrowthMs = 1000;
constexpr std::uint32_t kLastWaitMs = 8000;
constexpr std::uint32_t kSettleMs = 200;  // between an open and the answer test

// Keeps what earlier tests received: a packet of no known kind leaves it unchanged and counts as an
// answer.
std::uint8_t g_testReply[1500];

bool TryOnce(Job& job) {
  if (UsbOpen(job) == 0) return false;
  ThePlatform().SleepMs(kSettleMs);
  return UsbLinkCheck(job);
}

}  // namespace

int LinkReconnect(Job& job) {
  LogPrint("\r\n重新连接...");
  UsbClose(job);
  std::uint32_t waitMs = kFirstWaitMs;
  for (int failures = 1;; ++failures) {
    if (TryOnce(job)) return 1;
    if (waitMs >= kLastWaitMs) break;
    waitMs += kWaitGrowthMs;
    LogPrint("第%d连接失败(error code:%d),继续尝试连接...\n", failures,
             static_cast<int>(ThePlatform().LastError()));
    ThePlatform().SleepMs(waitMs);
  }
  LogPrint("连接失败\r\n");
  RaiseError(kErrorLinkGivenUp);
  return 0;
}

bool UsbLinkCheck(Job& job) {
  std::uint8_t packet[kCommandBytes] = {};
  PutU32(packet + kPacketCodeAt, kCmdPausePoll);
  if (LinkSend(job.hDevice, packet, sizeof packet, kTypeCmm) == 0) return false;
  std::uint32_t replyBytes = 0;
  do {
    if (LinkRecv(job, g_testReply, sizeof g_testReply, &replyBytes) == 0) return false;
  } while (U32(g_testReply) == 0);
  return true;
}

}  // namespace qrn
