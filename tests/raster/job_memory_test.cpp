#include "raster/job_memory.h"

#include <set>
#include <vector>

#include "raster/pass_rows.h"
#include "support/job_fixture.h"

namespace qrn {
namespace {

class JobMemory : public JobFixture {
 protected:
  JobMemory() {
    job.nResX = 1440;
    job.nResY = 360;
    job.lineStride = 48;
    job.passCount = 4;
    job.carriageSpeed = 46;
  }
  ~JobMemory() override { FreeJobMem(job); }
};

TEST_F(JobMemory, HasTheSizesOfAOneMetreImage) {
  job.lineStride = 14176;
  job.passCount = 8;
  AllocJobMem(job);
  EXPECT_EQ("mem: malloc 8, 20413440-6736095\r\n", TakeLog());
  EXPECT_EQ(6736095u, job.printOutBufSize);
  EXPECT_EQ(46 * 600, job.swathQueue[5].header.speed);
  FreeJobMem(job);
  EXPECT_EQ("mem: free --\r\n", TakeLog());
  for (const std::uint8_t* buffer : job.Mem.pPassBuffer) EXPECT_EQ(nullptr, buffer);
  EXPECT_EQ(nullptr, job.PrintOutBuf);
}

TEST_F(JobMemory, OfOneHeadHoldsItsWidestPass) {
  job.lineStride = 14176;
  job.nLineBits = 14176 * 8;
  job.rowOffset[0] = 300;
  AllocJobMem(job);
  EXPECT_EQ(13919040u, job.printOutBufSize);  // (4 x 4726 + 300 + 128) x 720, a multiple of 320
}

// Rows are sorted, and ends of runs and marks come on top.
TEST_F(JobMemory, TakesAtMost5PercentMoreThanTheLinesOfItsRows) {
  job.dualHead = 1;
  for (const std::uint32_t passCount : {3u, 4u, 6u, 8u}) {
    job.passCount = static_cast<std::uint8_t>(passCount);
    for (std::uint32_t widthBytes = 250 * passCount; widthBytes < 44'000; widthBytes += 97) {
      job.nLineBits = 8 * widthBytes;
      job.lineStride = (widthBytes + 3) / 4 * 4;
      const std::uint64_t lines = std::uint64_t{1440} * job.lineStride;
      EXPECT_LE(PassBufferBytes(LayoutOf(job)), lines + lines / 20) << widthBytes;
    }
  }
}

TEST_F(JobMemory, OfARepeatedConnectIsUsedAgainWhenItFitsAndReplacedWhenNot) {
  AllocJobMem(job);
  std::uint8_t* const pass = job.Mem.pPassBuffer[3];
  std::uint8_t* const out = job.PrintOutBuf;
  const std::uint8_t line[48] = {1};
  StoreRow(job, 3, 0, line, 48);
  ASSERT_FALSE(AreRowsBlank(job, 0, 1440));
  job.queueWr = 2;
  AllocJobMem(job);
  EXPECT_EQ(pass, job.Mem.pPassBuffer[3]);
  EXPECT_EQ(out, job.PrintOutBuf);
  EXPECT_TRUE(AreRowsBlank(job, 0, 1440));
  EXPECT_EQ(0, job.queueWr);
  job.lineStride = 480;
  AllocJobMem(job);
  // The address sanitizer sees one that was kept too small.
  const std::vector<std::uint8_t> wide(480, 1);
  StoreRow(job, 7, 1439, wide.data(), 480);
  job.swathQueue[5].pSwathData[job.printOutBufSize - 1] = 1;
}

TEST_F(JobMemory, ThatCannotBeHadRaises13AndLeavesNothing) {
  struct Case {
    std::uint32_t stride;
    std::uint16_t nResY;
    const char* log;
  };
  for (const Case& failing : {
           // 360 x 3,000,000 x 4 = 4,320,000,000 does not fit 32 bits
           Case{3'000'000, 360, "mem: malloc pJob->Mem.pPassBuffer fail 0-25032704!"},
           // 1 x 30,000,000 x 4 can be had, (36283 + 8 x 30,000,000) x 90 = 21,603,265,470 cannot
           Case{30'000'000, 1, "mem: malloc PrintOutBuf fail! 0-128428990"},
       }) {
    job.lineStride = failing.stride;
    job.nResY = failing.nResY;
    job.nErrCode = 0;
    platform.boxes.clear();
    AllocJobMem(job);
    EXPECT_TRUE(HasLines(TakeLog(), {failing.log, "Error: Function init() error"}));
    EXPECT_EQ(13, job.nErrCode);
    EXPECT_EQ(1u, platform.boxes.size());
    EXPECT_EQ(nullptr, job.Mem.pPassBuffer[0]);
    EXPECT_EQ(nullptr, job.swathQueue[0].pSwathData);
  }
}

}  // namespace
}  // namespace qrn
