#include "scenarios/page.h"

#include <algorithm>
#include <random>

namespace scenarios {
namespace {

constexpr std::uint32_t kPixelsPerByte = 4, kBandLines = 50;

// Drop levels of all kinds; here and there a plane, or a band of lines in one, stays blank.
void DrawRandom(const Job& job, Page& page) {
  std::mt19937_64 random(job.image.seed);
  const std::uint64_t blankPlane = random() % (kPlanes + 1);
  for (std::uint32_t plane = 0; plane < kPlanes; ++plane) {
    std::uint64_t keep = 0;  // of three bytes
    for (std::uint32_t line = 0; line < job.height; ++line) {
      if (line % kBandLines == 0) keep = random() % 3;
      for (std::uint32_t i = 0; i < page.LineBytes(); ++i) {
        const std::uint64_t bits = random();
        if (plane != blankPlane && (bits >> 8) % 3 < keep)
          page.Edit(plane, line)[i] = static_cast<std::uint8_t>(bits);
      }
    }
  }
}

}  // namespace

Page::Page(std::uint32_t width, std::uint32_t lines)
    : lines_(lines),
      lineBytes_(width / kPixelsPerByte),
      bytes_(std::size_t{kPlanes} * lines * lineBytes_) {}

Page Page::Drawn(const Job& job) {
  Page page(job.width, job.height);
  if (job.image.random) {
    DrawRandom(job, page);
    return page;
  }
  for (std::uint32_t plane = 0; plane < kPlanes; ++plane) {
    if ((job.image.planes >> plane & 1u) == 0) continue;
    for (const LineRange& range : job.image.lines) {
      for (std::uint32_t line = range.first; line <= range.last && line < job.height; ++line)
        std::fill_n(page.Edit(plane, line), page.lineBytes_, std::uint8_t{0xFF});
    }
  }
  return page;
}

const std::uint8_t* Page::Line(int plane, std::uint32_t line) const {
  return bytes_.data() + (static_cast<std::size_t>(plane) * lines_ + line) * lineBytes_;
}

std::uint8_t* Page::Edit(std::uint32_t plane, std::uint32_t line) {
  return bytes_.data() + (std::size_t{plane} * lines_ + line) * lineBytes_;
}

void Intake::Take(std::uint32_t plane, const std::uint8_t* bytes, std::uint32_t count) {
  if (linesTaken_ >= page_.Lines() || plane >= kPlanes || bytes == nullptr) return;
  std::copy_n(bytes, std::min(count, page_.LineBytes()), page_.Edit(plane, linesTaken_));
  if (plane + 1 == kPlanes) ++linesTaken_;
}

}  // namespace scenarios
