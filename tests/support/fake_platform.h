// A platform for tests of single parts: one thread, a clock that sleeping moves, devices and
// transfers by script. Files are the system's.
#ifndef QRN_TESTS_SUPPORT_FAKE_PLATFORM_H_
#define QRN_TESTS_SUPPORT_FAKE_PLATFORM_H_

#include <cstring>
#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "support/forwarding_platform.h"

namespace qrn {

class FakePlatform : public ForwardingPlatform {
 public:
  FakePlatform() : ForwardingPlatform(SystemPlatform()) { UsePlatform(this); }
  ~FakePlatform() override { UsePlatform(nullptr); }

  // What is plugged in: paths in order; "" = details unreadable. A path with "held" in it cannot be
  // opened.
  std::vector<std::string> paths;
  std::vector<std::string> opened;
  std::uint32_t openCount = 0;  // opened and not closed

  // Transfers. A packet of the queue is what the next read gives; an empty one, or an empty queue,
  // is a failed read.
  std::vector<std::vector<std::uint8_t>> written;
  std::uint32_t failWriteAfter = UINT32_MAX;  // this many writes succeed, the others fail
  std::deque<std::vector<std::uint8_t>> replies;

  std::uint32_t nowMs = 1000;
  std::vector<std::uint32_t> sleeps;
  std::function<void()> onSleep;  // plays the other thread
  std::uint32_t localeId = 0x0409;
  std::vector<std::string> boxes;  // their texts

  UsbList UsbListOpen() override { return 1; }
  UsbPathStatus UsbListPath(UsbList, std::uint32_t index, const char** path) override {
    if (index >= paths.size()) return UsbPathStatus::kEnd;
    *path = paths[index].c_str();
    return paths[index].empty() ? UsbPathStatus::kUnreadable : UsbPathStatus::kPath;
  }
  DeviceHandle DeviceOpen(const char* path) override {
    if (std::strstr(path, "held") != nullptr) return 0;
    opened.push_back(path);
    ++openCount;
    return opened.size();
  }
  void DeviceClose(DeviceHandle) override { --openCount; }
  bool BulkWrite(DeviceHandle, const void* data, std::uint32_t bytes) override {
    if (written.size() >= failWriteAfter) return false;
    const auto* begin = static_cast<const std::uint8_t*>(data);
    written.emplace_back(begin, begin + bytes);
    return true;
  }
  bool BulkRead(DeviceHandle, void* data, std::uint32_t bytes) override {
    if (replies.empty()) return false;
    const std::vector<std::uint8_t> packet = std::move(replies.front());
    replies.pop_front();
    if (packet.size() != bytes) return false;
    std::memcpy(data, packet.data(), bytes);
    return true;
  }
  std::uint32_t LastError() override { return 31; }
  std::uint32_t TickMs() override { return nowMs; }
  void SleepMs(std::uint32_t ms) override {
    sleeps.push_back(ms);
    nowMs += ms;
    if (onSleep) onSleep();
  }
  LocalTime LocalTimeNow() override { return {2024, 3, 7, 9, 5, 2}; }
  std::uint32_t SystemLocaleId() override { return localeId; }
  void ShowBox(const char* text, const char*) override { boxes.emplace_back(text); }
};

}  // namespace qrn

#endif  // QRN_TESTS_SUPPORT_FAKE_PLATFORM_H_
