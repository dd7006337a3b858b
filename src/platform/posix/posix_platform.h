// The posix implementation: real threads and real time. It lists no printers of its own; a set of
// virtual devices can be plugged in.
#ifndef QRN_PLATFORM_POSIX_POSIX_PLATFORM_H_
#define QRN_PLATFORM_POSIX_POSIX_PLATFORM_H_

#include "platform/platform.h"
#include "platform/usb_port.h"

namespace qrn {

class PosixPlatform final : public Platform {
 public:
  // What the devices and the user are, until changed; only between jobs. A null port: no devices.
  void Plug(UsbPort* port) { port_ = port; }
  // Called for every message box in place of the default, a line on standard error; text in UTF-8.
  using BoxHandler = void (*)(void* context, const char* text, const char* caption);
  void HandleBoxes(BoxHandler handler, void* context);

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

 private:
  UsbPort* port_ = nullptr;
  BoxHandler boxHandler_ = nullptr;
  void* boxContext_ = nullptr;
};

PosixPlatform& ThePosixPlatform();

}  // namespace qrn

#endif  // QRN_PLATFORM_POSIX_POSIX_PLATFORM_H_
