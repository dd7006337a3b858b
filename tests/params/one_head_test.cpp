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
  std::string Log() {
    EXPECT_TRUE(Connect(block.data(), image));
    return TakeLog();
  }

  std::vector<std::uint8_t> block = GoodBlock();
  plain::JobDesc image{1440, 360, 2 * 480, 720};
};

std::string Extent(int band, int none, int part) {
  return "One head: of every " + std::to_string(band) + " lines " + std::to_string(none) +
         " are not printed, " + std::to_string(part) + " in part\r";
}

struct Seams {
  std::uint32_t resX;
  std::uint8_t feather, bidirectional;
  std::string extent;
};

TEST_F(OneHead, IsWarnedOfTheSeamsOfFeatheredBands) {
  for (const Seams& seams : {
           Seams{1440, 10, 0, Extent(344, 0, 6)},
           Seams{1080, 10, 1, Extent(348, 0, 18)},
           Seams{1620, 50, 1, Extent(276, 0, 18)},
           Seams{2160, 10, 1, Extent(352, 0, 30)},
           // Forward passes with an even step meet each line that they meet at all twice.
           Seams{1080, 10, 0, Extent(348, 174, 0)},
       }) {
    image.resX = seams.resX;
    block[109] = seams.feather;
    block[83] = seams.bidirectional;
    const std::string log = Log();
    EXPECT_NE(std::string::npos, log.find(seams.extent)) << seams.extent << log;
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
    const std::string log = Log(), text = Extent(lines, none, lines - none - whole);
    EXPECT_EQ(whole < lines, log.find(text) != std::string::npos) << text << log;
  }
}

}  // namespace
}  // namespace qrn
