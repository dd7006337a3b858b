#include "bench/bench_job.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>

#include "params/printer_params.h"
#include "raster/job_memory.h"
#include "raster/pass_rows.h"

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
  job_.nHeight = UINT32_MAX;
  job_.nLineBits = width * kBitsPerPixel;
  job_.nBitsPerPixel = kBitsPerPixel;
  job_.nColors = kPlanes;
  const auto block = sim::ParameterBlock(machine);
  if (!ParsePrinterParams(job_, block.data(), static_cast<std::uint32_t>(block.size())))
    std::abort();
}

BenchJob::~BenchJob() {
  FreeJobMem(job_);
  job_ = Job{};
}

std::vector<std::vector<std::uint8_t>> InkLines(std::size_t count, std::size_t lineBytes,
                                                int percent) {
  std::mt19937 random(1);
  std::vector<std::vector<std::uint8_t>> lines(count, std::vector<std::uint8_t>(lineBytes));
  for (auto& line : lines) {
    for (std::size_t pixel = 0; pixel < 4 * lineBytes; ++pixel) {
      if (random() % 100 >= static_cast<unsigned>(percent)) continue;
      const auto level = static_cast<std::uint8_t>(1 + random() % 3);
      line[pixel / 4] = static_cast<std::uint8_t>(line[pixel / 4] | level << (6 - 2 * (pixel % 4)));
    }
  }
  return lines;
}

void FillPassBuffers(Job& job, const std::vector<std::vector<std::uint8_t>>& lines) {
  for (std::uint32_t plane = 0; plane < kPlanes; ++plane) {
    for (std::uint32_t row = 0; row < job.Mem.layout.rows; ++row) {
      const auto& line = lines[(row + 7 * plane) % lines.size()];
      StoreRow(job, plane, row, line.data(), static_cast<std::uint32_t>(line.size()));
    }
  }
}

}  // namespace qrn::bench
