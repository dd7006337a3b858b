#include "link/link_control.h"

#include "base/shared.h"
#include "diag/driver_error.h"
#include "diag/job_log.h"
#include "link/transmit.h"
#include "link/usb_device.h"
#include "platform/platform.h"

namespace qrn {
namespace {

constexpr std::uint32_t kStopGraceMs = 1000;
constexpr int kStopPollsMax = 202;

// What the link logs about itself: two numbers and a flag.
constexpr unsigned kLinkInfoA = 3, kLinkInfoB = 0;
constexpr std::uint8_t kLinkInfoOk = 1;

void MarkNotRunning(Job& job) {
  StoreShared(job.bTxRun, 0);
  StoreShared(job.bTxEnd, 1);
}

// After this no step of the thread is left, so that the record may be cleared and the library
// unloaded.
void ReleaseThread(Job& job) {
  if (job.hTxThread == 0) return;
  ThePlatform().ThreadRelease(job.hTxThread);
  LogDropUnwritten(job);
  job.hTxThread = 0;
}

void CloseLink(Job& job) {
  UsbClose(job);
  ReleaseThread(job);
}

// Polls until the thread has ended; false when it does not.
bool WaitForEnd(Job& job) {
  for (int poll = 0; poll < kStopPollsMax; ++poll) {
    ThePlatform().SleepMs(kPollMs);
    if (LoadShared(job.bTxEnd) == 1) return true;
  }
  return false;
}

}  // namespace

int LinkStart(Job& job) {
  job.bLinkInfoOk = kLinkInfoOk;
  StoreShared(job.bTxRun, 1);
  StoreShared(job.bTxEnd, 0);
  if (UsbOpen(job) == 0) {
    LogPrint("无法开启目标设备，请确认连线已经正确或驱动已经安装成功 %X-%X-%d\r\n", kLinkInfoA,
             kLinkInfoB, kLinkInfoOk);
    RaiseError(kErrorNoDevice);
    MarkNotRunning(job);
    return 0;
  }
  job.hTxThread =
      ThePlatform().ThreadStart([](void* argument) { TxTask(*static_cast<Job*>(argument)); }, &job);
  if (job.hTxThread == 0) {
    LogPrint("Create Tx thread fail!!!\r\n");
    MarkNotRunning(job);
    return 0;
  }
  ThePlatform().ThreadRaisePriority(job.hTxThread);
  LogPrint("Link Start %X%02X-%d\n", kLinkInfoA, kLinkInfoB, kLinkInfoOk);
  return 1;
}

void LinkStop(Job& job) {
  // It has ended, is in its last second after a failure, or never ran: it does no more I/O.
  if (LoadShared(job.bTxRun) != 1) {
    CloseLink(job);
    return;
  }
  ThePlatform().SleepMs(kStopGraceMs);
  StoreShared(job.bTxRun, 0);
  const std::uint32_t start = ThePlatform().TickMs();
  const auto elapsed = [start] { return static_cast<int>(ThePlatform().TickMs() - start); };
  if (LoadShared(job.bTxEnd) == 1) {
    CloseLink(job);
    return;
  }
  if (!WaitForEnd(job)) {
    ThePlatform().ThreadTerminate(job.hTxThread);
    LogDropUnwritten(job);
    MarkNotRunning(job);
    LogPrint("\n强行退出TX线程,delay:%dms", elapsed());
  }
  LogPrint("Tx task end delay:%dms", elapsed());
  CloseLink(job);
}

}  // namespace qrn
