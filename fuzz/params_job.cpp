// Parameter block to geometry to a whole small job: whatever block the printer answers the connect
// with, the job prints without a fault or is refused. On the wire nothing may be wrong, and no dot
// may be printed that is not in the image.
//
// Input: u8 resolution, u8 scheduling, u16 width, u16 height, u8 image; the rest is the block.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <vector>

#include "fuzz/accepting_port.h"
#include "fuzz/fuzz_input.h"
#include "fuzz/whole_jobs.h"
#include "params/printer_params.h"
#include "platform/platform.h"
#include "sim/sim_platform.h"

using namespace qrn;

namespace {

constexpr std::uint32_t kWidthMax = 8000, kHeightMax = 800, kPixelsMax = 480'000;
constexpr std::uint64_t kLimitMs = 3600 * 1000;

// Hands the image over; set bits of it.
std::uint64_t Print(const HostJobDesc& desc, std::uint8_t image) {
  std::uint64_t bits = 0;
  for (std::uint32_t line = 0; line < desc.height; ++line) {
    for (std::uint32_t color = 0; color < 8; ++color) {
      const std::vector<std::uint8_t> pixels =
          fuzz::LineOf(image, color, line, (desc.width + 3) / 4);
      for (const std::uint8_t byte : pixels)
        bits += static_cast<std::uint64_t>(std::popcount(byte));
      WriteRipData(pixels.data(), static_cast<std::uint32_t>(pixels.size()));
    }
  }
  return bits;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input in(data, size);
  HostJobDesc desc{};
  desc.resX = PP_GetResolutionX(in.U8() % 4);
  desc.resY = 360;
  sim::SimOptions options;
  options.seed = in.U8();
  options.limitMs = kLimitMs;
  desc.width = in.U16() % kWidthMax;
  desc.height = in.U16() % std::min(kHeightMax, kPixelsMax / (desc.width + 1));
  desc.colors = 8;
  desc.bitsPerPixel = 2;
  const std::uint8_t image = in.U8();
  if (!fuzz::IsAffordable(desc)) return 0;
  fuzz::AcceptingPort printer(in.Rest());
  {
    sim::SimPlatform platform(printer, options);
    UsePlatform(&platform);
    GetJob() = Job{};
    GetPrinterParams() = PrinterParams{};
    StartPrint(&desc, 0);
    const std::uint64_t bits = Print(desc, image);
    EndRipData();
    fuzz::CheckNothingLeft(platform);
    FUZZ_CHECK(printer.Dots() <= bits);
    UsePlatform(nullptr);
  }
  FUZZ_CHECK(printer.Violation() == "");
  return 0;
}
