#include "protocol/command.h"

#include <cstring>

#include "base/bytes.h"
#include "base/shared.h"
#include "diag/job_log.h"
#include "platform/platform.h"
#include "protocol/job_info.h"

namespace qrn {
namespace {

constexpr std::size_t kPacketMarkAAt = 32;
constexpr std::size_t kPacketMarkBAt = 34;
constexpr std::uint16_t kConnectMarkA = 0x1111;
constexpr std::uint16_t kConnectMarkB = 0x2013;

constexpr std::uint32_t kPausePollMs = 1500;

// Tick of the last pause poll, 0 before the first. Outlives jobs, so that a new job keeps the
// period. Transmit thread.
std::uint32_t nLastPollTick = 0;

// Fills the body for a code; false when the code is no command of the mailbox. Commands without a
// body of their own keep that of the command before.
bool BuildBody(std::uint32_t code, Job& job) {
  std::uint8_t* body = job.cmdPkt + kPacketBodyAt;
  switch (code) {
    case kCmdConnect:
      std::memset(body, 0, kPacketBodyBytes);
      PutU16(job.cmdPkt + kPacketMarkAAt, kConnectMarkA);
      PutU16(job.cmdPkt + kPacketMarkBAt, kConnectMarkB);
      return true;
    case kCmdJobCreate:
      std::memset(body, 0, kPacketBodyBytes);
      BuildJobInfo(job, body);
      return true;
    case kCmdJobEnd:
    case kCmdCancel:
    case kCmdPausePoll:
      return true;
    default:
      return false;
  }
}

}  // namespace

CommandPost CmdBuild(std::uint32_t code, Job& job) {
  if (!ExchangeShared(job.nCmdState, kMailIdle, kMailBuilding)) return CommandPost::kBusy;
  PutU32(job.cmdPkt + kPacketCodeAt, Low8(code));
  const bool known = BuildBody(code, job);
  if (!known) LogPrint("未知命令... %d\r\n", static_cast<int>(code));
  StoreShared(job.nCmdState, known ? kMailPending : kMailIdle);
  return known ? CommandPost::kPosted : CommandPost::kUnknownCode;
}

bool CmdSchedule(Job& job) {
  if (LoadShared(job.queueStarted) == 1) {
    if (LoadShared(job.bCancelLatch) == 1) {
      (void)CmdBuild(kCmdCancel, job);  // busy: the next turn posts it
    } else if (LoadShared(job.bPauseSeen) == 1) {
      const std::uint32_t now = ThePlatform().TickMs();
      const bool due = nLastPollTick == 0 || now - nLastPollTick > kPausePollMs;
      if (due && CmdBuild(kCmdPausePoll, job) == CommandPost::kPosted) nLastPollTick = now;
    }
  }
  if (LoadShared(job.nCmdState) != kMailPending) return false;
  job.nTxCmd = Low8(U32(job.cmdPkt + kPacketCodeAt));
  return true;
}

void CmdSettle(Job& job, bool accepted) {
  const bool own = job.nTxCmd == kCmdCancel || job.nTxCmd == kCmdPausePoll;
  const std::uint8_t outcome = own ? kMailIdle : accepted ? kMailDone : kMailFailed;
  // A host that has given up waiting has taken its command back: then there is nothing to settle.
  (void)ExchangeShared(job.nCmdState, kMailPending, outcome);
}

}  // namespace qrn
