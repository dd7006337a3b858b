// Lines, bands, and what moves between them.
#include <bit>
#include <cstring>
#include <random>

#include "params/feather_masks.h"
#include "params/image_mode.h"
#include "raster/band.h"
#include "raster/job_memory.h"
#include "raster/line_intake.h"
#include "raster/pass_rows.h"
#include "support/job_fixture.h"
#include "support/test_seed.h"

namespace qrn {
namespace {

// Two heads at 1440 dpi, 48 pixels wide. Nothing takes the swaths: jobs here stay below six of
// them.
class Intake : public JobFixture {
 protected:
  Intake() {
    job.nResX = 1440;
    job.nResY = 360;
    job.nBitsPerPixel = 2;
    job.nColors = 8;
    job.nLineBits = 96;
    job.lineStride = 12;
    job.nHeight = 1000;
    job.dualHead = 1;
    job.passCount = 4;
    job.passStep = 90;
    job.swathH = 360;
    job.historyRows = 720;
    job.checkRows = 720;
    job.resFactor = 4.8f;
    job.rowOffset[0] = 40;
    job.headGapX = 10;
    std::memcpy(job.inkOrder, kOrder, sizeof kOrder);
    BuildFeatherMasks(job);
    AllocJobMem(job);
    TakeLog();
  }
  ~Intake() override { FreeJobMem(job); }

  std::vector<std::uint8_t> Row(std::uint32_t plane, std::uint32_t row) {
    std::vector<std::uint8_t> bytes(job.lineStride);
    LoadRow(job, plane, row, bytes.data());
    return bytes;
  }
  // Replaces one byte of a row.
  void SetByte(std::uint32_t plane, std::uint32_t row, std::uint32_t at, std::uint8_t byte) {
    std::vector<std::uint8_t> bytes = Row(plane, row);
    bytes[at] = byte;
    StoreRow(job, plane, row, bytes.data(), job.lineStride);
  }

  static constexpr std::uint8_t kOrder[2][8] = {{3, 3, 0, 0, 4, 4, 7, 7}, {1, 1, 5, 5, 2, 2, 6, 6}};
  const std::uint8_t line[12] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  const std::uint8_t blank[12] = {};
};

TEST_F(Intake, StoresLinesInTheBandAndCountsThemByTheLastColour) {
  EXPECT_EQ(1, AddLine(job, 7, 12, line));   // completes line 0 at once
  EXPECT_EQ(1, AddLine(job, 0, 5, line));    // lands in the next row, five bytes of it
  EXPECT_EQ(1, AddLine(job, 7, 100, line));  // more than a line: cut
  EXPECT_EQ(2u, job.linesReceived);
  EXPECT_EQ(std::vector<std::uint8_t>(line, line + 12), Row(7, 720));
  EXPECT_EQ((std::vector<std::uint8_t>{1, 2, 3, 4, 5, 0, 0, 0, 0, 0, 0, 0}), Row(0, 721));
  EXPECT_EQ(std::vector<std::uint8_t>(12), Row(7, 722));
}

TEST_F(Intake, RefusesUnusableLinesAndLogsTheFirst) {
  EXPECT_EQ(0, AddLine(job, 8, 12, line));
  EXPECT_EQ(0, AddLine(job, 0xFFFFFFFF, 12, line));
  EXPECT_EQ(0, AddLine(job, 0, 12, nullptr));
  EXPECT_EQ("AddLine: unusable line, color:8, bytes:12\r\n", TakeLog());
  job.linesReceived = job.nHeight;
  EXPECT_EQ(1, AddLine(job, 8, 12, nullptr));  // the image is complete: ignored
  FreeJobMem(job);
  job.linesReceived = 0;
  EXPECT_EQ(0, AddLine(job, 0, 12, line));
  FlushLastBands(job);
}

TEST_F(Intake, OfAnyOrderStaysWithinTheBuffers) {
  std::mt19937 random(static_cast<std::uint32_t>(TestSeed()));
  job.nHeight = 0xFFFFFFFF;
  job.nSwathLimit = 0;  // every pass is marked empty
  std::vector<std::uint8_t> longLine(4096, 0xFF);
  for (int call = 0; call < 20000; ++call) {
    const auto color = static_cast<std::uint32_t>(random() % 12);
    (void)AddLine(job, color, static_cast<std::uint32_t>(random() % 4096), longLine.data());
    if (random() % 2000 == 0) FlushLastBands(job);
  }
  EXPECT_GT(job.linesReceived, 1000u);
}

TEST_F(Intake, ShiftMovesOneBandAndClearsTheNext) {
  for (std::uint32_t row = 0; row < 1440; ++row) {
    for (std::uint32_t plane = 0; plane < 8; ++plane) {
      SetByte(plane, row, 11, static_cast<std::uint8_t>(1 + (row + plane) % 251));
    }
  }
  ShiftPassBuffers(job);
  for (std::uint32_t plane = 0; plane < 8; ++plane) {
    for (std::uint32_t row = 0; row < 1440; ++row) {
      const std::uint32_t wanted = row < 720 ? 1 + (row + 360 + plane) % 251 : 0;
      ASSERT_EQ(wanted, Row(plane, row)[11]) << "plane " << plane << ", row " << row;
    }
  }
}

TEST_F(Intake, PassIsBlankOnlyWhenEveryRowItLooksAtIs) {
  job.passRow = 90;
  SetByte(2, 89, 11, 1);
  SetByte(2, 90 + 720, 0, 1);
  EXPECT_TRUE(IsPassBlank(job));
  SetByte(5, 90, 0, 1);
  EXPECT_FALSE(IsPassBlank(job));
  SetByte(5, 90, 0, 0);
  SetByte(7, 809, 11, 0x40);
  EXPECT_FALSE(IsPassBlank(job));
  EXPECT_EQ(12u, job.passRightByte);
  EXPECT_EQ(96u, job.passBits);
}

TEST_F(Intake, PassHasTheSizeOfImageStaggerAndGap) {
  struct Case {
    std::uint8_t passCount;
    std::uint16_t gap;
    std::uint32_t rightByte, bits, bytes;
    std::uint16_t pad;
  };
  FreeJobMem(job);
  job.nLineBits = 6000;
  job.lineStride = 752;
  for (const Case& expected :
       {Case{4, 10, 760, 6080, 668160, 80}, Case{3, 0, 750, 6000, 840960, 60}}) {
    job.passCount = expected.passCount;
    job.passStep = static_cast<std::uint16_t>(360 / expected.passCount);
    job.headGapX = expected.gap;
    AllocJobMem(job);
    SetByte(0, 700, 0, 0xC0);
    job.passNo = 0;
    ConvertPass(job);
    EXPECT_EQ(0, job.passEmpty);
    EXPECT_EQ(expected.rightByte, job.passRightByte);
    EXPECT_EQ(expected.bits, job.passBits);
    EXPECT_EQ(expected.pad, job.passRowPad);
    EXPECT_EQ(expected.bytes, job.passDataSize);
  }
}

TEST_F(Intake, PassOfACountWithoutAModeGoesOutWithoutDots) {
  FreeJobMem(job);
  job.passCount = 5;
  job.passStep = 72;
  AllocJobMem(job);
  SetByte(0, 720, 3, 0xFF);
  std::memset(job.PrintOutBuf, 0xA5, job.printOutBufSize);
  job.passNo = 4;  // looks at rows from 288 on
  ConvertPass(job);
  EXPECT_EQ(0, job.passEmpty);
  EXPECT_EQ(0xFF, Row(0, 720)[3]);
  const std::vector<std::uint8_t> blankColumns(job.passDataSize);
  EXPECT_EQ(0, std::memcmp(blankColumns.data(), job.PrintOutBuf, job.passDataSize));
}

TEST_F(Intake, BandsRunTheirPassesAndTheFlushRunsFiveMore) {
  for (int i = 0; i < 360; ++i) ASSERT_EQ(1, AddLine(job, 7, 12, blank));
  EXPECT_EQ(4u, job.passNo);
  EXPECT_EQ(360u, job.feedLine);
  EXPECT_EQ(0, job.bandLine);
  FlushLastBands(job);
  EXPECT_EQ(24u, job.passNo);
  EXPECT_EQ(0u, job.emptyPasses);
  EXPECT_TRUE(HasLines(
      TakeLog(), {"swath3 empty", "Rip last swath 360-1000", "swath4 empty", "swath23 empty"}));
  job.dualHead = 0;
  FlushLastBands(job);
  EXPECT_EQ(40u, job.passNo);
}

// The address sanitizer watches the buffers, whose rows grow with the resolution as the rows that
// the blank test looks at do.
TEST_F(Intake, OfAFinerVerticalResolutionPlacesEveryPixel) {
  std::uint64_t bits = 0;
  const auto takeSwaths = [this, &bits] {
    for (Swath& slot : job.swathQueue) {
      if (slot.state != kSwathReady) continue;
      for (std::uint32_t i = 0; i < slot.dataSize; ++i)
        bits += static_cast<unsigned>(std::popcount(slot.pSwathData[i]));
      slot.state = kSwathFree;
    }
  };
  platform.onSleep = takeSwaths;
  const std::vector<std::uint8_t> full(12, 0xFF);
  for (const int nResY : {361, 720, 40000, 65535}) {
    SCOPED_TRACE(nResY);
    FreeJobMem(job);
    job.nResY = static_cast<std::uint16_t>(nResY);
    job.linesReceived = 0;
    job.nHeight = 800;
    ASSERT_TRUE(CheckImageMode(job));
    AllocJobMem(job);
    bits = 0;
    for (std::uint32_t i = 0; i < 800 * 8; ++i) AddLine(job, i % 8, 12, full.data());
    FlushLastBands(job);
    takeSwaths();
    EXPECT_EQ(800u * 8 * 96, bits);  // level 3 sets a bit in both planes
  }
}

TEST_F(Intake, MakesNoSwathBeyondTheLimit) {
  job.nSwathLimit = 2;
  for (std::uint32_t row = 360; row < 720; ++row) SetByte(7, row, 3, 0xFF);
  CompleteBand(job);  // four passes with ink
  EXPECT_EQ(2u, job.swathCount);
  EXPECT_EQ(4u, job.passNo);
  job.passEmpty = 0;
  FlushLastBands(job);
  EXPECT_EQ(1, job.passEmpty);
  EXPECT_EQ(4u, job.passNo);
}

TEST_F(Intake, StopsTheBandWhereASwathFails) {
  job.bPrnCancel = 1;
  SetByte(7, 500, 0, 0xFF);
  CompleteBand(job);
  EXPECT_EQ(1u, job.passNo);
  EXPECT_NE(0, Row(7, 500)[0] & 0x3F);  // not moved
  TakeLog();
  FlushLastBands(job);
  EXPECT_EQ(1u, job.passNo);
}

}  // namespace
}  // namespace qrn
