// From pixels of 8 bits of ink to drop levels.
#ifndef QRN_TOOLS_PRINT_PAGE_DROP_LEVELS_H_
#define QRN_TOOLS_PRINT_PAGE_DROP_LEVELS_H_

#include <array>
#include <cstdint>

namespace qrn::tool {

// Places repeat after this many pixels along the carriage and lines along the paper: about a square
// on paper, so that neither direction shows streaks.
constexpr std::uint32_t kScreenPixels = 16, kScreenLines = 4;

// Reduces 8 bits of ink to a drop level 0..3 by its place on the page: the average level over the
// places is the ink's share of 3. 0 stays 0, 255 becomes 3.
std::uint8_t LevelOf(std::uint8_t ink, std::uint32_t x, std::uint32_t y);

// LevelOf for every ink, at each place of a line.
using LineLevels = std::array<std::array<std::uint8_t, 256>, kScreenPixels>;
const LineLevels& LevelsOfLine(std::uint32_t y);

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_DROP_LEVELS_H_
