// The Windows implementation: the system's own calls, and a way out for a thread that is to end by
// force, so that it is not stopped in the middle of what others need. Tests put virtual devices in
// its place.
#ifndef QRN_PLATFORM_WIN32_WIN32_PLATFORM_H_
#define QRN_PLATFORM_WIN32_WIN32_PLATFORM_H_

#include "platform/platform.h"

namespace qrn {

class Win32Platform : public Platform {
 public:
  // Does not return on a thread that is to end by force; what waits calls it before and after.
  static void LeaveIfAsked();

  UsbList UsbListOpen() override;
  UsbPathStatus UsbListPath(UsbList list, std::uint32_t index, const char** path) override;
  void UsbListClose(UsbList list) override;
  DeviceHandle DeviceOpen(const char* path) override;
  void DeviceClose(DeviceHandle device) override;
  bool BulkWrite(DeviceHandle device, const void* data, std::uint32_t bytes) override;
  bool BulkRead(DeviceHandle device, void* data, std::uint32_t bytes) override;
  std::uint32_t LastError() override;
  std::uint32_t TickMs() override;
  void SleepMs(std::uint32_t ms) override;
  LocalTime LocalTimeNow() override;
  ThreadHandle ThreadStart(void (*procedure)(void*), void* argument) override;
  void ThreadRaisePriority(ThreadHandle thread) override;
  void ThreadTerminate(ThreadHandle thread) override;
  void ThreadRelease(ThreadHandle thread) override;
  std::uint32_t SystemLocaleId() override;
  void ShowBox(const char* text, const char* caption) override;
  bool PathExists(const char* path) override;
  bool FileCreate(const char* path) override;
  FileWrite FileWriteAt(const char* path, const FilePart& part, std::uint32_t gapMaxBytes,
                        std::uint32_t* fileBytes) override;
};

}  // namespace qrn

#endif  // QRN_PLATFORM_WIN32_WIN32_PLATFORM_H_
