#include "host/job_lifecycle.h"

#include "base/shared.h"
#include "diag/job_log.h"
#include "host/entry.h"
#include "job/error_codes.h"
#include "link/link_control.h"
#include "platform/platform.h"
#include "protocol/command.h"
#include "protocol/execute.h"
#include "raster/job_memory.h"
#include "raster/swath_queue.h"

namespace qrn {
namespace {

constexpr int kVersionMajor = 2, kVersionMinor = 7, kVersionBuild = 18;

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

void JobEnd(Job& job) {
  WaitSwathQueue(job);
  (void)CmdExecute(kCmdJobEnd, job);  // the job ends even when the printer refuses that
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
