// Jobs with one head in use: their geometry, their buffers, and what the log warns of.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstring>

#include "params/param_fixture.h"
#include "raster/band.h"
#include "raster/pass_rows.h"

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
  const auto extent = [](int band, int none, int part) {
    return "of every " + std::to_string(band) + " lines " + std::to_string(none) +
           " are not printed, " + std::to_string(part) + " in part";
  };
  for (const Warned& expected : {
           Warned{"odd steps reach all", 1080, 0, 1, 0, 55, 330, {}},
           Warned{"odd steps forward", 1620, 0, 0, 0, 19, 228, {grid(6)}},
           Warned{"odd steps reverse", 2160, 0, 0, 0x20, 7, 112, {grid(8)}},
           Warned{"even steps forward",
                  1440,
                  0,
                  0,
                  0,
                  38,
                  304,
                  {grid(4), forward(38), extent(304, 152, 0)}},
           Warned{"even steps in turns", 1440, 0, 1, 0, 38, 304, {grid(4), above(38)}},
           Warned{"even steps reverse", 1440, 0, 0, 0x20, 38, 304, {grid(4), above(38)}},
           Warned{"seams", 1440, 10, 0, 0, 43, 344, {grid(4), extent(344, 0, 6)}},
           Warned{"seams, even step", 1080, 10, 1, 0, 58, 348, {above(58), extent(348, 0, 18)}},
           Warned{"forward passes meet each line twice",
                  1080,
                  10,
                  0,
                  0,
                  58,
                  348,
                  {forward(58), extent(348, 174, 0)}},
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
  block[83] = 0;
  ASSERT_TRUE(Parse());
  EXPECT_TRUE(HasLines(TakeLog(), {"Passes print 360 lines an inch, the paper is fed for 365",
                                   "One head: even lines are not printed"}));
}

// Counted in the passes that a band comes under. Colour 7 has no column offset forward: line n of
// the band has its ink in the columns from 4n on.
TEST_F(OneHead, TellsWhatFinerResolutionsLose) {
  constexpr int kBands = 5, kDots = 24;  // of the twelve pixels of a line, two each
  job.nLineBits = 24 * 376;
  block[83] = 0;
  for (const auto& [resolution, nResY] : {std::pair{1080, 361},
                                          {1080, 720},
                                          {1080, 721},
                                          {1440, 800},
                                          {1620, 800},
                                          {2160, 1000},
                                          {1080, 1086}}) {
    SCOPED_TRACE(testing::Message() << resolution << " x " << nResY);
    job.nResX = static_cast<std::uint16_t>(resolution);
    job.nResY = static_cast<std::uint16_t>(nResY);
    ASSERT_TRUE(Parse());
    for (std::uint32_t line = 0; line < job.swathH; ++line) {
      std::vector<std::uint8_t> bytes(job.lineStride);
      std::fill_n(&bytes[3 * line], 3, 0xFF);
      StoreRow(job, 7, job.historyRows + line, bytes.data(), job.lineStride);
    }
    std::vector<int> dots(job.swathH);
    for (int band = 0; band < kBands; ++band, ShiftPassBuffers(job)) {
      for (job.passNo = 0; job.passNo < job.passCount; ++job.passNo) {
        ConvertPass(job);
        for (std::size_t at = 0; job.passEmpty == 0 && at < 2880 * dots.size(); at += 8) {
          std::uint64_t bits;
          std::memcpy(&bits, job.PrintOutBuf + at, sizeof bits);
          dots[at / 2880] += std::popcount(bits);
        }
      }
    }
    const auto none = std::count(dots.begin(), dots.end(), 0);
    const auto whole = std::count(dots.begin(), dots.end(), kDots);
    const std::string text = "of every " + std::to_string(job.swathH) + " lines " +
                             std::to_string(none) + " are not printed, " +
                             std::to_string(job.swathH - none - whole) + " in part\r\n";
    EXPECT_EQ(whole < job.swathH, TakeLog().find(text) != std::string::npos) << text;
  }
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
