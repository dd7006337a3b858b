#include "print_page/drop_levels.h"

namespace qrn::tool {
namespace {

constexpr std::uint32_t kRanks = kScreenPixels * kScreenLines;

// Rank 0..63 of a place, neighbours in rank far apart on paper: the recursive ordered-dither matrix
// of 16 x 16 places, of which only every fourth line is there.
std::uint32_t RankOf(std::uint32_t x, std::uint32_t y) {
  const auto bit = [](std::uint32_t value, std::uint32_t at) { return (value >> at) & 1u; };
  return bit(x, 0) << 5 | bit(x, 1) << 4 | (bit(x, 2) ^ bit(y, 0)) << 3 | bit(y, 0) << 2 |
         (bit(x, 3) ^ bit(y, 1)) << 1 | bit(y, 1);
}

std::array<LineLevels, kScreenLines> AllLevels() {
  std::array<LineLevels, kScreenLines> levels{};
  for (std::uint32_t y = 0; y < kScreenLines; ++y) {
    for (std::uint32_t x = 0; x < kScreenPixels; ++x) {
      for (std::uint32_t ink = 0; ink < 256; ++ink)
        levels[y][x][ink] = LevelOf(static_cast<std::uint8_t>(ink), x, y);
    }
  }
  return levels;
}

}  // namespace

std::uint8_t LevelOf(std::uint8_t ink, std::uint32_t x, std::uint32_t y) {
  const std::uint32_t thirds = ink * 3u;  // level x 255
  const std::uint32_t whole = thirds / 255u, rest = thirds % 255u;
  const bool more = rest * kRanks > RankOf(x, y) * 255u + 127u;
  return static_cast<std::uint8_t>(whole + (more ? 1u : 0u));
}

const LineLevels& LevelsOfLine(std::uint32_t y) {
  static const std::array<LineLevels, kScreenLines> levels = AllLevels();
  return levels[y % kScreenLines];
}

}  // namespace qrn::tool
