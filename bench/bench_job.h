// A job in front of its first pass, as the connect leaves it, and images to print with it.
#ifndef QRN_BENCH_BENCH_JOB_H_
#define QRN_BENCH_BENCH_JOB_H_

#include <cstdint>
#include <vector>

#include "host/job.h"
#include "platform/platform.h"
#include "sim/machine.h"

namespace qrn::bench {

// A system on which nothing happens: no log folder, no devices; transfers succeed at once.
class IdlePlatform final : public Platform {
 public:
  IdlePlatform() { UsePlatform(this); }
  ~IdlePlatform() override { UsePlatform(nullptr); }
  UsbList UsbListOpen() override { return 0; }
  UsbPathStatus UsbListPath(UsbList, std::uint32_t, const char**) override {
    return UsbPathStatus::kEnd;
  }
  void UsbListClose(UsbList) override {}
  DeviceHandle DeviceOpen(const char*) override { return 0; }
  void DeviceClose(DeviceHandle) override {}
  bool BulkWrite(DeviceHandle, const void*, std::uint32_t) override { return true; }
  bool BulkRead(DeviceHandle, void*, std::uint32_t) override { return true; }
  std::uint32_t LastError() override { return 0; }
  std::uint32_t TickMs() override { return 0; }
  void SleepMs(std::uint32_t) override {}
  LocalTime LocalTimeNow() override { return {}; }
  ThreadHandle ThreadStart(void (*)(void*), void*) override { return 0; }
  void ThreadRaisePriority(ThreadHandle) override {}
  void ThreadTerminate(ThreadHandle) override {}
  void ThreadRelease(ThreadHandle) override {}
  std::uint32_t SystemLocaleId() override { return 0; }
  void ShowBox(const char*, const char*) override {}
  bool PathExists(const char*) override { return false; }
};

struct JobSpec {
  std::uint32_t resolution;
  bool oneHead = false;
  double widthMm = 1000;
};

// The one job record, set up for a page of that width, for the life of the object.
class BenchJob {
 public:
  explicit BenchJob(const JobSpec& spec);
  ~BenchJob();
  BenchJob(const BenchJob&) = delete;
  BenchJob& operator=(const BenchJob&) = delete;

  Job& Record() { return job_; }

 private:
  IdlePlatform platform_;
  Job& job_;
};

// Lines in which that share of the pixels, in percent, has ink of a random level.
std::vector<std::vector<std::uint8_t>> InkLines(std::size_t count, std::size_t lineBytes,
                                                int percent);

// Fills every row of the pass buffers with them, each plane in another order.
void FillPassBuffers(Job& job, const std::vector<std::vector<std::uint8_t>>& lines);

}  // namespace qrn::bench

#endif  // QRN_BENCH_BENCH_JOB_H_
