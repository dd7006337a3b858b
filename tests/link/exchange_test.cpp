// One message and its reply; turns of the transmit thread.
#include <cstring>

#include "link/replies.h"
#include "link/transmit.h"
#include "link/usb_device.h"
#include "protocol/command.h"
#include "support/job_fixture.h"

namespace qrn {
namespace {

class Exchange : public JobFixture {
 protected:
  Exchange() {
    SetUsbIds(job);
    platform.paths = {"pid_a71d vid_5e3c"};
    EXPECT_EQ(1, UsbOpen(job));
    job.bTxRun = 1;
  }
  ~Exchange() override { UsbClose(job); }

  int SendCommand(std::uint8_t code) {
    job.cmdPkt[0] = code;
    job.nTxCmd = code;
    job.nCmdState = kMailPending;
    return TxSendCommand(job);
  }
  int SendSwath(std::uint32_t bytes) {
    job.nTxCmd = kCmdSwath;
    job.pTxSwath = &slot;
    slot.state = kSwathSending;
    slot.pSwathData = data;
    slot.dataSize = bytes;
    slot.header.swathNo = 12;
    slot.header.feedSteps = 1800;
    return TxSendSwath(job);
  }
  // Codes of the commands that went out, in order; 0x100 for swath data.
  std::vector<int> Sent() {
    std::vector<int> codes;
    for (const Bytes& write : platform.written)
      codes.push_back(U16(&write[14]) == 0x85B5 ? 0x100 : write[32]);
    platform.written.clear();
    return codes;
  }
  static Bytes Room(std::uint16_t state, std::uint16_t room) {
    return Reply({12, 1, state, 0, room, 0});
  }

  Swath slot{};
  std::uint8_t data[640] = {};
};

const Bytes kTaken = Reply({4, 1, 5, 0}), kAgain = Reply({4, 0, 5, 1}),
            kOverflow = Reply({4, 0, 5, 7});
using Codes = std::vector<int>;

TEST_F(Exchange, SettlesACommandByItsReply) {
  struct Case {
    const char* name;
    std::uint8_t code;
    std::vector<Bytes> replies;
    std::uint8_t state;
    Codes sent;
    std::vector<std::string> log;
  };
  for (const Case& expected : {
           Case{"taken", 3, {Reply({3, 1, 0, 0})}, kMailDone, {3}, {"Tx Cmm 3-3(0)"}},
           Case{"not taken, sent again",
                3,
                {Reply({3, 0, 0, 0}), Reply({3, 1, 0, 0})},
                kMailDone,
                {3, 3},
                {"Tx Cmm 3-3(0)", "Tx Cmm 3-3(1)"}},
           Case{"answers to others are read past",
                3,
                {Reply({12, 1, 0, 0}), Reply({4, 0, 2, 7}), Reply({3, 1, 0, 0})},
                kMailDone,
                {3},
                {}},
           Case{"refused", 2, {Reply({2, 0, 0, 9})}, kMailFailed, {2}, {"FW错误 REPLY FAIL"}},
           Case{"an own poll leaves the box idle",
                10,
                {Reply({10, 1, 5, 0})},
                kMailIdle,
                {10},
                {"Tx Cmm 10-A(0)"}},
       }) {
    SCOPED_TRACE(expected.name);
    platform.replies.assign(expected.replies.begin(), expected.replies.end());
    EXPECT_EQ(expected.state != kMailFailed, SendCommand(expected.code) == 1);
    EXPECT_EQ(expected.state, job.nCmdState);
    EXPECT_EQ(expected.sent, Sent());
    EXPECT_TRUE(HasLines(TakeLog(), expected.log));
  }
}

TEST_F(Exchange, SendsASwathBehindItsBufferQuery) {
  platform.replies = {Room(5, 320), kTaken};
  EXPECT_EQ(1, SendSwath(640));
  EXPECT_EQ(kSwathFree, slot.state);
  ASSERT_EQ(3u, platform.written.size());
  const std::uint8_t* query = &platform.written[0][32];
  EXPECT_EQ(12u, U32(query));
  EXPECT_EQ(640u, U32(query + 8));
  const std::uint8_t* packet = &platform.written[1][32];
  EXPECT_EQ(4u, U32(packet));
  EXPECT_EQ(640u, U32(packet + 8));
  EXPECT_EQ(12u, U32(packet + 48));
  EXPECT_EQ(1800u, U32(packet + 56));
  EXPECT_EQ(U16(&platform.written[1][18]) + 1,
            U16(&platform.written[2][18]));  // consecutive numbers
  EXPECT_TRUE(HasLines(TakeLog(), {"Tx Swath12(0) size:640", "Swath012 sended:0"}));
}

TEST_F(Exchange, RepeatsASwathThatWasNotTaken) {
  platform.replies = {Room(5, 320), kOverflow, Room(5, 320), kAgain, Room(5, 320), kTaken};
  EXPECT_EQ(1, SendSwath(640));
  EXPECT_EQ((Codes{12, 4, 0x100, 12, 4, 0x100, 12, 4, 0x100}), Sent());
  EXPECT_EQ((std::vector<std::uint32_t>{3000}), platform.sleeps);
  EXPECT_TRUE(
      HasLines(TakeLog(), {"Rx cmm spool overflow", "Tx Swath12(1)", "Tx Swath12(2)", "sended"}));
  // One that only feeds has no query in front of it, but one in front of a repetition.
  platform.replies = {kAgain, Room(5, 0), kTaken};
  EXPECT_EQ(1, SendSwath(0));
  EXPECT_EQ((Codes{4, 12, 4}), Sent());
  EXPECT_TRUE(
      HasLines(TakeLog(), {"Tx empty Swath12(0)  steps:1800", "Tx empty Swath12(1)  steps:1800"}));
}

TEST_F(Exchange, WaitsForRoomInHalfSecondsAndSaysSoEveryFive) {
  for (int i = 0; i < 22; ++i) platform.replies.push_back(Room(5, 319));  // half of 640 is 320
  platform.replies.push_back(Reply({12, 1, 5}));      // too short to tell of room
  platform.replies.push_back(Packet(0xF003, 1, {}));  // no known packet: read past
  platform.replies.push_back(Room(5, 320));
  TxWaitFwBuffer(job, 640);
  EXPECT_EQ(std::vector<std::uint32_t>(23, 500), platform.sleeps);
  const std::string log = TakeLog();
  EXPECT_TRUE(HasLines(log, {"Fw buffer wait 5s...", "Fw buffer wait 5s..."}));
  EXPECT_EQ(log.find("Fw buffer", log.find("Fw buffer") + 1), log.rfind("Fw buffer"));
  TxWaitFwBuffer(job, 640);  // the read fails: silent, the exchange finds the fault
  EXPECT_EQ("Rx error:31\r\n\r\n", TakeLog());
}

TEST_F(Exchange, TakesNothingFromTheReplyOfAnEarlierExchange) {
  // What is left in the buffer would do; only what came counts.
  for (const Bytes& unusable : {Reply({12}), Reply({12, 1, 5}), Reply({12, 1, 5, 0, 319})}) {
    platform.replies = {Room(5, 320)};
    TxWaitFwBuffer(job, 640);
    platform.replies = {unusable, Room(5, 320)};
    platform.sleeps.clear();
    TxWaitFwBuffer(job, 640);
    EXPECT_EQ((std::vector<std::uint32_t>{500}), platform.sleeps);
    EXPECT_EQ((Codes{12, 12, 12}), Sent());
  }
  platform.replies = {Reply({3, 1, 0, 0}), Packet(0xF003, 4, {}), Reply({3}), Reply({3, 1, 0, 0})};
  EXPECT_EQ(1, SendCommand(3));
  EXPECT_EQ(1, SendCommand(3));
  EXPECT_EQ((Codes{3, 3, 3}), Sent());
}

TEST_F(Exchange, TakesTheParametersThatComeWithAPausedBufferQuery) {
  struct Case {
    std::uint16_t state, mark, shift;
  };
  for (const Case& expected : {Case{3, 0x1122, 40}, Case{3, 0x1123, 32}, Case{5, 0x1122, 32}}) {
    Bytes reply = Words({12, 1, expected.state, 0, 320, 0, expected.mark});
    reply.resize(14 + 70);
    reply[14 + 41 - 8] = 40;  // the section starts at byte 8 of the block; 41 is Db at 1080 dpi
    job.biDirOfs = 32;
    platform.replies = {Packet(0xF008, 42, reply)};
    TxWaitFwBuffer(job, 640);
    EXPECT_EQ(expected.shift, job.biDirOfs);
  }
}

TEST_F(Exchange, TakesTheStateThatTheBufferQueryReports) {
  platform.replies = {Room(3, 0), Room(4, 320)};
  platform.onSleep = [this] { EXPECT_EQ(1, job.bPrnPause); };
  TxWaitFwBuffer(job, 640);
  EXPECT_EQ(0, job.bPrnPause);
  platform.onSleep = nullptr;
  platform.replies = {Room(2, 0)};
  EXPECT_EQ(1, SendSwath(640));  // given up because the job stops: not a failure
  EXPECT_EQ(1, job.bPrnPause);
  EXPECT_EQ(1, job.bPrnCancel);
  EXPECT_EQ(kSwathFree, slot.state);
  EXPECT_TRUE(HasLines(TakeLog(), {"CMM1: Pause-1, Cancel-1", "Tx swathing... bur quit!"}));
  EXPECT_EQ(0, TxTakeSwath(job));
}

TEST_F(Exchange, SendsTheWholeMessageAgainAfterTheLinkIsBack) {
  struct Case {
    const char* lost;
    std::uint32_t goodWrites;  // the next one fails
    std::vector<Bytes> replies;
    Codes sent;
  };
  const Bytes there = Reply({10, 1});  // the printer is back at once and answers the test
  for (const Case& expected : {
           Case{"send(CMM) fail!", 1, {Room(5, 320), there, kTaken}, {12, 10, 4, 0x100}},
           Case{"send(DATA) fail!", 2, {Room(5, 320), there, kTaken}, {12, 4, 10, 4, 0x100}},
           Case{"Rec fail!", 99, {Room(5, 320), {}, there, kTaken}, {12, 4, 0x100, 10, 4, 0x100}},
       }) {
    SCOPED_TRACE(expected.lost);
    platform.replies.assign(expected.replies.begin(), expected.replies.end());
    platform.failWriteAfter = expected.goodWrites;
    platform.onSleep = [this] { platform.failWriteAfter = UINT32_MAX; };
    data[639] = 0x5A;
    EXPECT_EQ(1, SendSwath(640));
    ASSERT_EQ(expected.sent.size(), platform.written.size());
    const Bytes& packet = platform.written[expected.sent.size() - 2];
    EXPECT_EQ(12u, U32(&packet[32 + 48]));
    EXPECT_EQ(640u, U32(&packet[32 + 8]));
    ASSERT_EQ(32u + 640u, platform.written.back().size());
    EXPECT_EQ(0x5A, platform.written.back().back());
    EXPECT_EQ(expected.sent, Sent());
    EXPECT_TRUE(HasLines(TakeLog(), {expected.lost, "重新连接...", "连接1成功!",
                                     "Tx Swath12(0) size:640", "sended"}));
  }
}

TEST_F(Exchange, GivesUpASwathThatOnlyFeedsWhenItWouldBeRepeatedInAJobThatStops) {
  job.nErrCode = 26;
  platform.replies = {kTaken};
  EXPECT_EQ(1, SendSwath(0));
  EXPECT_EQ((Codes{4}), Sent());
  platform.onSleep = [this] { job.nErrCode = 26; };  // in the rest after the overflow or the reopen
  for (const bool lost : {false, true}) {
    job.nErrCode = 0;
    platform.replies = {lost ? Bytes{} : kOverflow, Reply({10, 1})};
    EXPECT_EQ(1, SendSwath(0));
    EXPECT_EQ((lost ? Codes{4, 10} : Codes{4}), Sent());
    EXPECT_EQ(kSwathFree, slot.state);
    EXPECT_TRUE(HasLines(TakeLog(), {"Tx empty Swath12(0)", "Tx swathing... bur quit!"}));
  }
}

TEST_F(Exchange, EndsTheThreadWhenTheLinkIsGivenUp) {
  struct Case {
    std::uint8_t code, error;  // an error recorded before: the job is stopping
    std::uint32_t lastSleepMs;
    const char* firstLine;
  };
  for (const Case& expected :
       {Case{kCmdConnect, 0, 1000, "Tx Cmm 2-2(0)"}, Case{kCmdJobEnd, 26, 100, "Tx Cmm 5-5(0)"}}) {
    job.bTxRun = 1;
    job.bTxEnd = 0;
    job.nErrCode = expected.error;
    job.nCmdState = kMailIdle;
    platform.paths.clear();
    platform.boxes.clear();
    platform.failWriteAfter = 0;
    ASSERT_EQ(CommandPost::kPosted, CmdBuild(expected.code, job));
    TxTask(job);
    EXPECT_EQ(kMailFailed, job.nCmdState);
    EXPECT_EQ(1, job.bTxEnd);
    EXPECT_EQ(0, job.bTxRun);
    EXPECT_EQ(2u, platform.boxes.size());
    EXPECT_EQ(expected.lastSleepMs, platform.sleeps.back());
    EXPECT_TRUE(platform.written.empty());
    EXPECT_TRUE(HasLines(
        TakeLog(), {expected.firstLine, "Tx error:31", "send(CMM) fail!", "连接失败",
                    "Error: Can't link", "重新连接失败!", "Error: Can't link", "Task end(1)!"}));
  }
}

TEST_F(Exchange, ThreadEndsByJobEndCancelOrStop) {
  struct Case {
    std::uint8_t run, jobEnd, cancel;
    const char* log;
  };
  for (const Case& expected : {Case{0, 1, 1, "Task end(1)!\r\n"}, Case{1, 1, 1, "Task end(2)!\r\n"},
                               Case{1, 0, 1, "Task end(3)!\r\n"}}) {
    job.bTxRun = expected.run;
    job.bTxEnd = 0;
    job.bJobEndRx = expected.jobEnd;
    job.bPrnCancel = expected.cancel;
    TxTask(job);
    EXPECT_EQ(expected.log, TakeLog());
    EXPECT_EQ(1, job.bTxEnd);
  }
}

TEST_F(Exchange, CancelInTheReplyToAPollKeepsBackTheSwathOfTheSameTurn) {
  platform.nowMs += 1u << 30;  // no poll of another test is near
  job.queueStarted = job.bPauseSeen = 1;
  job.swathQueue[0].state = kSwathReady;  // one that only feeds
  platform.replies = {Reply({10, 1, 2, 0}), kTaken};
  TxTask(job);
  EXPECT_EQ((Codes{10}), Sent());
  EXPECT_EQ(kSwathReady, job.swathQueue[0].state);
  EXPECT_TRUE(HasLines(TakeLog(), {"Rx JOBS_CANCEL(1)", "Task end(3)!"}));
}

TEST_F(Exchange, StoppingJobStillSendsItsCommandsButNoSwath) {
  job.nErrCode = 26;
  job.queueStarted = 1;
  job.swathQueue[0].state = kSwathReady;
  ASSERT_EQ(CommandPost::kPosted, CmdBuild(kCmdJobEnd, job));
  platform.replies = {Reply({5, 1, 0, 0})};
  TxTask(job);
  EXPECT_EQ((Codes{5}), Sent());
  EXPECT_EQ(kMailDone, job.nCmdState);
  EXPECT_EQ(kSwathReady, job.swathQueue[0].state);
  EXPECT_TRUE(HasLines(TakeLog(), {"Rx 作业结束", "Task end(2)!"}));
}

}  // namespace
}  // namespace qrn
