#include "print_page/grey_filter.h"

#include <algorithm>
#include <cstdlib>

namespace qrn::tool {
namespace {

constexpr int kMixtureTolerance = 3;  // of 255: the renderer rounds its mixtures

bool IsGreyLineOrText(const TaggedPixel& pixel) {
  const bool wanted = (pixel.kind & (kTextObject | kLineObject)) != 0;
  return wanted && (pixel.kind & kPictureObject) == 0 && IsGrey(pixel);
}

}  // namespace

void GreyFilter::BeginPage(std::uint32_t width) {
  width_ = width;
  tags_.BeginPage(width);
}

void GreyFilter::Edit(std::uint8_t* line, std::size_t bytes) {
  const std::span<const TaggedPixel> pixels = tags_.NextLine();
  const std::size_t plane = bytes / kInksOfMixture;
  for (std::size_t x = 0; x < std::min<std::size_t>(width_, pixels.size()); ++x) {
    if (!IsGreyLineOrText(pixels[x])) continue;
    // Inks that a document asks for by themselves are no such mixture, and stay.
    const auto& mixture = mixtures_[pixels[x].green];
    bool mixed = true;
    for (std::size_t ink = 0; ink < kInksOfMixture; ++ink)
      mixed &= std::abs(line[ink * plane + x] - mixture[ink]) <= kMixtureTolerance;
    if (!mixed) continue;
    for (std::size_t ink = 0; ink < kBlackOfMixture; ++ink) line[ink * plane + x] = 0;
    line[kBlackOfMixture * plane + x] = static_cast<std::uint8_t>(255 - pixels[x].green);
  }
}

}  // namespace qrn::tool
