// What the log warns of when one head prints.
#include <algorithm>
#include <bit>
#include <string>
#include <utility>
#include <vector>

#include "raster/core_job.h"
#include "reference/plain_raster.h"

namespace qrn {
namespace {

class OneHead : public CoreJob {
 protected:
  OneHead() {
    block[90] = 0x10;
    block[91] = 0;
    for (std::uint8_t row = 0; row < 8; ++row) block[9u + row] = row;
  }
  // All that the log warns of, one line each.
  std::string Warnings() {
    EXPECT_TRUE(Connect(block.data(), image));
    const std::string log = TakeLog(), start = "One head: ";
    std::string warnings;
    for (std::size_t at = log.find(start); at != std::string::npos; at = log.find(start, at + 1)) {
      const std::size_t text = at + start.size();
      warnings += log.substr(text, log.find('\r', at) - text) + '\n';
    }
    return warnings;
  }

  std::vector<std::uint8_t> block = GoodBlock();
  plain::JobDesc image{1440, 360, 2 * 480, 720};
};

std::string Grid(int dots) {
  return "columns of 3 dots on a grid of " + std::to_string(dots) +
         ", width and reverse passes do not fit\n";
}
std::string Forward(int step, const char* lines = "odd") {
  return lines + (" lines are not printed (forward passes, even step " + std::to_string(step)) +
         ")\n";
}
std::string Above(int step) {
  return "odd lines are printed one line too high (even step " + std::to_string(step) + ")\n";
}
std::string Extent(int band, int none, int part) {
  return "of every " + std::to_string(band) + " lines " + std::to_string(none) +
         " are not printed, " + std::to_string(part) + " in part\n";
}

struct Warned {
  std::uint32_t resX, resY;
  std::uint8_t feather, bidirectional, direction;
  std::string log;
};

TEST_F(OneHead, IsWarnedOfOnce) {
  for (const Warned& expected : {
           Warned{1080, 360, 0, 1, 0, ""},
           Warned{1620, 360, 0, 0, 0, Grid(6)},
           Warned{2160, 360, 0, 0, 0x20, Grid(8)},
           Warned{1440, 360, 0, 0, 0, Grid(4) + Forward(38) + Extent(304, 152, 0)},
           Warned{1440, 360, 0, 1, 0, Grid(4) + Above(38)},
           Warned{1440, 360, 0, 0, 0x20, Grid(4) + Above(38)},
           Warned{1440, 360, 10, 0, 0, Grid(4) + Extent(344, 0, 6)},
           Warned{1080, 360, 10, 1, 0, Above(58) + Extent(348, 0, 18)},
           Warned{1620, 360, 50, 1, 0, Grid(6) + Extent(276, 0, 18)},
           Warned{2160, 360, 10, 1, 0, Grid(8) + Above(22) + Extent(352, 0, 30)},
           // Forward passes with an even step meet each line that they meet at all twice.
           Warned{1080, 360, 10, 0, 0, Forward(58) + Extent(348, 174, 0)},
           Warned{1440, 365, 0, 0, 0, Grid(4) + Forward(38, "even") + Extent(304, 152, 0)},
       }) {
    image.resX = expected.resX;
    image.resY = expected.resY;
    block[109] = expected.feather;
    block[83] = expected.bidirectional;
    block[87] = expected.direction;
    EXPECT_EQ(expected.log, Warnings()) << expected.resX << " " << int{expected.feather};
  }
}

// Counted on the plain raster, in the passes that the lines of a band come under.
TEST_F(OneHead, IsToldWhatFinerResolutionsLose) {
  image.lineBits = 24;
  for (const auto& [resX, resY] : {std::pair{1080u, 361u},
                                   {1080u, 720u},
                                   {1080u, 721u},
                                   {1440u, 800u},
                                   {1620u, 800u},
                                   {2160u, 1000u},
                                   {1080u, 1086u}}) {
    image.resX = resX;
    image.resY = resY;
    const plain::Geometry g = plain::GeometryOf(block.data(), image);
    plain::PlainRaster raster(g);
    for (std::uint32_t line = 0; line < g.bandLines; ++line)
      std::fill_n(raster.Row(7, g.firstLineRow + line), 3, std::uint8_t{0xFF});
    std::vector<int> left(g.bandLines);  // bits of each line that no pass has taken
    for (int band = 0; band < 5; ++band, raster.Shift()) {
      for (std::uint32_t pass = 0; pass < g.passCount; ++pass) (void)raster.ConvertPass(pass, 0);
      for (std::uint32_t line = 0; line < g.bandLines; ++line) {
        const int row = static_cast<int>(g.firstLineRow + line) - band * int(g.bandLines);
        const bool lost = g.firstLineRow + line >= 720 + g.bandLines;  // at the first move
        if (row < 0 || (band > 0 && lost)) continue;
        left[line] = 0;
        for (int byte = 0; byte < 3; ++byte)
          left[line] += std::popcount(raster.Row(7, static_cast<std::uint32_t>(row))[byte]);
      }
    }
    const auto none = static_cast<int>(std::count(left.begin(), left.end(), 24));
    const auto whole = static_cast<int>(std::count(left.begin(), left.end(), 0));
    const auto lines = static_cast<int>(g.bandLines);
    const std::string log = Warnings(), text = Extent(lines, none, lines - none - whole);
    EXPECT_EQ(whole < lines, log.find(text) != std::string::npos) << text << log;
  }
}

TEST_F(OneHead, IsToldWhichColorsHaveNoRowAndThatNoHeadIsInUse) {
  block[83] = 1;
  image.resX = 1080;
  block[16] = 0;  // row 7 prints colour 0 too
  EXPECT_EQ("colors 0x80 have no nozzle row\n", Warnings());
  for (std::uint8_t row = 0; row < 8; ++row) block[33u + row] = row < 2 ? row : 9;
  for (const int mask : {0x00, 0x40, 0x50, 0x60, 0x70}) {
    block[90] = static_cast<std::uint8_t>(mask);
    EXPECT_TRUE(Connect(block.data(), image));
    const int singleHead = mask % 0x20 != 0 ? 0 : mask % 0x40 != 0 ? 1 : 4;
    EXPECT_EQ(singleHead, job.singleHead);
    const std::string log = TakeLog();
    EXPECT_EQ(singleHead == 4, log.find("One head: colors 0xFC") != std::string::npos) << mask;
    EXPECT_EQ(singleHead == 4, log.find("Neither PHA nor PHB is in use") != std::string::npos);
  }
}

}  // namespace
}  // namespace qrn
