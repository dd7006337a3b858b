// A platform that hands every call on to another one; a test overrides what it watches or changes.
#ifndef QRN_TESTS_SUPPORT_FORWARDING_PLATFORM_H_
#define QRN_TESTS_SUPPORT_FORWARDING_PLATFORM_H_

#include "platform/platform.h"

namespace qrn {

class ForwardingPlatform : public Platform {
 public:
  explicit ForwardingPlatform(Platform& target) : target_(target) {}

  UsbList UsbListOpen() override { return target_.UsbListOpen(); }
  UsbPathStatus UsbListPath(UsbList list, std::uint32_t index, const char** path) override {
    return target_.UsbListPath(list, index, path);
  }
  void UsbListClose(UsbList list) override { target_.UsbListClose(list); }
  DeviceHandle DeviceOpen(const char* path) override { return target_.DeviceOpen(path); }
  void DeviceClose(DeviceHandle device) override { target_.DeviceClose(device); }
  bool BulkWrite(DeviceHandle device, const void* data, std::uint32_t bytes) override {
    return target_.BulkWrite(device, data, bytes);
  }
  bool BulkRead(DeviceHandle device, void* data, std::uint32_t bytes) override {
    return target_.BulkRead(device, data, bytes);
  }
  std::uint32_t LastError() override { return target_.LastError(); }
  std::uint32_t TickMs() override { return target_.TickMs(); }
  void SleepMs(std::uint32_t ms) override { target_.SleepMs(ms); }
  LocalTime LocalTimeNow() override { return target_.LocalTimeNow(); }
  ThreadHandle ThreadStart(void (*procedure)(void*), void* argument) override {
    return target_.ThreadStart(procedure, argument);
  }
  void ThreadRaisePriority(ThreadHandle thread) override { target_.ThreadRaisePriority(thread); }
  void ThreadTerminate(ThreadHandle thread) override { target_.ThreadTerminate(thread); }
  void ThreadRelease(ThreadHandle thread) override { target_.ThreadRelease(thread); }
  std::uint32_t SystemLocaleId() override { return target_.SystemLocaleId(); }
  void ShowBox(const char* text, const char* caption) override { target_.ShowBox(text, caption); }
  bool PathExists(const char* path) override { return target_.PathExists(path); }
  bool FileCreate(const char* path) override { return target_.FileCreate(path); }
  FileWrite FileWriteAt(const char* path, const FilePart& part, std::uint32_t gapMaxBytes,
                        std::uint32_t* fileBytes) override {
    return target_.FileWriteAt(path, part, gapMaxBytes, fileBytes);
  }

 private:
  Platform& target_;
};

}  // namespace qrn

#endif  // QRN_TESTS_SUPPORT_FORWARDING_PLATFORM_H_
