#include "host/job_lifecycle.h"

#include "diag/driver_error.h"
#include "diag/job_log.h"
#include "host/entry.h"
#include "host/stop_request.h"
#include "link/link_control.h"
#include "platform/platform.h"
#include "platform/shared.h"
#include "protocol/command.h"
#include "raster/job_memory.h"
#include "raster/swath_queue.h"

namespace qrn {
namespace {

constexpr int kVersionMajor = 2, kVersionMinor = 7, kVersionBuild = 18;
constexpr std::uint32_t kPollMs = 100;
constexpr std::uint32_t kWaitLogMs = 3000;

// What a wait for the printer's answer writes about itself, and how it is given up.
class CommandWait {
 public:
  CommandWait(std::uint8_t code, Job& job) : code_(code), job_(job) {}

  // The command stands in the mailbox; until then the slot is another's.
  void Posted() { posted_ = true; }

  // True when there is no printer left to wait for; the wait is then given up.
  bool Abandoned() {
    if (!IsStopRequested(job_) || !IsAbortRequested(job_)) return false;
    (void)GiveUp();
    return true;
  }

  // Takes a posted command back unsettled; the result of the wait, 0.
  int GiveUp() {
    LogPrint("Cmm(%d) Quit:%d-%d-%d-%d\n", code_, LoadShared(job_.bTxRun),
             LoadShared(job_.bJobEndRx), LoadShared(job_.bTxEnd), LoadShared(job_.bPrnCancel));
    if (posted_) StoreShared(job_.nCmdState, kMailIdle);
    return 0;
  }

  void Sleep() {
    const std::uint32_t now = ThePlatform().TickMs();
    if (now - noted_ > kWaitLogMs) {
      LogPrint("Cmm%d reply Waitting...", code_);
      noted_ = now;
    }
    ThePlatform().SleepMs(kPollMs);
  }

 private:
  std::uint8_t code_;
  Job& job_;
  bool posted_ = false;
  std::uint32_t noted_ = ThePlatform().TickMs();
};

// True once the command stands in the mailbox. The transmit thread's own commands hold the mailbox
// only until the printer has answered them.
bool PostCommand(std::uint32_t code, Job& job, CommandWait& wait) {
  for (;;) {
    const CommandPost post = CmdBuild(code, job);
    if (post == CommandPost::kUnknownCode) return false;
    if (post == CommandPost::kPosted) {
      wait.Posted();
      return true;
    }
    if (wait.Abandoned()) return false;
    if (LoadShared(job.bTxEnd) == 1) return wait.GiveUp() != 0;
    wait.Sleep();
  }
}

}  // namespace

bool JobStart(Job& job) {
  LogPrint("Lanternfly");
  const LocalTime now = ThePlatform().LocalTimeNow();
  LogPrint("V%d.%02d (%d)\r\n%d.%d.%d %d:%d:%d", kVersionMajor, kVersionMinor, kVersionBuild,
           now.year, now.month, now.day, now.hour, now.minute, now.second);
  if (LinkStart(job) == 0) return false;
  LogPrint("Connect");
  if (CmdExecute(kCmdConnect, job) == 0) return false;
  LogPrint("Job create");
  if (CmdExecute(kCmdJobCreate, job) == 0) return false;
  LogPrint("Job start");
  return true;
}

int CmdExecute(std::uint32_t code, Job& job) {
  if (LoadShared(job.bTxRun) == 0) return 0;
  CommandWait wait(static_cast<std::uint8_t>(code), job);
  if (!PostCommand(code, job, wait)) return 0;
  for (;;) {
    if (wait.Abandoned()) return 0;
    // Looked at before the state: a thread that ends has settled before what it ever will.
    const bool nobodyLeft = LoadShared(job.bTxEnd) == 1;
    const std::uint8_t state = LoadShared(job.nCmdState);
    if (state == kMailFailed) {
      LogPrint("指令(%d)执行失败\n", static_cast<std::uint8_t>(code));
      StoreShared(job.nCmdState, kMailIdle);
      return 0;
    }
    if (state == kMailDone) {
      StoreShared(job.nCmdState, kMailIdle);
      return 1;
    }
    if (nobodyLeft) return wait.GiveUp();
    wait.Sleep();
  }
}

void JobEnd(Job& job) {
  WaitSwathQueue(job);
  (void)CmdExecute(kCmdJobEnd, job);  // a printer that does not take it is left all the same
  LinkStop(job);
  FreeJobMem(job);
  LogRefusedCalls(job);
  const LocalTime now = ThePlatform().LocalTimeNow();
  LogPrint("jobend: %d:%d:%d\n", now.hour, now.minute, now.second);
}

void EndSkippedJob(Job& job, const char* what) {
  if (job.hTxThread == 0 && job.hDevice == 0 && job.PrintOutBuf == nullptr) return;
  LogPrint("%s: it is ended here", what);
  // Recorded without a box, so that the transmit thread leaves whatever it waits for.
  (void)ExchangeShared(job.nErrCode, 0, kErrorHostCancel);
  LinkStop(job);
  FreeJobMem(job);
}

}  // namespace qrn
