#include "link/transmit.h"

#include "base/bytes.h"
#include "base/shared.h"
#include "diag/job_log.h"
#include "job/stop_request.h"
#include "link/exchange.h"
#include "platform/platform.h"
#include "protocol/command.h"
#include "protocol/spit_plan.h"
#include "protocol/swath_header.h"
#include "raster/swath_queue.h"

namespace qrn {
namespace {

constexpr std::uint32_t kFailedCommandMs = 1000;

// Why the thread ended, for the log.
enum TaskEnd : int { kEndStopped = 1, kEndJobDone = 2, kEndAborted = 3 };

// One turn of a job that runs: a command goes before a swath.
void RunTurn(Job& job) {
  if (CmdSchedule(job) && TxSendCommand(job) == 0) {
    StoreShared(job.bTxRun, 0);
    ThePlatform().SleepMs(kFailedCommandMs);
    return;
  }
  if (TxTakeSwath(job) == 0) {
    ThePlatform().SleepMs(kPollMs);
    return;
  }
  if (TxSendSwath(job) == 0) StoreShared(job.bTxRun, 0);
}

// One turn of a job that is stopping: commands still go out, swaths do not.
void StopTurn(Job& job) {
  if (CmdSchedule(job) && TxSendCommand(job) == 0) StoreShared(job.bTxRun, 0);
  ThePlatform().SleepMs(kPollMs);
}

TaskEnd RunTurns(Job& job) {
  for (;;) {
    if (LoadShared(job.bTxRun) == 0) return kEndStopped;
    if (LoadShared(job.bJobEndRx) == 1) return kEndJobDone;
    if (!IsStopRequested(job)) {
      RunTurn(job);
      continue;
    }
    if (IsAbortRequested(job)) return kEndAborted;
    StopTurn(job);
  }
}

}  // namespace

void TxTask(Job& job) {
  const TaskEnd end = RunTurns(job);
  LogPrint("Task end(%d)!", end);
  StoreShared(job.bTxEnd, 1);
  StoreShared(job.bTxRun, 0);
}

int TxSendCommand(Job& job) {
  const int accepted = TxExchange(job, job.cmdPkt, kCommandBytes, nullptr, 0);
  CmdSettle(job, accepted == 1);
  return accepted;
}

int TxTakeSwath(Job& job) {
  if (LoadShared(job.bPrnCancel) == 1) return 0;
  Swath* swath = QueueGetReady(job);
  if (swath == nullptr) return 0;
  job.pTxSwath = swath;
  job.nTxCmd = kCmdSwath;
  return 1;
}

int TxSendSwath(Job& job) {
  Swath& swath = *job.pTxSwath;
  SpitPlan(job, swath);
  std::uint8_t packet[kCommandBytes] = {};
  PutU32(packet + kPacketCodeAt, kCmdSwath);
  PutU32(packet + kPacketDataSizeAt, swath.dataSize);
  EncodeSwathHeader(swath.header, packet + kPacketSwathHeaderAt);
  if (TxExchange(job, packet, sizeof packet, swath.pSwathData, swath.dataSize) == 0) return 0;
  SetSwathState(&swath, kSwathFree);
  return 1;
}

}  // namespace qrn
