// The mailbox where its two users collide, and a job's data to the byte.
#include <cstring>

#include "host/job_lifecycle.h"
#include "protocol/command.h"
#include "protocol/execute.h"
#include "protocol/printer_state.h"
#include "protocol/spit_plan.h"
#include "support/job_fixture.h"

namespace qrn {
namespace {

class Mailbox : public JobFixture {
 protected:
  Mailbox() { job.bTxRun = 1; }
  void Post(std::uint32_t code) {
    job.nCmdState = kMailIdle;
    ASSERT_EQ(CommandPost::kPosted, CmdBuild(code, job));
  }
};

TEST_F(Mailbox, TakesOneCommandAtATimeAndKeepsIt) {
  Post(kCmdConnect);
  for (const std::uint8_t state : {kMailPending, kMailFailed, kMailBuilding, kMailDone}) {
    job.nCmdState = state;
    EXPECT_EQ(CommandPost::kBusy, CmdBuild(kCmdJobEnd, job));
    EXPECT_EQ(state == kMailPending, CmdSchedule(job));
  }
  EXPECT_EQ(kCmdConnect, job.cmdPkt[0]);
  job.nCmdState = kMailIdle;
  EXPECT_EQ(CommandPost::kUnknownCode, CmdBuild(0x107, job));
  EXPECT_EQ(kMailIdle, job.nCmdState);
  EXPECT_EQ("未知命令... 263\r\r\n\r\n", TakeLog());
}

TEST_F(Mailbox, SettlesNothingThatTheHostHasTakenBack) {
  Post(kCmdJobEnd);
  ASSERT_TRUE(CmdSchedule(job));
  platform.onSleep = [this] { job.nErrCode = 17; };
  job.nCmdState = kMailIdle;
  EXPECT_EQ(0, CmdExecute(kCmdJobEnd, job));
  EXPECT_EQ("Cmm(5) Quit:1-0-0-0\r\n\r\n", TakeLog());
  CmdSettle(job, true);
  EXPECT_EQ(kMailIdle, job.nCmdState);
}

TEST_F(Mailbox, IsLeftToAThreadThatEndsWithItsOwnCommandInIt) {
  Post(kCmdPausePoll);
  platform.onSleep = [this] {
    job.bTxEnd = platform.sleeps.size() == 2;
    if (platform.sleeps.size() == 20) job.nErrCode = 17;  // lets a wait without end go
  };
  EXPECT_EQ(0, CmdExecute(kCmdJobEnd, job));
  EXPECT_EQ(2u, platform.sleeps.size());
  EXPECT_EQ("Cmm(5) Quit:1-0-1-0\r\n\r\n", TakeLog());
  EXPECT_EQ(kMailPending, job.nCmdState);
}

// A thread settles whatever it will settle before it ends.
TEST_F(Mailbox, ShowsAnOutcomeAfterTheEndOfTheThread) {
  platform.onSleep = [this] { job.bTxEnd = 1, job.nCmdState = kMailDone; };
  EXPECT_EQ(1, CmdExecute(kCmdJobEnd, job));
  EXPECT_EQ(kMailIdle, job.nCmdState);
}

TEST_F(Mailbox, JobCreateHasItsBytes) {
  std::memset(job.cmdPkt, 0xEE, 36);
  job.nResX = 1440, job.nResY = 360, job.nHeight = 0x01020304;
  job.nLineBits = 6000, job.nBitsPerPixel = 2, job.passCount = 4, job.carriageSpeed = 46;
  job.resIdx = 1, job.resCode = 0x5C, job.resParamA = 5, job.resParamB = 12;
  job.carriageOpts = 0x4000, job.waveNo = 7;
  Post(kCmdJobCreate);
  // 52 mm: (6000 x 25.4 + 10) / (2 x 1440) = 52.9; 9 h 05 min
  const std::uint8_t create[64] = {3, 0, 0,    0,    0,    0,    0xCF, 0x5C, 4,  46, 25,   1,
                                   1, 0, 0xB0, 0x04, 0xA0, 0x05, 0x68, 1,    52, 0,  0,    0,
                                   4, 3, 2,    1,    5,    12,   0,    0,    5,  9,  0x15, 0x20};
  EXPECT_EQ(0, std::memcmp(create, job.cmdPkt, 64));
  EXPECT_TRUE(HasLines(TakeLog(), {"校色板\r\n"}));
}

// An option of the machine's that the virtual printer's lacks.
TEST_F(Mailbox, AFlashOfTheOptionSaysSo) {
  Swath swath{};
  swath.dataSize = 320, swath.header.startPos = 2, swath.header.endPos = 1;
  job.flashEvery = 1, job.flashParam = 127, job.twoHeadCarriage = 1, job.singleHead = 1;
  for (const auto& [option, mode] : {std::pair{0, 0x02}, {1, 0x12}}) {
    job.flashOpt = static_cast<std::uint8_t>(option);
    SpitPlan(job, swath);
    EXPECT_EQ(mode, swath.header.spitMode);
    EXPECT_EQ(3000, swath.header.spitAmount);
  }
}

}  // namespace
}  // namespace qrn
