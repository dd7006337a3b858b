#include "print_page/host_job.h"

#include <vector>

#include "qrn_driver.h"

namespace qrn::tool {
namespace {

constexpr std::uint32_t kColors = 8;
constexpr std::uint32_t kBitsPerPixel = 2;
constexpr std::uint32_t kPixelsPerByte = 4;
constexpr std::uint32_t kProgressLines = 50;

void HandOverLine(const HostJob& job, const sim::RasterSource& page, std::uint32_t line,
                  const std::vector<std::uint8_t>& blank) {
  for (std::uint32_t color = 0; color < kColors; ++color) {
    const std::uint8_t* bytes = page.Line(static_cast<int>(color), line);
    if (bytes == nullptr) bytes = blank.data();
    if (job.lineApi) {
      PP_SendALineAColorData(color, page.LineBytes(), bytes, 0);
    } else {
      WriteRipData(bytes, page.LineBytes());
    }
  }
}

}  // namespace

bool PrintPage(const HostJob& job, const sim::RasterSource& page) {
  HostJobDesc desc{};
  desc.resX = job.resolution;
  desc.resY = PP_GetResolutionY(0);
  desc.height = page.Lines();
  desc.width = page.LineBytes() * kPixelsPerByte;
  desc.colors = kColors;
  desc.bitsPerPixel = kBitsPerPixel;
  const bool started = (job.lineApi ? PP_Init(&desc) : StartPrint(&desc, 0)) == 1;
  const std::vector<std::uint8_t> blank(page.LineBytes());
  for (std::uint32_t line = 0; started && line < page.Lines(); ++line) {
    HandOverLine(job, page, line, blank);
    if (job.onProgress && (line + 1) % kProgressLines == 0) job.onProgress(line + 1);
  }
  if (job.lineApi) {
    PP_Uninit();
  } else {
    EndRipData();
  }
  if (job.onProgress) job.onProgress(page.Lines());
  return started;
}

}  // namespace qrn::tool
