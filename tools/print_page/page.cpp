#include "print_page/page.h"

#include <algorithm>

namespace qrn::tool {
namespace {

// Rank 0..63 of a place in an 8 x 8 field, neighbours far apart (the recursive ordered-dither
// matrix).
std::uint32_t Rank(std::uint32_t x, std::uint32_t y) {
  std::uint32_t rank = 0;
  for (std::uint32_t bit = 0; bit < 3; ++bit) {
    const std::uint32_t xBit = (x >> bit) & 1u, yBit = (y >> bit) & 1u;
    rank |= (((xBit ^ yBit) << 1) | yBit) << (2 * (2 - bit));
  }
  return rank;
}

}  // namespace

const std::uint8_t* SlotPage::Line(int slot, std::uint32_t line) const {
  const int plane = slots_[static_cast<std::size_t>(slot)];
  if (plane < 0 || static_cast<std::size_t>(plane) >= page_.planes.size()) return nullptr;
  const std::vector<std::uint8_t>& bytes = page_.planes[static_cast<std::size_t>(plane)];
  const std::size_t at = std::size_t{line} * page_.LineBytes();
  return at < bytes.size() ? bytes.data() + at : nullptr;
}

int MissingPlane(const RasterPage& page, const SlotMap& slots) {
  const auto missing = std::find_if(slots.begin(), slots.end(), [&page](int plane) {
    return plane != kBlank && !page.present.test(static_cast<std::size_t>(plane));
  });
  return missing == slots.end() ? kBlank : *missing;
}

std::uint8_t LevelOf(std::uint8_t ink, std::uint32_t x, std::uint32_t y) {
  const std::uint32_t thirds = ink * 3u;  // level x 255
  const std::uint32_t whole = thirds / 255u, rest = thirds % 255u;
  return static_cast<std::uint8_t>(whole + (rest * 64u > Rank(x, y) * 255u + 127u ? 1u : 0u));
}

}  // namespace qrn::tool
