// What is derived from the parameter block, in numbers worked out by hand; and what leaves no trace
// in the swaths, which the raster's random jobs compare, nor in the record of a scenario's job.
#include <utility>

#include "base/bytes.h"
#include "params/paper_feed.h"
#include "params/param_block.h"
#include "raster/core_job.h"

namespace qrn {
namespace {

class Params : public CoreJob {
 protected:
  bool Parse() { return Connect(block.data(), image); }

  std::vector<std::uint8_t> block = GoodBlock();
  plain::JobDesc image{1440, 360, 6000, 720};
};

// A page of 751 bytes: 751 columns and a head distance of 1984, 451 of stagger and 128 more; of one
// head 1001 1/3 columns, half the stagger in whole dots, and 128. In 1/150 inch:
// (0 + 3628) / 9.6 = 377.9 and (3004 + 4 x 1984 + 3628) / 9.6 + 902 / 4.8 = 1705.4.
TEST_F(Params, GiveTheSizeAndPlaceOfASwath) {
  image.lineBits = 6008;
  std::size_t size = 0;
  std::uint32_t start = 0, end = 0;
  onSwath = [&](const std::uint8_t* header, const std::uint8_t*, std::size_t bytes) {
    size = bytes;
    start = U16(header + 8);
    end = U16(header + 10);
  };
  const auto print = [this] {
    EXPECT_TRUE(Parse());
    const std::vector<std::uint8_t> line(job.lineStride, 0xFF);
    AddLine(job, 7, job.lineStride, line.data());
    FlushLastBands(job);
    WaitSwathQueue(job);
  };
  const auto inUnits = [](std::size_t bytes) { return (bytes + 319) / 320 * 320; };
  print();
  EXPECT_EQ(inUnits((751 + 1984 + 451 + 128) * 720), size);
  EXPECT_EQ(377u, start);
  EXPECT_EQ(1705u, end);
  block[87] = 0x20;  // reverse
  block[42] = 40;    // 8 further on
  print();
  EXPECT_EQ(1713u, start);
  EXPECT_EQ(377u, end);
  // PHB alone on a carriage for two starts a head distance further on: (4 x 1984 + 3628) / 9.6.
  block[90] = 0x20;
  for (std::uint8_t row = 0; row < 8; ++row) block[17u + row] = row;
  print();
  EXPECT_EQ(inUnits((6008 + 4 * (64 * 3 + 451 * 3 / 2)) * 120), size);
  EXPECT_EQ(1204u, end);
}

TEST_F(Params, IdentifyBoardsInTwoLayouts) {
  block[1] = 0x11, block[2] = 0x22, block[3] = 0x33, block[4] = 0x44, block[5] = 0x55;
  for (const int id : {110, 111, 209, 210}) {
    const bool inBytes = id > 110 && id < 210;
    block[0] = Low8(static_cast<unsigned>(id));
    ASSERT_TRUE(Parse());
    EXPECT_EQ(inBytes ? 0x11 : 0x5544, job.mainBoardVer);
    EXPECT_EQ(inBytes ? 0x55 : 0x3322, job.carriageBoardVer);
    EXPECT_EQ(inBytes ? 0x44 : 0x11, job.carriageBoardId);
  }
}

TEST_F(Params, WarnOfColorsWithARowOnEachHead) {
  for (std::uint8_t row = 0; row < 16; ++row) block[9u + row] = row / 2;
  block[9] = 7, block[24] = 0;
  ASSERT_TRUE(Parse());
  EXPECT_TRUE(HasLines(TakeLog(), {"Ink order: colors 0x81 have one row on each head",
                                   "PHA:7-0, 1-1, 2-2, 3-3\r\nPHB:4-4, 5-5, 6-6, 7-0\r\n"}));
}

TEST_F(Params, LetAnImageOfExactlyTheWidthPass) {
  // 2150 - 195 - 60 = 1895 mm begins at 107433.07 dots and ends before 107489.8;
  // 3,822,917 x 254 / 14400 = 67432 mm, of which 16 bits count: 1896
  for (const auto& [pixels, fits] :
       {std::pair{107489u, true}, {107490u, false}, {3822917u, false}}) {
    image.lineBits = 2 * pixels;
    EXPECT_EQ(fits, Parse()) << pixels;
    EXPECT_EQ(1895, job.maxPrintMm);
  }
}

// The constant is just below 254: 72000 / (2540 x 360) x 254 is 20, yet 90 lines make 1799 steps.
TEST_F(Params, FeedThePaperToTheExactStep) {
  PutU32(&block[128], 72000);
  ASSERT_TRUE(Parse());
  EXPECT_EQ(1799, job.swathSteps);
  EXPECT_NEAR(20.0, job.stepsPerLine, 1e-6);
}

}  // namespace
}  // namespace qrn
