// Swaths, their headers and their queue.
#include <cstring>

#include "raster/job_memory.h"
#include "raster/swath_builder.h"
#include "raster/swath_queue.h"
#include "support/job_fixture.h"

namespace qrn {
namespace {

class Swaths : public JobFixture {
 protected:
  Swaths() {
    job.nResX = 1440;
    job.nResY = 360;
    job.nBitsPerPixel = 2;
    job.nLineBits = 384;
    job.nHeight = 1000;
    job.lineStride = 48;
    job.passCount = 4;
    job.passStep = 90;
    job.swathSteps = 1800;
    job.carriageSpeed = 46;
    job.marginDots = 3628;
    job.biDirOfs = 32;
    job.resFactor = 1440 * 0.0033333334f;
    job.rowOffset[0] = 451;
    job.passRowPad = 902;
    job.passRightByte = 48;
    job.passDataSize = 720;
    job.bTxRun = 1;
    AllocJobMem(job);
    TakeLog();
  }
  ~Swaths() override { FreeJobMem(job); }

  bool PrintingPass() { return Pass(0); }
  bool BlankPass() { return Pass(1); }
  bool Pass(std::uint8_t empty) {
    ++job.passNo;
    job.passEmpty = empty;
    return PutSwath(job);
  }
  // The transmit thread takes and sends one swath; 0 when there is none, else its number.
  std::uint32_t Send() {
    Swath* swath = QueueGetReady(job);
    if (swath == nullptr) return 0;
    SetSwathState(swath, kSwathFree);
    sent.push_back({swath->header.swathNo, swath->dataSize, swath->header.feedSteps});
    return swath->header.swathNo;
  }
  struct Sent {
    std::uint32_t number, bytes, steps;
    bool operator==(const Sent&) const = default;
  };
  std::vector<Sent> sent;
};

TEST_F(Swaths, CarryPositionsOfBothDirectionsAndTheRoundedSize) {
  struct Case {
    std::uint8_t dir;
    std::uint16_t shift, start, end;
    std::uint32_t passBytes, dataBytes;
  };
  // (0 + 3628) / 9.6 = 377.9; (192 + 3628) / 9.6 + 902 / 4.8 = 397.9 + 187.9 = 585.8
  for (const Case& expected : {Case{0, 40, 377, 585, 1, 320}, Case{1, 32, 585, 377, 320, 320},
                               Case{1, 40, 593, 377, 321, 640}, Case{1, 0, 553, 377, 640, 640}}) {
    job.passDir = expected.dir;
    job.biDirOfs = expected.shift;
    job.passDataSize = expected.passBytes;
    job.feedLine = 950;
    Swath& swath = job.swathQueue[0];
    CreateSwath(job, swath);
    EXPECT_EQ(expected.start, swath.header.startPos);
    EXPECT_EQ(expected.end, swath.header.endPos);
    EXPECT_EQ(expected.dataBytes, swath.dataSize);
    EXPECT_EQ(1000u, swath.header.feedLine);  // never beyond the image
  }
  EXPECT_TRUE(HasLines(TakeLog(), {"Create Swath0, 0, pos:377-585 Csteps:1800, lines:1000\r\n"}));
}

TEST_F(Swaths, HaveTheirHeaderInItsBytes) {
  SwathHeader header{};
  header.dir = header.dir2 = 1;
  header.spitMode = 0x13;
  header.speed = 0x6BD0;
  header.startPos = 0x0249;
  header.endPos = 0x0179;
  header.spitAmount = 3000;
  header.stepLines = 90;
  header.swathNo = 0x01020304;
  header.feedSteps = 0x00070809;
  header.feedLine = 0x0A0B0C0D;
  const std::uint8_t wanted[36] = {0, 0, 1,    0,    1,  0x13, 0xD0, 0x6B, 0x49, 2,    0x79, 1,
                                   0, 0, 0xB8, 0x0B, 90, 0,    0,    0,    4,    3,    2,    1,
                                   0, 0, 0,    0,    9,  8,    7,    0,    0x0D, 0x0C, 0x0B, 0x0A};
  std::uint8_t bytes[36];
  std::memset(bytes, 0xFF, sizeof bytes);
  EncodeSwathHeader(header, bytes);
  EXPECT_EQ(0, std::memcmp(wanted, bytes, sizeof bytes));
}

TEST_F(Swaths, AreSentOnlyFromThreeOnAndInRingOrder) {
  ASSERT_TRUE(PrintingPass());
  ASSERT_TRUE(PrintingPass());
  ASSERT_TRUE(BlankPass());  // both are ready now
  EXPECT_EQ(0u, Send());
  ASSERT_TRUE(PrintingPass());  // the feed and the third
  EXPECT_EQ(1u, Send());
  EXPECT_EQ(2u, Send());
  EXPECT_EQ(3u, Send());  // the feed was ready at once
  EXPECT_EQ(0u, Send());  // the last printing one is held back
  for (int pass = 0; pass < 8; ++pass) {
    ASSERT_TRUE(PrintingPass());
    EXPECT_EQ(4u + static_cast<std::uint32_t>(pass), Send());
  }
}

TEST_F(Swaths, FeedForBlankPassesBetweenPrintingOnesAndNowhereElse) {
  BlankPass();
  PrintingPass();
  BlankPass();
  BlankPass();
  PrintingPass();
  BlankPass();
  platform.onSleep = [this] { Send(); };
  WaitSwathQueue(job);
  const std::vector<Sent> wanted = {{1, 960, 1800}, {2, 0, 3600}, {3, 960, 1800}};
  EXPECT_EQ(wanted, sent);
  EXPECT_TRUE(
      HasLines(TakeLog(), {"swath0 empty\r\n", "Create Swath1", "EmptySteps: 3600", "Create Swath3",
                           "swath5 empty", "Wait swath Queue sended.0-3-3", "All swath sended!"}));
}

TEST_F(Swaths, SplitAFeedThatIsTooLongForOne) {
  EmptySteps(job, 0x7FFFFFFFull + 5);
  job.queueStarted = 1;
  Send();
  Send();
  const std::vector<Sent> wanted = {{1, 0, 0x7FFFFFFF}, {2, 0, 5}};
  EXPECT_EQ(wanted, sent);
}

TEST_F(Swaths, DropTheRestOfAFeedWhenTheJobStopsInFrontOfIt) {
  for (int pass = 0; pass < 5; ++pass) ASSERT_TRUE(PrintingPass());
  platform.onSleep = [this] { job.nErrCode = 26; };
  EmptySteps(job, 0x7FFFFFFFull + 5);  // one slot is left for it
  EXPECT_EQ(0x7FFFFFFFu, job.swathQueue[5].header.feedSteps);
  EXPECT_EQ(kSwathReady, job.swathQueue[5].state);
  EXPECT_TRUE(HasLines(TakeLog(), {"EmptySteps: -2147483644\r\n", "Get Pc buffer... bur quit!",
                                   "EmptySwathPswath=NULL\r\r\n\r\n"}));
  EXPECT_EQ(6u, job.swathCount);
}

TEST_F(Swaths, WaitForASlotAndSayOnceThatTheyDo) {
  for (int pass = 0; pass < 6; ++pass) ASSERT_TRUE(PrintingPass());
  std::size_t sleepsBefore = platform.sleeps.size();
  platform.onSleep = [this, sleepsBefore] {
    if (platform.sleeps.size() - sleepsBefore == 60) Send();
  };
  ASSERT_TRUE(PrintingPass());
  EXPECT_EQ(60u, platform.sleeps.size() - sleepsBefore);
  EXPECT_TRUE(HasLines(TakeLog(), {"PC buffer wait...", "PC overflow: 6000"}));
  // The job stops: nothing waits any more.
  platform.onSleep = [this] { job.bPrnCancel = 1; };
  EXPECT_FALSE(PrintingPass());
  EXPECT_TRUE(HasLines(TakeLog(), {"Get Pc buffer... bur quit!"}));
  EmptySteps(job, 100);
  EXPECT_EQ("", TakeLog());
  platform.onSleep = nullptr;
  sleepsBefore = platform.sleeps.size();
  WaitSwathQueue(job);
  EXPECT_EQ(sleepsBefore, platform.sleeps.size());
}

TEST_F(Swaths, AreSentEvenWhenTheCountSaysThereAreNone) {
  ASSERT_TRUE(PrintingPass());
  ASSERT_TRUE(BlankPass());
  job.queueStarted = 1;
  job.queueUsed = 0;
  EXPECT_EQ(1u, Send());
  EXPECT_EQ(0, job.queueUsed);
  EXPECT_TRUE(HasLines(TakeLog(), {"Queue ready Error overflow:1-1"}));
}

}  // namespace
}  // namespace qrn
