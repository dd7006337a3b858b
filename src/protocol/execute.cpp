#include "protocol/execute.h"

#include "base/bytes.h"
#include "base/shared.h"
#include "diag/job_log.h"
#include "job/stop_request.h"
#include "platform/platform.h"
#include "protocol/command.h"

namespace qrn {
namespace {

constexpr std::uint32_t kWaitLogMs = 3000;

// Waits for one period; says from time to time that the answer has not come.
void WaitForAnswer(std::uint8_t code, std::uint32_t* notedMs) {
  const std::uint32_t now = ThePlatform().TickMs();
  if (now - *notedMs > kWaitLogMs) {
    LogPrint("Cmm%d reply Waitting...", code);
    *notedMs = now;
  }
  ThePlatform().SleepMs(kPollMs);
}

}  // namespace

int CmdExecute(std::uint32_t code, Job& job) {
  if (LoadShared(job.bTxRun) == 0) return 0;
  const std::uint8_t loggedCode = Low8(code);
  std::uint32_t notedMs = ThePlatform().TickMs();
  bool posted = false;
  for (;;) {
    // While it is not posted, the mailbox holds a command of the transmit thread's own, until the
    // printer has answered that.
    if (!posted) {
      const CommandPost post = CmdBuild(code, job);
      if (post == CommandPost::kUnknownCode) return 0;
      posted = post == CommandPost::kPosted;
    }
    if (IsAbortRequested(job)) break;
    // Read before the state: the thread settles its last command before it sets bTxEnd.
    const bool nobodyLeft = LoadShared(job.bTxEnd) == 1;
    const std::uint8_t state = posted ? LoadShared(job.nCmdState) : std::uint8_t{kMailPending};
    if (state == kMailDone || state == kMailFailed) {
      if (state == kMailFailed) LogPrint("指令(%d)执行失败\n", loggedCode);
      StoreShared(job.nCmdState, kMailIdle);
      return state == kMailDone ? 1 : 0;
    }
    if (nobodyLeft) break;
    WaitForAnswer(loggedCode, &notedMs);
  }
  LogPrint("Cmm(%d) Quit:%d-%d-%d-%d\n", loggedCode, LoadShared(job.bTxRun),
           LoadShared(job.bJobEndRx), LoadShared(job.bTxEnd), LoadShared(job.bPrnCancel));
  if (posted) StoreShared(job.nCmdState, kMailIdle);  // taken back unsettled
  return 0;
}

}  // namespace qrn
