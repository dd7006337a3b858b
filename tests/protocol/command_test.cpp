// Command packets to the byte, and the rules of the mailbox.
#include "protocol/command.h"

#include <cstring>
#include <tuple>

#include "platform/bytes.h"
#include "protocol/printer_state.h"
#include "support/job_fixture.h"

namespace qrn {
namespace {

class Command : public JobFixture {
 protected:
  void Configure() {
    job.nResX = 1440;
    job.nResY = 360;
    job.nHeight = 0x01020304;
    job.nLineBits = 6000;
    job.nBitsPerPixel = 2;
    job.passCount = 4;
    job.carriageSpeed = 46;
    job.resIdx = 1;
    job.resCode = 0x5C;
    job.resParamA = 5;
    job.resParamB = 12;
    job.waveNo = 7;
  }
  void Post(std::uint32_t code) {
    job.nCmdState = kMailIdle;
    ASSERT_EQ(CommandPost::kPosted, CmdBuild(code, job));
    EXPECT_EQ(kMailPending, job.nCmdState);
  }
  // A turn of the transmit thread that sends what is pending; the code, 0 for none.
  int Turn() {
    if (!CmdSchedule(job)) return 0;
    CmdSettle(job, true);
    return job.nTxCmd;
  }
};

TEST_F(Command, PacketsHaveTheirBytes) {
  std::memset(job.cmdPkt + 4, 0xEE, 32);
  Post(kCmdConnect);
  std::uint8_t connect[64] = {2};
  connect[32] = connect[33] = 0x11, connect[34] = 0x13, connect[35] = 0x20;
  EXPECT_EQ(0, std::memcmp(connect, job.cmdPkt, 64));

  Configure();
  job.carriageOpts = 0x4000;
  Post(kCmdJobCreate);
  // 52 mm: (6000 x 25.4 + 10) / (2 x 1440) = 52.9; 9 h 05 min
  std::uint8_t create[64] = {3, 0, 0,    0,    0,    0,    0xCF, 0x5C, 4,  46, 25,   1,
                             1, 0, 0xB0, 0x04, 0xA0, 0x05, 0x68, 1,    52, 0,  0,    0,
                             4, 3, 2,    1,    5,    12,   0,    0,    5,  9,  0x15, 0x20};
  EXPECT_EQ(0, std::memcmp(create, job.cmdPkt, 64));
  EXPECT_EQ(
      "校色板\r\nWAVE: 7-0\r\nJobinfo: 4-46,resolu:0x5C(5-12), "
      "pic:52x16909060(1440x360),C-0x01\r\n",
      TakeLog());

  // The others change the code and leave the body.
  for (const std::uint32_t code : {kCmdJobEnd, kCmdCancel, kCmdPausePoll}) {
    Post(code);
    create[0] = static_cast<std::uint8_t>(code);
    EXPECT_EQ(0, std::memcmp(create, job.cmdPkt, 64));
  }
}

TEST_F(Command, JobInformationCutsTheWidthToMillimetresAndSixteenBits) {
  struct Case {
    std::uint32_t lineBits;
    std::uint16_t resX;
    std::uint8_t twoHeads;
    std::uint32_t widthMm;
    std::uint16_t carriage;
  };
  // (1440 x 25.4 + 10) / 1440 = 25.4; (4294967295 x 25.4 + 10) / 2160 = 50505633, of which the low
  // 16 bits are kept
  for (const Case& expected : {Case{1440, 720, 1, 25, 1800}, Case{0xFFFFFFFF, 1080, 0, 42913, 1200},
                               Case{0, 0, 0, 0, 1200}}) {
    Configure();
    job.nLineBits = expected.lineBits;
    job.nResX = expected.resX;
    job.twoHeadCarriage = expected.twoHeads;
    Post(kCmdJobCreate);
    EXPECT_EQ(expected.widthMm, U32(job.cmdPkt + 20));
    EXPECT_EQ(expected.carriage, U16(job.cmdPkt + 14));
  }
}

TEST_F(Command, MailboxTakesOneAtATime) {
  Post(kCmdConnect);
  EXPECT_EQ(CommandPost::kBusy, CmdBuild(kCmdJobEnd, job));
  EXPECT_EQ(2, job.cmdPkt[0]);
  for (const std::uint8_t state : {kMailFailed, kMailBuilding, kMailDone}) {
    job.nCmdState = state;
    EXPECT_EQ(CommandPost::kBusy, CmdBuild(kCmdJobEnd, job));
    EXPECT_FALSE(CmdSchedule(job));
  }
  job.nCmdState = kMailIdle;
  EXPECT_EQ(CommandPost::kUnknownCode, CmdBuild(0x107, job));
  EXPECT_EQ(kMailIdle, job.nCmdState);
  EXPECT_EQ(7, job.cmdPkt[0]);
  EXPECT_EQ("未知命令... 263\r\r\n\r\n", TakeLog());
}

TEST_F(Command, IsSettledForTheHostAndDroppedForTheThread) {
  for (const auto& [code, accepted, state] :
       std::vector<std::tuple<std::uint32_t, bool, int>>{{kCmdConnect, true, kMailDone},
                                                         {kCmdJobEnd, false, kMailFailed},
                                                         {kCmdCancel, true, kMailIdle},
                                                         {kCmdPausePoll, false, kMailIdle}}) {
    Post(code);
    ASSERT_TRUE(CmdSchedule(job));
    EXPECT_EQ(code, job.nTxCmd);
    CmdSettle(job, accepted);
    EXPECT_EQ(state, job.nCmdState);
  }
  Post(kCmdJobCreate);
  ASSERT_TRUE(CmdSchedule(job));
  job.nCmdState = kMailIdle;  // the host gave up
  CmdSettle(job, false);
  EXPECT_EQ(kMailIdle, job.nCmdState);
}

TEST_F(Command, PausePollsAreOneAndAHalfSecondsApart) {
  platform.nowMs = 0xFFFFF000;  // the tick wraps on the way
  job.bPauseSeen = 1;
  EXPECT_EQ(0, Turn());  // no swath has begun to flow
  job.queueStarted = 1;
  std::vector<std::uint32_t> polls;
  for (int turn = 0; turn < 100; ++turn) {
    if (Turn() == kCmdPausePoll) polls.push_back(platform.nowMs);
    platform.nowMs += 100;
  }
  ASSERT_GE(polls.size(), 5u);
  for (std::size_t i = 2; i < polls.size(); ++i) EXPECT_EQ(1600u, polls[i] - polls[i - 1]);
  // One that finds the mailbox busy was none: it comes as soon as the host has looked.
  platform.nowMs += 2000;
  job.nCmdState = kMailDone;
  EXPECT_EQ(0, Turn());
  job.nCmdState = kMailIdle;
  EXPECT_EQ(kCmdPausePoll, static_cast<std::uint32_t>(Turn()));
}

TEST_F(Command, CancelIsPostedOnceReportedAndNeverOverThePendingOne) {
  job.queueStarted = 1;
  SetPrinterState(job, 0, 1);
  SetPrinterState(job, 0, 0);  // resumed: the latch stays
  EXPECT_EQ(kCmdCancel, static_cast<std::uint32_t>(Turn()));
  EXPECT_EQ(kCmdCancel, static_cast<std::uint32_t>(Turn()));
  Post(kCmdJobEnd);
  EXPECT_EQ(kCmdJobEnd, static_cast<std::uint32_t>(Turn()));
  EXPECT_EQ(0, Turn());  // the host has not looked yet
}

TEST_F(Command, PrinterStateIsLoggedWhenItChanges) {
  SetPrinterState(job, 1, 0);
  SetPrinterState(job, 1, 0);
  SetPrinterState(job, 0, 1);
  EXPECT_EQ("CMM1: Pause-1, Cancel-0\r\r\n\r\nCMM1: Pause-0, Cancel-1\r\r\n\r\n", TakeLog());
  EXPECT_EQ(1, job.bCancelLatch);
  EXPECT_EQ(0, job.bPauseSeen);
}

}  // namespace
}  // namespace qrn
