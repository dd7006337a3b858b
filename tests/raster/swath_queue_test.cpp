// What the queue does that no whole job shows: when sending may start, and feeds, bands and flushes
// that a stop cuts off.
#include "raster/swath_queue.h"

#include <vector>

#include "raster/band.h"
#include "raster/core_job.h"
#include "raster/pass_rows.h"

namespace qrn {
namespace {

class SwathQueue : public CoreJob {
 protected:
  SwathQueue() {
    EXPECT_TRUE(Connect(GoodBlock().data(), {1440, 360, 384, 1000}));
    platform.onSleep = nullptr;
    TakeLog();
  }
  bool Pass(std::uint8_t empty) {
    ++job.passNo;
    job.passEmpty = empty;
    return PutSwath(job);
  }
  // The transmit thread takes and sends one swath; 0 when there is none, else its number.
  std::uint32_t Send() {
    Swath* swath = QueueGetReady(job);
    SetSwathState(swath, kSwathFree);
    return swath == nullptr ? 0 : swath->header.swathNo;
  }
};

TEST_F(SwathQueue, SendsFromThreeOnAllButTheLastPrintingOne) {
  ASSERT_TRUE(Pass(0) && Pass(0) && Pass(1));
  EXPECT_EQ(0u, Send());  // both are ready
  ASSERT_TRUE(Pass(0));   // the feed and the third
  for (const std::uint32_t number : {1u, 2u, 3u, 0u}) EXPECT_EQ(number, Send());
  ASSERT_TRUE(Pass(0));
  EXPECT_EQ(4u, Send());
}

TEST_F(SwathQueue, SplitsAFeedThatIsTooLongAndDropsTheRestAtAStop) {
  EmptySteps(job, 0x7FFFFFFFull + 1);
  EXPECT_EQ(0x7FFFFFFFu, job.swathQueue[0].header.feedSteps);
  EXPECT_EQ(1u, job.swathQueue[1].header.feedSteps);
  EXPECT_EQ(kSwathReady, job.swathQueue[1].state);
  ASSERT_TRUE(Pass(0) && Pass(0) && Pass(0));
  TakeLog();
  platform.onSleep = [this] { job.nErrCode = 26; };
  EmptySteps(job, 0x7FFFFFFFull + 5);  // one slot is left for it
  EXPECT_EQ(0x7FFFFFFFu, job.swathQueue[5].header.feedSteps);
  EXPECT_TRUE(HasLines(TakeLog(), {"EmptySteps: -2147483644\r\n", "Get Pc buffer... bur quit!",
                                   "EmptySwathPswath=NULL\r\r\n\r\n"}));
  EXPECT_EQ(6u, job.swathCount);
}

TEST_F(SwathQueue, SendsEvenWhenTheCountSaysThereIsNothing) {
  ASSERT_TRUE(Pass(0) && Pass(1));
  job.queueStarted = 1;
  job.queueUsed = 0;
  EXPECT_EQ(1u, Send());
  EXPECT_EQ(0, job.queueUsed);
  EXPECT_TRUE(HasLines(TakeLog(), {"Queue ready Error overflow:1-1"}));
}

TEST_F(SwathQueue, StopsTheBandWhereASwathFails) {
  const std::vector<std::uint8_t> full(job.lineStride, 0xFF);
  StoreRow(job, 7, 500, full.data(), job.lineStride);
  job.bPrnCancel = 1;
  CompleteBand(job);
  EXPECT_EQ(1u, job.passNo);
  EXPECT_FALSE(AreRowsBlank(job, 500, 1));  // not moved
  FlushLastBands(job);
  EXPECT_EQ(1u, job.passNo);
}

}  // namespace
}  // namespace qrn
