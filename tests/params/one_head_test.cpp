// Jobs with one head in use: their geometry, their buffers, and what the log warns of.
#include <gtest/gtest.h>

#include "params/param_fixture.h"

namespace qrn {
namespace {

class OneHead : public ParamFixture {
 protected:
  OneHead() {
    block[90] = 0x10;
    block[91] = 0;
    for (std::uint8_t row = 0; row < 8; ++row) block[9 + row] = row;
  }
};

struct Warned {
  const char* name;
  std::uint16_t resolution;
  std::uint8_t feather, bidirectional, direction;
  int passStep, swathH;
  std::vector<std::string> log;  // the warnings, all of them
};

TEST_F(OneHead, HasItsBandAndWarnsOnceOfWhatItCannotPrint) {
  const std::string start = "One head: ";
  const auto grid = [](int dots) {
    return "columns of 3 dots on a grid of " + std::to_string(dots) +
           ", width and reverse passes do not fit";
  };
  const auto forward = [](int step) {
    return "odd lines are not printed (forward passes, even step " + std::to_string(step) + ")";
  };
  const auto above = [](int step) {
    return "odd lines are printed one line too high (even step " + std::to_string(step) + ")";
  };
  const auto seams = [](int lines, int band) {
    return "of each phase " + std::to_string(lines) + " lines of every " + std::to_string(band) +
           " are not printed whole";
  };
  for (const Warned& expected : {
           Warned{"odd steps reach all", 1080, 0, 1, 0, 55, 330, {}},
           Warned{"odd steps forward", 1620, 0, 0, 0, 19, 228, {grid(6)}},
           Warned{"odd steps reverse", 2160, 0, 0, 0x20, 7, 112, {grid(8)}},
           Warned{"even steps forward", 1440, 0, 0, 0, 38, 304, {grid(4), forward(38)}},
           Warned{"even steps in turns", 1440, 0, 1, 0, 38, 304, {grid(4), above(38)}},
           Warned{"even steps reverse", 1440, 0, 0, 0x20, 38, 304, {grid(4), above(38)}},
           Warned{"seams", 1440, 10, 0, 0, 43, 344, {grid(4), seams(2, 344)}},
           Warned{"seams, even step", 1080, 10, 1, 0, 58, 348, {above(58), seams(6, 348)}},
           Warned{"forward passes meet each line twice", 1080, 10, 0, 0, 58, 348, {forward(58)}},
       }) {
    SCOPED_TRACE(expected.name);
    job.nResX = expected.resolution;
    job.nLineBits = 2 * 480;
    block[109] = expected.feather;
    block[83] = expected.bidirectional;
    block[87] = expected.direction;
    ASSERT_TRUE(Parse());
    EXPECT_EQ(expected.passStep, job.passStep);
    EXPECT_EQ(expected.swathH, job.swathH);
    EXPECT_EQ(360, job.historyRows);
    const std::string log = TakeLog();
    std::vector<std::string> warnings;
    for (std::size_t at = log.find(start); at != std::string::npos; at = log.find(start, at + 1)) {
      const std::size_t text = at + start.size();
      warnings.push_back(log.substr(text, log.find('\r', at) - text));
    }
    EXPECT_EQ(expected.log, warnings);
  }
}

TEST_F(OneHead, WarnsOfTheOtherLinesWhereABandStartsOnAnOddRow) {
  job.nResY = 365;
  job.nResX = 1440;
  block[83] = 0;
  ASSERT_TRUE(Parse());
  EXPECT_TRUE(HasLines(TakeLog(), {"One head: even lines are not printed"}));
  // From 366 lines an inch the step is not cut, and a band is higher than a head.
  job.nResY = 366;
  job.nResX = 1080;
  ASSERT_TRUE(Parse());
  EXPECT_EQ(61, job.passStep);
  EXPECT_TRUE(HasLines(TakeLog(), {"of each phase 6 lines of every 366 are not printed whole"}));
}

TEST_F(OneHead, TellsWhichColorsHaveNoRowAndThatNoHeadIsInUse) {
  block[16] = 0;  // row 7 prints colour 0 too
  ASSERT_TRUE(Parse());
  EXPECT_TRUE(
      HasLines(TakeLog(), {"One head: colors 0x80 have no nozzle row", "PHA:0-1, 2-3, 4-5, 6-0"}));
  for (std::uint8_t row = 0; row < 8; ++row) block[33 + row] = row < 2 ? row : 9;
  for (const auto& [mask, singleHead] :
       std::vector<std::pair<int, int>>{{0x00, 4}, {0x40, 4}, {0x50, 0}, {0x60, 1}, {0x70, 0}}) {
    block[90] = static_cast<std::uint8_t>(mask);
    ASSERT_TRUE(Parse());
    EXPECT_EQ(singleHead, job.singleHead);
    const std::string log = TakeLog();
    EXPECT_EQ(singleHead == 4, log.find("One head: colors 0xFC") != std::string::npos) << mask;
    EXPECT_EQ(singleHead == 4, log.find("Neither PHA nor PHB is in use") != std::string::npos);
  }
}

TEST_F(OneHead, AloneOnACarriageForTwoStartsAHeadDistanceFurtherOn) {
  block[90] = 0x20;
  ASSERT_TRUE(Parse());
  EXPECT_EQ(3628, job.marginDots);
  block[91] = 1;
  ASSERT_TRUE(Parse());
  EXPECT_EQ(4 * (1984 + 12) + 3628, job.marginDots);
  EXPECT_EQ(1, job.singleHead);
}

}  // namespace
}  // namespace qrn
