// The job's buffers where no whole job looks: their sizes, connects that repeat, memory that cannot
// be had.
#include "raster/job_memory.h"

#include <new>
#include <vector>

#include "job/job.h"
#include "params/feather_masks.h"
#include "raster/band.h"
#include "raster/core_job.h"
#include "raster/pass_rows.h"
#include "raster/tile_walk.h"

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

class JobMemory : public CoreJob {
 protected:
  JobMemory() {
    job.nResX = 1440;
    job.nResY = 360;
    job.dualHead = 1;
    job.passCount = 4;
    job.lineStride = 48;
  }
  void Store(std::uint32_t row) {
    const std::vector<std::uint8_t> line(job.lineStride, 1);
    StoreRow(job, 7, row, line.data(), job.lineStride);
  }
};

TEST_F(JobMemory, HasTheSizesOfAOneMetreImage) {
  job.lineStride = 14176;
  job.passCount = 8;
  AllocJobMem(job);
  EXPECT_EQ("mem: malloc 8, 20413440-6736095\r\n", TakeLog());
  FreeJobMem(job);
  EXPECT_EQ("mem: free --\r\n", TakeLog());
}

// The address sanitizer sees what was kept too small.
TEST_F(JobMemory, OfARepeatedConnectIsUsedAgainWhenItFitsAndReplacedWhenNot) {
  job.nResY = 720;
  job.swathH = 360;
  AllocJobMem(job);
  std::uint8_t* const pass = job.Mem.pPassBuffer[3];
  std::uint8_t* const out = job.PrintOutBuf;
  Store(0);
  job.queueWr = 2;
  AllocJobMem(job);
  EXPECT_EQ(pass, job.Mem.pPassBuffer[3]);
  EXPECT_EQ(out, job.PrintOutBuf);
  EXPECT_TRUE(AreRowsBlank(job, 0, 2880));
  EXPECT_EQ(0, job.queueWr);
  for (int band = 0; band < 7; ++band) ShiftPassBuffers(job);  // the ring is 2520 of 2880 rows on
  job.nResY = 360;
  job.lineStride = 480;
  AllocJobMem(job);
  Store(1439);
  EXPECT_FALSE(AreRowsBlank(job, 1439, 1));
  job.swathQueue[5].pSwathData[job.printOutBufSize - 1] = 1;
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
  job.dualHead = 0;
  for (const Case& failing : {
           // 360 x 3,000,000 x 4 = 4,320,000,000 does not fit 32 bits
           Case{3'000'000, 360, "mem: malloc pJob->Mem.pPassBuffer fail 0-25032704!"},
           // 1 x 30,000,000 x 4 can be had, (36283 + 8 x 30,000,000) x 90 = 21,603,265,470 cannot
           Case{30'000'000, 1, "mem: malloc PrintOutBuf fail! 0-128428990"},
           // 9 masks of 513 bytes in three phases
           Case{48, 360, "mem: malloc pJob->Mem.pFeatherRuns fail 9-13851!", 13851},
           Case{48, 360, "mem: malloc pJob->Mem.pConvertScratch fail", kConvertScratchBytes},
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
