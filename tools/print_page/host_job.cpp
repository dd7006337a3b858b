#include "print_page/host_job.h"

#include <vector>

#include "qrn_driver.h"

namespace qrn::tool {
namespace {

constexpr std::uint32_t kColors = 8;
constexpr std::uint32_t kBitsPerPixel = 2;
constexpr std::uint32_t kPixelsPerByte = 4;
constexpr std::uint32_t kProgressLines = 50;

bool HandOverLine(const HostJob& job, const sim::RasterSource& page, std::uint32_t line,
                  const std::vector<std::uint8_t>& blank) {
  for (std::uint32_t color = 0; color < kColors; ++color) {
    const std::uint8_t* bytes = page.Line(static_cast<int>(color), line);
    if (bytes == nullptr) bytes = blank.data();
    if (job.lineApi) {
      if (PP_SendALineAColorData(color, page.LineBytes(), bytes, 0) == 0) return false;
    } else {
      WriteRipData(bytes, page.LineBytes());
    }
  }
  return true;
}

}  // namespace

HandedOver PrintPage(const HostJob& job, const sim::RasterSource& page) {
  HostJobDesc desc{};
  desc.resX = job.resolution;
  desc.resY = PP_GetResolutionY(0);
  desc.height = page.Lines();
  desc.width = page.LineBytes() * kPixelsPerByte;
  desc.colors = kColors;
  desc.bitsPerPixel = kBitsPerPixel;
  HandedOver result;
  result.started = (job.lineApi ? PP_Init(&desc) : StartPrint(&desc, 0)) == 1;
  const std::vector<std::uint8_t> blank(page.LineBytes());
  while (result.started && result.lines < page.Lines() &&
         HandOverLine(job, page, result.lines, blank)) {
    ++result.lines;
    if (job.onProgress && result.lines % kProgressLines == 0) job.onProgress(result.lines);
  }
  if (job.lineApi) {
    PP_Uninit();
  } else {
    EndRipData();
  }
  if (job.onProgress) job.onProgress(result.lines);
  return result;
}

}  // namespace qrn::tool
