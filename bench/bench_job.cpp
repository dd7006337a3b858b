#include "bench/bench_job.h"

#include <cmath>
#include <random>

#include "bench/measure.h"
#include "job/heads.h"
#include "params/connect.h"
#include "raster/job_memory.h"
#include "sim/firmware/parameter_block.h"

namespace qrn::bench {
namespace {

constexpr std::uint32_t kResY = 360, kBitsPerPixel = 2;
constexpr std::uint32_t kPixelStep = 48;  // widths that print whole in every mode
constexpr double kMmPerInch = 25.4;

}  // namespace

BenchJob::BenchJob(const JobSpec& spec) : job_(GetJob()) {
  sim::Machine machine;
  machine.travel600 = 120000;  // five metres
  if (spec.oneHead) {
    machine.heads = sim::Heads::kPha;
    machine.twoHeadCarriage = false;
    machine.inkOrder.fill({0, 1, 2, 3, 4, 5, 6, 7});
  }
  const double pixels = spec.widthMm / kMmPerInch * spec.resolution;
  const auto width = static_cast<std::uint32_t>(std::lround(pixels / kPixelStep)) * kPixelStep;
  job_ = Job{};
  job_.nSwathLimit = UINT32_MAX;
  job_.nResX = static_cast<std::uint16_t>(spec.resolution);
  job_.nResY = kResY;
  job_.nHeight = spec.height;
  job_.nLineBits = width * kBitsPerPixel;
  job_.nBitsPerPixel = kBitsPerPixel;
  job_.nColors = kColors;
  const auto block = sim::ParameterBlock(machine);
  const auto bytes = static_cast<std::uint32_t>(block.size());
  if (!ParsePrinterParams(job_, block.data(), bytes) || job_.PrintOutBuf == nullptr)
    Fail(spec.name, "no job could be set up");
}

BenchJob::~BenchJob() {
  FreeJobMem(job_);
  job_ = Job{};
}

void BenchJob::Restart() {
  job_.swathCount = job_.passNo = job_.emptyPasses = job_.linesReceived = job_.feedLine = 0;
  job_.bandLine = 0;
  job_.passDir = job_.swathStarted = job_.queueStarted = 0;
  job_.pPendingSwath = nullptr;
  AllocJobMem(job_);
}

Lines InkLines(std::size_t count, std::size_t lineBytes, int percent) {
  std::mt19937 random(1);
  Lines lines(count, std::vector<std::uint8_t>(lineBytes));
  for (auto& line : lines) {
    for (std::size_t pixel = 0; pixel < 4 * lineBytes; ++pixel) {
      if (random() % 100 >= static_cast<unsigned>(percent)) continue;
      const auto level = static_cast<std::uint8_t>(1 + random() % 3);
      line[pixel / 4] = static_cast<std::uint8_t>(line[pixel / 4] | level << (6 - 2 * (pixel % 4)));
    }
  }
  return lines;
}

std::uint32_t LinesOfMm(double mm) {
  return static_cast<std::uint32_t>(std::lround(mm / kMmPerInch * kResY));
}

}  // namespace qrn::bench
