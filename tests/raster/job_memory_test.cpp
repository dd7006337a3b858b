#include "raster/job_memory.h"

#include <algorithm>
#include <new>
#include <vector>

#include "params/feather_masks.h"
#include "raster/band.h"
#include "raster/feather_runs.h"
#include "raster/pass_rows.h"
#include "support/job_fixture.h"

namespace {
std::size_t g_refusedBytes = 0;  // a block of this size cannot be had
}

void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
  if (bytes == g_refusedBytes) return nullptr;
  try {
    return ::operator new[](bytes);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

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

// Ends of runs and marks come on top of the lines; the swaths' buffers have no more than they had.
TEST_F(JobMemory, OfPagesFromTenCentimetresOnIsAtMost5PercentMoreThanItsLinesAndSwaths) {
  struct Mode {
    std::uint16_t resolution;
    std::uint8_t passCount;
  };
  job.dualHead = 1;
  for (const Mode& mode : {Mode{1080, 3}, Mode{1440, 4}, Mode{1620, 6}, Mode{2160, 8}}) {
    job.passCount = mode.passCount;
    for (std::uint32_t widthMm = 100; widthMm <= 2000; ++widthMm) {
      job.nLineBits = widthMm * mode.resolution * 10 / 254 * 2;
      job.lineStride = (job.nLineBits + 31) / 32 * 4;
      const std::uint64_t swath =
          (mode.resolution * 6400 / 254 + 8 * std::uint64_t{job.lineStride}) * 360 / mode.passCount;
      const std::uint64_t plain = 8 * 1440 * std::uint64_t{job.lineStride} + 7 * swath;
      EXPECT_LE(8 * PassBufferBytes(LayoutOf(job)) + 7 * swath, plain + plain / 20) << widthMm;
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

// What stays from the connect before would be too small.
TEST_F(JobMemory, OfFeatherMasksIsThatOfTheLastConnect) {
  job.dualHead = 1;
  job.nLineBits = 384;
  for (const int percent : {10, 100, 0}) {
    job.featherPercent = static_cast<std::uint8_t>(percent);
    BuildFeatherMasks(job);
    AllocJobMem(job);
    ASSERT_EQ(percent == 0, job.Mem.pFeatherRuns == nullptr);
    if (percent == 0) continue;
    std::vector<std::uint8_t> wanted(FeatherRunsBytes(job));
    BuildFeatherRuns(job, wanted.data());
    EXPECT_TRUE(std::equal(wanted.begin(), wanted.end(), job.Mem.pFeatherRuns));
  }
}

// The ring of a lower page begins anew.
TEST_F(JobMemory, OfARepeatedConnectBeginsWithTheFirstRow) {
  job.nResY = 720;
  AllocJobMem(job);
  job.swathH = 360;
  for (int band = 0; band < 7; ++band) ShiftPassBuffers(job);  // 2520 of 2880 rows on
  job.nResY = 360;
  AllocJobMem(job);
  const std::vector<std::uint8_t> line(48, 1);
  StoreRow(job, 7, 1439, line.data(), 48);  // the address sanitizer watches
  EXPECT_FALSE(AreRowsBlank(job, 1439, 1));
}

TEST_F(JobMemory, ThatCannotBeHadRaises13AndLeavesNothing) {
  struct Case {
    std::uint32_t stride;
    std::uint16_t nResY;
    const char* log;
    std::size_t refusedBytes = 0;
  };
  job.nLineBits = 384;
  job.featherRows = 9;
  const std::uint8_t masks[9 * kFeatherMaskBytes] = {};
  job.pFeatherMask = masks;
  for (const Case& failing : {
           // 360 x 3,000,000 x 4 = 4,320,000,000 does not fit 32 bits
           Case{3'000'000, 360, "mem: malloc pJob->Mem.pPassBuffer fail 0-25032704!"},
           // 1 x 30,000,000 x 4 can be had, (36283 + 8 x 30,000,000) x 90 = 21,603,265,470 cannot
           Case{30'000'000, 1, "mem: malloc PrintOutBuf fail! 0-128428990"},
           // 9 masks of 513 bytes in three phases
           Case{48, 360, "mem: malloc pJob->Mem.pFeatherRuns fail 9-13851!", 13851},
       }) {
    job.lineStride = failing.stride;
    job.nResY = failing.nResY;
    job.nErrCode = 0;
    platform.boxes.clear();
    g_refusedBytes = failing.refusedBytes;
    AllocJobMem(job);
    g_refusedBytes = 0;
    EXPECT_TRUE(HasLines(TakeLog(), {failing.log, "Error: Function init() error"}));
    EXPECT_EQ(13, job.nErrCode);
    EXPECT_EQ(1u, platform.boxes.size());
    EXPECT_EQ(nullptr, job.Mem.pPassBuffer[0]);
    EXPECT_EQ(nullptr, job.swathQueue[0].pSwathData);
  }
}

}  // namespace
}  // namespace qrn
