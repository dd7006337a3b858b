// Virtual time: one thread of the library runs at a time, chosen by a seeded scheduler, and the
// clock jumps to the earliest waiter. A wait of thirty seconds costs nothing, and a seed repeats a
// run to the byte. Threads switch where the library waits: in sleeps, transfers, boxes and when a
// thread is released, and nowhere else. The thread that constructs it is the host's thread.
#ifndef QRN_SIM_TIME_SIM_PLATFORM_H_
#define QRN_SIM_TIME_SIM_PLATFORM_H_

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/platform.h"
#include "platform/usb_port.h"

namespace qrn::sim {

struct SimOptions {
  std::uint64_t seed = 1;
  std::uint32_t startTickMs = 1000;
  LocalTime startTime{2024, 2, 28, 23, 58, 30};
  std::uint32_t localeId = 0x0409;
  std::uint32_t boxOpenMs = 500;  // until the user closes a message box
  bool failThreadStart = false;
  std::uint64_t limitMs = 7ull * 24 * 3600 * 1000;  // a run that takes longer is given up
  std::function<void(const std::string& text)> onBox;
};

// Thrown on the host's thread, through the library, when virtual time passes its limit. What the
// library had begun is left as it is: after that only the platform's destructor may follow.
class TimeLimitPassed : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class SimPlatform final : public Platform {
 public:
  SimPlatform(UsbPort& port, SimOptions options);
  ~SimPlatform() override;  // ends what still runs

  std::uint32_t OpenDevices() const { return openDevices_; }
  std::uint32_t LiveThreads() const;  // started and not yet released

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
  std::uint32_t SystemLocaleId() override { return options_.localeId; }
  void ShowBox(const char* text, const char* caption) override;
  bool PathExists(const char* path) override;
  bool FileCreate(const char* path) override;
  FileWrite FileWriteAt(const char* path, const FilePart& part, std::uint32_t gapMaxBytes,
                        std::uint32_t* fileBytes) override;

 private:
  struct Thread;
  struct Waiting;

  void WaitUntil(std::uint64_t wakeMs);
  bool IsOverTime() const { return nowMs_ > options_.limitMs; }
  void PassBaton(std::unique_lock<std::mutex>& lock, Thread& from);
  Thread& PickNext();
  Thread& Current();
  std::uint64_t Random();

  UsbPort& port_;
  SimOptions options_;
  std::uint64_t random_;
  std::uint64_t nowMs_ = 0;  // since construction
  std::uint32_t openDevices_ = 0;
  std::mutex mutex_;
  std::vector<std::unique_ptr<Thread>> threads_;  // [0] is the host's
  Thread* running_ = nullptr;
};

}  // namespace qrn::sim

#endif  // QRN_SIM_TIME_SIM_PLATFORM_H_
