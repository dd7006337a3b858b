#include "link/usb_device.h"

#include <cstring>

#include "diag/job_log.h"
#include "platform/platform.h"

namespace qrn {
namespace {

constexpr char kPid[] = "pid_a71d";
constexpr char kVid[] = "vid_5e3c";
static_assert(sizeof kPid <= sizeof(Job::szPid) && sizeof kVid <= sizeof(Job::szVid));

constexpr std::size_t kPathBytes = 256;  // 255 characters of a path take part in the match

// Lower case of what identifiers consist of, whatever the locale.
char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

DeviceHandle OpenFirst(Job& job, UsbList list) {
  for (std::uint32_t index = 0;; ++index) {
    const char* path = nullptr;
    switch (ThePlatform().UsbListPath(list, index, &path)) {
      case UsbPathStatus::kEnd:
        return 0;
      case UsbPathStatus::kUnreadable:
        continue;
      case UsbPathStatus::kPath:
        break;
    }
    const DeviceHandle device = UsbTryInterface(job, path);
    if (device != 0) return device;
  }
}

}  // namespace

void SetUsbIds(Job& job) {
  std::memcpy(job.szPid, kPid, sizeof kPid);
  std::memcpy(job.szVid, kVid, sizeof kVid);
}

int UsbOpen(Job& job) {
  UsbClose(job);
  const UsbList list = ThePlatform().UsbListOpen();
  if (list == 0) {
    LogPrint("ERROR   -   SetupDiGetClassDevs()");
    LogPrint("USB设备未连接\n");
    return 0;
  }
  job.hDevice = OpenFirst(job, list);
  if (job.hDevice == 0) LogPrint("打印机设备未连接\n");
  ThePlatform().UsbListClose(list);
  return job.hDevice != 0 ? 1 : 0;
}

DeviceHandle UsbTryInterface(Job& job, const char* path) {
  char lower[kPathBytes];
  std::size_t length = 0;
  for (; length < kPathBytes - 1 && path[length] != '\0'; ++length)
    lower[length] = Lower(path[length]);
  lower[length] = '\0';
  if (std::strstr(lower, job.szPid) == nullptr || std::strstr(lower, job.szVid) == nullptr)
    return 0;
  return ThePlatform().DeviceOpen(path);
}

void UsbClose(Job& job) {
  if (job.hDevice == 0) return;
  ThePlatform().DeviceClose(job.hDevice);
  job.hDevice = 0;
}

}  // namespace qrn
