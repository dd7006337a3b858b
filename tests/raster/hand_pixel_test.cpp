// Single pixels whose column, nozzle and bit were worked out by hand. Nozzle row A of a colour is
// the later of its two and prints the even rows of a pass, row B the odd ones.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "raster/core_job.h"

namespace qrn {
namespace {

struct Machine {
  std::uint32_t resX;
  std::uint8_t heads;
  bool reverse;
  std::uint32_t lineBytes;
  std::uint8_t gapY = 0;
  bool mirrored = false;
};
struct Pixel {
  std::uint32_t color, line, pixel;
};
struct Dot {
  std::uint32_t column, byte, bit;  // byte: of plane 0
};
struct HandPixel {
  const char* why;
  Machine machine;
  Pixel pixel;
  Dot dot;
};
constexpr std::uint8_t kBoth = 0x30, kPha = 0x10, kPhb = 0x20, kNeither = 0;

// Row offsets are 451 419 311 280 .. at 1080 and 1440 dpi, 338 315 234 210 129 105 24 0 at the
// others; the heads are 1984 and 1488 columns apart. PHA has colours 3 0 4 7, PHB 1 5 2 6.
const HandPixel kCases[] = {
    // Lines come in 720 rows down and move up by 360. PHB's pass k looks at rows from 90 k on.
    {"row 0 of the second band on", {1440, kBoth, false, 12}, {1, 0, 0}, {419 + 1984, 1, 1}},
    {"row 360 - 90", {1440, kBoth, false, 12}, {1, 0, 5}, {419 + 1984 + 1, 271, 1}},
    {"an odd row", {1440, kBoth, false, 12}, {1, 1, 5}, {451 + 1984 + 1, 271, 0}},
    {"10 rows higher", {1440, kBoth, false, 12, 10}, {1, 0, 5}, {419 + 1984 + 1, 261, 1}},
    // PHA's looks 360 rows further down.
    {"PHA, no gap", {1440, kBoth, false, 12}, {3, 0, 5}, {420, 270, 1}},
    {"PHA, where it was", {1440, kBoth, false, 12, 10}, {3, 0, 5}, {420, 270, 1}},
    {"451 - 419", {1440, kBoth, false, 12, 0, true}, {3, 0, 5}, {32 + 1, 270, 1}},
    {"column 12 - 11", {1440, kBoth, true, 12}, {3, 0, 46}, {32 + 1984 + 1, 180, 1}},
    {"column 12 - 0", {1440, kBoth, true, 12}, {3, 0, 2}, {32 + 1984 + 12, 180, 1}},
    {"PHB, no gap", {1440, kBoth, true, 12}, {1, 0, 46}, {32 + 1, 181, 1}},
    {"45 / 3", {1080, kBoth, false, 12}, {3, 0, 45}, {419 + 15, 0, 1}},
    {"4 (14 / 3) + 3", {1080, kBoth, true, 12}, {3, 0, 0}, {32 + 1984 + 19, 0, 1}},
    {"19 - 15", {1080, kBoth, true, 12}, {3, 0, 45}, {32 + 1984 + 4, 0, 1}},
    {"4 (15 / 3) + 3", {1080, kBoth, true, 13}, {3, 0, 0}, {32 + 1984 + 23, 0, 1}},
    {"9 / 6, row 720 - 540", {1620, kBoth, false, 12}, {0, 0, 9}, {210 + 1, 180, 3}},
    {"2 (12 / 3) - 1", {1620, kBoth, true, 12}, {0, 0, 9}, {338 - 210 + 1488 + 7, 180, 3}},
    // A group of two bytes is printed whole where its first one belongs to the line.
    {"53 / 8, row 360 - 225", {2160, kBoth, false, 13}, {6, 0, 53}, {24 + 1488 + 6, 135, 6}},
    {"13 / 2 - 6", {2160, kBoth, true, 13}, {6, 0, 53}, {338 - 24, 135, 6}},
    // Of one head colour k has row k. Lines come in 360 rows down; passes are 55 rows apart and two
    // of them share a phase. Nozzles take every other row.
    {"row 360 - 330", {1080, kPha, false, 12}, {2, 0, 45}, {311 + 15, 30, 2}},
    {"row 361 - 55", {1080, kPha, false, 12}, {2, 1, 45}, {311 + 15, 306, 2}},
    {"row 360 - 4 x 55", {1080, kPha, false, 12}, {2, 0, 47}, {311 + 15, 140, 2}},
    {"two nozzles on", {1080, kNeither, false, 12}, {2, 0, 47}, {311 + 15, 144, 2}},
    {"4 (14 / 3) - 1", {1080, kPhb, true, 12}, {2, 1, 0}, {451 - 311 + 15, 307, 2}},
    // 38 rows apart: of each two passes the first takes the odd rows in reverse.
    {"row 361 - 304 - 1", {1440, kPha, true, 12}, {2, 1, 0}, {451 - 311 + 15, 56, 2}},
    {"row 360 - 38", {1440, kPha, true, 12}, {2, 0, 0}, {451 - 311 + 15, 322, 2}},
};

class HandPixels : public CoreJob {
 protected:
  using Dots = std::vector<std::pair<std::size_t, unsigned>>;  // byte of the swath, its bits

  Dots Print(const Machine& machine, const Pixel& pixel, unsigned level) {
    std::vector<std::uint8_t> block = GoodBlock();
    block[90] = machine.heads;
    block[91] = machine.mirrored ? 0x11 : 1;
    if (machine.heads != kBoth) {
      for (std::uint32_t i = 0; i < 32; ++i) block[9 + i] = static_cast<std::uint8_t>(i % 8);
    }
    block[87] = machine.reverse ? 0x20 : 0;
    std::fill(&block[46], &block[50], machine.gapY);
    EXPECT_TRUE(Connect(block.data(), {machine.resX, 360, 8 * machine.lineBytes, pixel.line + 1}));
    Dots dots;
    onSwath = [&dots](const std::uint8_t*, const std::uint8_t* data, std::size_t bytes) {
      for (std::size_t at = 0; at < bytes; ++at) {
        if (data[at] != 0) dots.emplace_back(at, data[at]);
      }
    };
    std::vector<std::uint8_t> blank(job.lineStride), inked(job.lineStride);
    inked[pixel.pixel / 4] = static_cast<std::uint8_t>(level << (6 - 2 * (pixel.pixel % 4)));
    for (std::uint32_t i = 0; i < 8 * (pixel.line + 1); ++i) {
      const bool here = i / 8 == pixel.line && i % 8 == pixel.color;
      AddLine(job, i % 8, job.lineStride, (here ? inked : blank).data());
    }
    FlushLastBands(job);
    WaitSwathQueue(job);
    return dots;
  }
};

TEST_F(HandPixels, LandWhereTheyMust) {
  for (const HandPixel& one : kCases) {
    SCOPED_TRACE(one.why + std::string(", ") + std::to_string(one.machine.resX) + " dpi, pixel " +
                 std::to_string(one.pixel.pixel));
    const std::size_t at = std::size_t{720} * one.dot.column + one.dot.byte;
    const unsigned bit = 1u << one.dot.bit;
    EXPECT_EQ(Dots({{at + 360, bit}}), Print(one.machine, one.pixel, 1));
    EXPECT_EQ(Dots({{at, bit}}), Print(one.machine, one.pixel, 2));
    EXPECT_EQ(Dots({{at, bit}, {at + 360, bit}}), Print(one.machine, one.pixel, 3));
  }
  // The bytes of a begun group are not printed.
  EXPECT_EQ(Dots(), Print({1080, kBoth, false, 13}, {3, 0, 48}, 3));
}

}  // namespace
}  // namespace qrn
