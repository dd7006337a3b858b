// A job before its first pass, as the connect leaves it, and images to print with it.
#ifndef QRN_BENCH_BENCH_JOB_H_
#define QRN_BENCH_BENCH_JOB_H_

#include <cstdint>
#include <functional>
#include <vector>

#include "job/job.h"
#include "platform/platform.h"
#include "raster/band.h"
#include "raster/convert.h"
#include "sim/machine/machine.h"

namespace qrn::bench {

// A system on which nothing happens: no log folder, no devices; transfers succeed at once. Writes
// and sleeps can be listened to.
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
  bool BulkWrite(DeviceHandle, const void* data, std::uint32_t bytes) override {
    if (onWrite) onWrite(static_cast<const std::uint8_t*>(data), bytes);
    return true;
  }
  bool BulkRead(DeviceHandle, void*, std::uint32_t) override { return true; }
  std::uint32_t LastError() override { return 0; }
  std::uint32_t TickMs() override { return 0; }
  void SleepMs(std::uint32_t) override {
    if (onSleep) onSleep();
  }
  LocalTime LocalTimeNow() override { return {}; }
  ThreadHandle ThreadStart(void (*)(void*), void*) override { return 0; }
  void ThreadRaisePriority(ThreadHandle) override {}
  void ThreadTerminate(ThreadHandle) override {}
  void ThreadRelease(ThreadHandle) override {}
  std::uint32_t SystemLocaleId() override { return 0; }
  void ShowBox(const char*, const char*) override {}
  bool PathExists(const char*) override { return false; }
  bool FileCreate(const char*) override { return false; }
  FileWrite FileWriteAt(const char*, const FilePart&, std::uint32_t, std::uint32_t*) override {
    return FileWrite::kFailed;
  }

  std::function<void(const std::uint8_t* data, std::uint32_t bytes)> onWrite;
  std::function<void()> onSleep;
};

struct JobSpec {
  const char* name;
  std::uint32_t resolution;
  bool oneHead = false;
  double widthMm = 1000;
  std::uint32_t height = UINT32_MAX;
};

// At one metre.
inline constexpr JobSpec kModes[] = {{"1080dpi", 1080},
                                     {"1440dpi", 1440},
                                     {"1620dpi", 1620},
                                     {"2160dpi", 2160},
                                     {"onehead1080", 1080, true}};

inline JobSpec Scaled(JobSpec spec, double scale) {
  spec.widthMm *= scale;
  return spec;
}

// The one job record, set up for a page of that width, for the life of the object.
class BenchJob {
 public:
  explicit BenchJob(const JobSpec& spec);
  ~BenchJob();
  BenchJob(const BenchJob&) = delete;
  BenchJob& operator=(const BenchJob&) = delete;

  // Back to before the first line, in the buffers that are there.
  void Restart();

  Job& Record() { return job_; }
  IdlePlatform& System() { return platform_; }
  std::uint32_t LineBytes() const { return job_.nLineBits / 8; }

 private:
  IdlePlatform platform_;
  Job& job_;
};

// Pass passNo in direction passDir, without its swath; counts passNo on.
inline void RunPass(Job& job) {
  ConvertPass(job);
  ++job.passNo;
}

// Lines in which that share of the pixels, in percent, has ink of a random level.
using Lines = std::vector<std::vector<std::uint8_t>>;
Lines InkLines(std::size_t count, std::size_t lineBytes, int percent);

// An image of a few different lines, each colour in another order.
constexpr std::size_t kDifferentLines = 61;
inline const std::uint8_t* LineOf(const Lines& lines, std::uint32_t color, std::uint32_t line) {
  return lines[(line + std::size_t{7} * color) % lines.size()].data();
}

// Lines of a page of that length.
std::uint32_t LinesOfMm(double mm);

}  // namespace qrn::bench

#endif  // QRN_BENCH_BENCH_JOB_H_
