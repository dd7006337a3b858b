// The parameter block: what is derived from it, and what is refused.
#include <cstring>

#include "params/image_mode.h"
#include "params/param_fixture.h"
#include "params/resolution.h"

namespace qrn {
namespace {

using Params = ParamFixture;

struct Geometry {
  std::uint16_t resX;
  std::uint8_t passCount, resB, resCode, speed, gapY, db;
  std::uint16_t margin, headGapX, minGap, maxGap, rowOffset[8], passStep, swathH, passStep9,
      swathH9, swathSteps;
};

const Geometry kGeometries[] = {
    {1080,
     3,
     12,
     0x5C,
     46,
     1,
     30,
     2721,
     1995,
     31,
     108,
     {451, 419, 311, 280, 172, 140, 32, 0},
     120,
     360,
     114,
     342,
     2400},
    {1440,
     4,
     12,
     0x5C,
     46,
     2,
     31,
     3628,
     1996,
     31,
     108,
     {451, 419, 311, 280, 172, 140, 32, 0},
     90,
     360,
     85,
     340,
     1800},
    {1620,
     6,
     9,
     0x44,
     61,
     3,
     33,
     4081,
     1501,
     23,
     81,
     {338, 315, 234, 210, 129, 105, 24, 0},
     60,
     360,
     57,
     342,
     1200},
    {2160,
     8,
     9,
     0x44,
     61,
     4,
     34,
     5442,
     1502,
     23,
     81,
     {338, 315, 234, 210, 129, 105, 24, 0},
     45,
     360,
     42,
     336,
     900},
};

TEST_F(Params, GiveTheGeometryOfEachResolution) {
  for (const Geometry& expected : kGeometries) {
    SCOPED_TRACE(expected.resX);
    job.nResX = expected.resX;
    block[109] = 0;
    ASSERT_TRUE(Parse());
    EXPECT_EQ(expected.passCount, job.passCount);
    EXPECT_EQ(5, job.resParamA);
    EXPECT_EQ(expected.resB, job.resParamB);
    EXPECT_EQ(expected.resCode, job.resCode);
    EXPECT_EQ(expected.speed, job.carriageSpeed);
    EXPECT_EQ(expected.gapY, job.headGapY);
    EXPECT_EQ(expected.db, job.biDirOfs);
    EXPECT_EQ(expected.margin, job.marginDots);
    EXPECT_EQ(expected.headGapX, job.headGapX);
    EXPECT_EQ(expected.minGap, job.rowGapMin);
    EXPECT_EQ(expected.maxGap, job.rowGapMax);
    EXPECT_EQ(0, std::memcmp(expected.rowOffset, job.rowOffset, sizeof job.rowOffset));
    EXPECT_EQ(expected.passStep, job.passStep);
    EXPECT_EQ(expected.swathH, job.swathH);
    EXPECT_EQ(expected.swathSteps, job.swathSteps);
    EXPECT_EQ(720 - expected.gapY, job.historyRows);
    EXPECT_EQ(720, job.checkRows);
    EXPECT_EQ(752u, job.lineStride);
    EXPECT_EQ(1, job.dualHead);
    EXPECT_EQ(1, job.twoHeadCarriage);
    EXPECT_EQ(4, job.singleHead);
    EXPECT_FLOAT_EQ(expected.resX / 300.0f, job.resFactor);
    block[109] =
        10;  // nine feathered nozzles; a repeated connect starts from the base pass count again
    ASSERT_TRUE(Parse());
    EXPECT_EQ(expected.passStep9, job.passStep);
    EXPECT_EQ(expected.swathH9, job.swathH);
  }
}

TEST_F(Params, AreLoggedAsTheyAreDerived) {
  block[0] = 111, block[1] = 0x2A, block[4] = 200, block[5] = 0x1B, block[6] = 0x39,
  block[7] = 0x30;
  PutU16(&block[148], 815);
  PutU32(&block[192], 60000);
  PutU16(&block[116], 6);
  ASSERT_TRUE(Parse());
  EXPECT_TRUE(
      HasLines(TakeLog(),
               {"===============\r\r\n主板:111/2A,  编号: 815\r\n", "小车:200/1B,  编号:12345\r\n",
                "速度: 10-46\r\n", "水平: MinW-0031, MaxW-108, Db-31\r\n",
                "2pheads:   PHAB,hori-1996(12),Veri-2\r\n", "喷头: 1-0, 0x30\r\n",
                "羽化模式:90-0,swathH:360, Pass:4\r\n",
                // 6000 x 254 / (1440 x 2 x 10) = 52.9; 720 x 254 / 3600 = 50.8
                "图像6000x720(52mmx50mm),分辨率:1440x360, MaxC:8,Bitn:2, Pass:4\r\n",
                // 60000 x 254 / 6000 - (6 x 1016 / 6000 + 195 + 60)
                "最大打印范围:2284 mm - 60000-24\r\n", "PHA:3-3, 0-0, 4-4, 7-7\r\n",
                "PHB:1-1, 5-5, 2-2, 6-6\r\n", "纵轴(pass2):2540-72001, 20.00, swathsteps:1800\r\n",
                "mem: malloc 8,", "===============\r\r\n\r\n"}));
}

TEST_F(Params, IdentifyBoardsInTwoLayouts) {
  struct Case {
    std::uint8_t id;
    std::uint16_t mainVer, carriageVer;
    std::uint8_t carriageId;
  };
  block[1] = 0x11, block[2] = 0x22, block[3] = 0x33, block[4] = 0x44, block[5] = 0x55;
  for (const Case& expected : {Case{110, 0x5544, 0x3322, 0x11}, Case{111, 0x11, 0x55, 0x44},
                               Case{209, 0x11, 0x55, 0x44}, Case{210, 0x5544, 0x3322, 0x11}}) {
    block[0] = expected.id;
    ASSERT_TRUE(Parse());
    EXPECT_EQ(expected.mainVer, job.mainBoardVer);
    EXPECT_EQ(expected.carriageVer, job.carriageBoardVer);
    EXPECT_EQ(expected.carriageId, job.carriageBoardId);
  }
}

TEST_F(Params, ScaleTheSpeedAndKeepItInEightBits) {
  for (const auto& [setting, speed] :
       std::vector<std::pair<int, int>>{{0, 10}, {5, 28}, {10, 46}, {255, (10 + 918) % 256}}) {
    block[82] = static_cast<std::uint8_t>(setting);
    ASSERT_TRUE(Parse());
    EXPECT_EQ(speed, job.carriageSpeed);
  }
}

struct Refusal {
  const char* name;
  void (*change)(Job& job, std::array<std::uint8_t, 208>& block);
  int error;  // 0 = none raised
  std::vector<std::string> log;
};

TEST_F(Params, AreRefusedWithTheirErrorAndLine) {
  using Block = std::array<std::uint8_t, 208>;
  const Job before = job;
  const Block good = block;
  for (const Refusal& expected : {
           Refusal{
               "signature", [](Job&, Block&b) { b[204] = 0x12; }, 3, {"不可识别打印机参数5212"}},
           Refusal{
               "720 dpi", [](Job&j, Block&) { j.nResX = 720; }, 0, {"不支持当前水平分辨率:720"}},
           Refusal{"head type 2",
                   [](Job&, Block&b) { b[91] = 0x21; },
                   32,
                   {"图像支持喷头模式异常(仅支持DX5&DX7) mode:2"}},
           Refusal{
               "four colours", [](Job&j, Block&) { j.nColors = 4; }, 32, {"图像颜色值异常:4!=8"}},
           Refusal{
               "one bit", [](Job&j, Block&) { j.nBitsPerPixel = 1; }, 32, {"图像位模式异常:1!=2"}},
           Refusal{"one line an inch",
                   [](Job&j, Block&) { j.nResY = 1; },
                   32,
                   {"Vertical resolution too low: 1 < 360"}},
           Refusal{"359 lines an inch",
                   [](Job&j, Block&) { j.nResY = 359; },
                   32,
                   {"Vertical resolution too low: 359 < 360"}},
           Refusal{"no lines an inch",
                   [](Job&j, Block&) { j.nResY = 0; },
                   29,
                   {"步进计量输入值异常:0-2540"}},
           Refusal{"calibration 0",
                   [](Job&, Block&b) { b[72] = b[77] = 0; },
                   29,
                   {"步进计量输入值异常:360-0"}},
           Refusal{"selector 5", [](Job&, Block&b) { b[8] = 5; }, 29, {"步进计量输入值异常:360-0"}},
           // 2150 - 255 = 1895 mm; 3,822,917 x 254 / 14400 = 67432 mm, of which 16 bits count: 1896
           Refusal{"too wide",
                   [](Job&j, Block&) { j.nLineBits = 2 * 3'822'917; },
                   4,
                   {"图像宽:7645834(67432mm > 1895mm)\r\n", "打印图像超出机器最大宽度 1895"}},
           Refusal{"no travel left",
                   [](Job&, Block&b) { PutU32(&b[192], 4000); },
                   4,
                   {"最大打印范围:0 mm", "打印图像超出机器最大宽度 0"}},
           Refusal{"ink order",
                   [](Job&, Block&b) { b[9] = 8; },
                   35,
                   {"双喷头机型墨序不可识别", "Error: Color list set error!"}},
       }) {
    SCOPED_TRACE(expected.name);
    job = before;
    block = good;
    platform.boxes.clear();
    expected.change(job, block);
    EXPECT_FALSE(Parse());
    EXPECT_EQ(expected.error, job.nErrCode);
    EXPECT_EQ(expected.error != 0, platform.boxes.size() == 1);
    EXPECT_TRUE(HasLines(TakeLog(), expected.log));
    EXPECT_EQ(nullptr, job.PrintOutBuf);
  }
}

TEST_F(Params, OfAShortReplyChangeNothing) {
  ASSERT_TRUE(Parse());
  const PrinterParams kept = GetPrinterParams();
  FreeJobMem(job);
  job.passCount = 77;
  block.fill(0xFF);
  const std::vector<std::uint8_t> exact(
      block.begin(), block.end() - 1);  // a byte short, and none behind it to read
  EXPECT_FALSE(ParsePrinterParams(job, exact.data(), 207));
  EXPECT_EQ(0, std::memcmp(kept.bytes, GetPrinterParams().bytes, sizeof kept.bytes));
  EXPECT_EQ(77, job.passCount);
  EXPECT_EQ(3, job.nErrCode);
}

TEST_F(Params, LetAnImageOfExactlyTheWidthPass) {
  // 2150 - 195 - 60 = 1895 mm = 107433.07 dots at 1440 dpi: a width of 1895 mm begins there and
  // ends before 1896 mm.
  job.nLineBits = 2 * 107489;
  EXPECT_TRUE(Parse());
  EXPECT_EQ(1895, job.maxPrintMm);
  PutU16(&block[116], 6000);
  block[93] = 1;  // the margin does not count
  EXPECT_TRUE(Parse());
  EXPECT_EQ(1895, job.maxPrintMm);
  EXPECT_EQ(0, U16(GetPrinterParams().bytes + 116));
  block[91] = 0;  // no second head on the carriage
  EXPECT_TRUE(Parse());
  EXPECT_EQ(1955, job.maxPrintMm);
  EXPECT_EQ(0, job.twoHeadCarriage);
}

TEST_F(Params, FollowAFirmwareUpdate) {
  block[8] = 2;
  block[74] = 0xEC;
  ASSERT_TRUE(Parse());
  TakeLog();
  std::vector<std::uint8_t> section(block.begin() + 8, block.begin() + 78);
  UpdateFwPara(job, section.data(), 70);
  EXPECT_EQ("", TakeLog());
  section[42 - 8] = 40;    // Db of 1440 dpi
  section[74 - 8] = 0xF0;  // 2544
  section[9 - 8] = 7;      // the ink order stays what it was
  UpdateFwPara(job, section.data(), 69);
  EXPECT_EQ(31, job.biDirOfs);
  EXPECT_EQ("Update fw para: too short, 69 < 70\r\n", TakeLog());
  UpdateFwPara(job, section.data(), 70);
  EXPECT_EQ("Update fw para:40,2544\r\n", TakeLog());
  EXPECT_EQ(40, job.biDirOfs);
  EXPECT_EQ(1797, job.swathSteps);  // 90 x 72001 x 254 / (2544 x 360) = 1797.2
  EXPECT_EQ(3, job.inkOrder[0][0]);
  section[0] = 9;  // selects nothing: the steps stay
  UpdateFwPara(job, section.data(), 70);
  EXPECT_TRUE(HasLines(TakeLog(), {"Update fw para:40,0", "步进计量输入值异常:360-0"}));
  EXPECT_EQ(1797, job.swathSteps);
}

TEST_F(Params, GiveTheDirectionOfEachPass) {
  job.bidirectional = 1;
  std::string directions;
  for (int pass = 0; pass < 4; ++pass) directions += static_cast<char>('0' + NextSwathDir(job));
  EXPECT_EQ("1010", directions);
  job.bidirectional = 0;
  job.fixedDir = 1;
  job.passDir = 0;
  EXPECT_EQ(1, NextSwathDir(job));
  EXPECT_EQ(0, job.passDir);
}

TEST(Resolution, IsLookedUpByTheLowBitsOfItsArgument) {
  EXPECT_EQ(1620, ResolutionByIndex(2));
  EXPECT_EQ(1620, ResolutionByIndex(0x102));
  EXPECT_EQ(0, ResolutionByIndex(4));
  EXPECT_EQ(1, ResolutionIndex(1440));
  EXPECT_EQ(3, ResolutionIndex(0x10000 + 2160));
  EXPECT_EQ(0, ResolutionIndex(1200));
}

}  // namespace
}  // namespace qrn
