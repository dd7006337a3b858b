// What goes wrong on the link in the middle of a job, and how it comes right again or ends.
#include <algorithm>
#include <string>

#include "jobs/scene.h"

namespace {

// (12 bytes of line + 1984 x 4 / 4 of head distance) x 8 bits, (15968 + 4 x (256 + 902)) x 360 / 4,
// to the next 320: 229 chunks in 33 writes.
constexpr char kSwath1[] = "Tx Swath1(0) size:1854080", kSwath2[] = "Tx Swath2(0) size:1854080",
               kAgain2[] = "Tx Swath2(1) size:1854080", kSwath3[] = "Tx Swath3(0) size:1854080";
constexpr char kSent2[] = "Swath002 sended:1", kSent3[] = "Swath003 sended:1",
               kUnknown[] = "usb接收到不可识别数据包:4";

struct Fault {
  const char* name;
  std::vector<Spoiled> script;
  std::vector<Expected> log;
};

qrn::Bytes Swath(std::uint16_t ok, std::uint16_t state, std::uint16_t status) {
  return qrn::Reply({4, ok, state, status});
}

// 33 packets of 96 bytes that begin like a good reply; 31 of them fit into 3000 bytes.
std::vector<qrn::Bytes> OverlongReply() {
  std::vector<qrn::Bytes> packets(33, qrn::Packet(0xF004, 48, {}));
  packets.front() = qrn::Packet(0xF001, 48, qrn::Words({4, 1, 5, 0}));
  packets.back() = qrn::Packet(0xF002, 48, {});
  return packets;
}

void ExpectComesRight(const std::vector<Fault>& faults) {
  for (const Fault& fault : faults) {
    SCOPED_TRACE(fault.name);
    Scene scene;
    scene.script = fault.script;
    const Outcome outcome = Play(scene);
    EXPECT_TRUE(outcome.started && outcome.linesTaken && outcome.printedWhole);
    EXPECT_EQ("", outcome.violation);
    EXPECT_TRUE(outcome.boxes.empty());
    EXPECT_TRUE(Tells(outcome.log, fault.log));
  }
}

// A reopened device gets 200 ms, and a millisecond to answer the test in.
TEST(LinkFaults, FailedTransfersReopenTheDeviceAndRepeatTheMessage) {
  ExpectComesRight({
      {"packet not written",
       {{4, 2, Spoiled::kWriteFails}},
       {{0, kSwath2},
        {0, "Tx error:31"},
        {0, "send(CMM) fail!"},
        {0, "重新连接..."},
        {201, "连接1成功!"},
        {201, kSwath2},
        {202, kSent2},
        {203, kSwath3}}},
      {"first group not written",
       {{4, 2, Spoiled::kDataFails, 1}},
       {{0, kSwath2},
        {0, "Tx error:31"},
        {0, "数据发送异常:7/229"},
        {0, "send(DATA) fail!"},
        {0, "重新连接..."},
        {201, "连接1成功!"},
        {201, kSwath2},
        {202, kSent2}}},
      {"last group not written",
       {{4, 2, Spoiled::kDataFails, 33}},
       {{0, kSwath2},
        {0, "Tx error:31"},
        {0, "Last数据发送异常:229/229"},
        {0, "send(DATA) fail!"},
        {0, "重新连接..."},
        {201, "连接1成功!"},
        {201, kSwath2},
        {202, kSent2}}},
      {"replies not read, twice",
       {{4, 2, Spoiled::kReadFails, 0, {}, 2}},
       {{0, kSwath2},
        {1, "Rx error:31"},
        {1, "Rec fail!"},
        {1, "重新连接..."},
        {202, "连接1成功!"},
        {202, kSwath2},
        {203, "Rx error:31"},
        {203, "Rec fail!"},
        {203, "重新连接..."},
        {404, "连接2成功!"},
        {404, kSwath2},
        {405, kSent2}}},
      {"the reply to a command not read",
       {{3, 1, Spoiled::kReadFails}},
       {{0, "Tx Cmm 3-3(0)"},
        {1, "Rx error:31"},
        {1, "Rec fail!"},
        {1, "重新连接..."},
        {202, "连接1成功!"},
        {202, "Tx Cmm 3-3(0)"},
        {299, "Job start"}}},
      {"zeros and another code in front of the answer to the test",
       {{4, 2, Spoiled::kReadFails},
        {kAnswerTest, 1, Spoiled::kSays, 0, {qrn::Reply({0, 0, 7}), qrn::Reply({0, 1})}}},
       {{0, kSwath2},
        {1, "Rx error:31"},
        {1, "Rec fail!"},
        {1, "重新连接..."},
        {202, "连接1成功!"},
        {202, kSwath2},
        {203, kSent2}}},
      {"the test not answered, twice",
       {{4, 2, Spoiled::kReadFails}, {kAnswerTest, 1, Spoiled::kReadFails, 0, {}, 2}},
       {{0, kSwath2},
        {1, "Rx error:31"},
        {1, "Rec fail!"},
        {1, "重新连接..."},
        {202, "Rx error:31"},
        {202, "第1连接失败(error code:31),继续尝试连接..."},
        {4403, "Rx error:31"},
        {4403, "第2连接失败(error code:31),继续尝试连接..."},
        {9604, "连接1成功!"},
        {9604, kSwath2},
        {9605, kSent2}}},
      {"query not written: the swath finds the fault, or none",
       {{12, 2, Spoiled::kWriteFails}},
       {{0, "Swath001 sended:1"}, {0, "Tx error:31"}, {0, kSwath2}, {1, kSent2}}},
      {"answer to the query not read",
       {{12, 2, Spoiled::kReadFails}},
       {{0, "Swath001 sended:1"}, {1, "Rx error:31"}, {1, kSwath2}, {2, kSent2}}},
  });
}

TEST(LinkFaults, OddRepliesAreReadPastTakenAsFarAsTheyGoOrAskedForAgain) {
  ExpectComesRight({
      {"an unknown kind in front of each swath's reply",
       {{4, 1, Spoiled::kSaysFirst, 0, {qrn::Packet(0xF003, 4, {})}, 1000}},
       {{0, kSwath2}, {0, kUnknown}, {1, kSent2}, {2, kSwath3}, {2, kUnknown}, {3, kSent3}}},
      {"more words than a packet holds, and none, in front of a query's and a swath's",
       {{12, 2, Spoiled::kSaysFirst, 0, {qrn::Packet(0xF008, 49, {}), qrn::Reply({})}},
        {4, 2, Spoiled::kSaysFirst, 0, {qrn::Packet(0xF008, 49, {}), qrn::Reply({})}}},
       {{0, "Swath001 sended:1"}, {0, kUnknown}, {1, kSwath2}, {1, kUnknown}, {2, kSent2}}},
      {"ends behind the code",
       {{4, 2, Spoiled::kSays, 0, {qrn::Reply({4})}}},
       {{0, kSwath2}, {2, kAgain2}, {3, kSent2}}},
      {"ends behind the ok",
       {{4, 2, Spoiled::kSays, 0, {qrn::Reply({4, 1})}}},
       {{0, kSwath2}, {1, kSent2}, {2, kSwath3}}},
      {"too long",
       {{4, 2, Spoiled::kSays, 0, OverlongReply()}},
       {{0, kSwath2}, {1, "REC溢出"}, {1, "REC溢出"}, {1, kSent2}}},
      {"begun anew in the middle",
       {{4, 2, Spoiled::kSays, 0, {qrn::Packet(0xF001, 2, qrn::Words({9, 9})), Swath(1, 5, 0)}}},
       {{0, kSwath2}, {1, kSent2}}},
      {"others in front",
       {{4, 2, Spoiled::kSaysFirst, 0, {qrn::Reply({10, 1, 2, 0}), qrn::Reply({12, 1, 3})}}},
       {{0, kSwath2}, {1, kSent2}}},
      {"not taken",
       {{4, 2, Spoiled::kSays, 0, {Swath(0, 5, 3)}}},
       {{0, kSwath2}, {2, kAgain2}, {3, kSent2}}},
      {"spool overflow, twice",
       {{4, 2, Spoiled::kSays, 0, {Swath(0, 5, 7)}, 2}},
       {{0, kSwath2},
        {1, "Rx cmm spool overflow, sleep(3000)"},
        {3002, kAgain2},
        {3003, "Rx cmm spool overflow, sleep(3000)"},
        {6004, "Tx Swath2(2) size:1854080"},
        {6005, kSent2}}},
      {"100 ms late", {{4, 2, Spoiled::kLate, 100}}, {{0, kSwath2}, {100, "Swath002 sended:100"}}},
      {"101 ms late",
       {{4, 2, Spoiled::kLate, 101}},
       {{0, kSwath2}, {101, "hold:101"}, {101, "Swath002 sended:101"}}},
  });
}

// The attempts that fail from `ms` on; then the time of the next.
std::uint32_t AddAttempts(std::uint32_t count, std::uint32_t ms, std::vector<Expected>* log) {
  for (std::uint32_t attempt = 1; attempt <= count; ++attempt) {
    log->push_back({ms, "打印机设备未连接"});
    log->push_back(
        {ms, "第" + std::to_string(attempt) + "连接失败(error code:1167),继续尝试连接..."});
    ms += 3000 + 1000 * attempt;
  }
  return ms;
}

std::vector<Expected> LostAt(const char* swath) {
  return {{0, swath}, {1, "Rx error:1167"}, {1, "Rec fail!"}, {1, "重新连接..."}};
}

TEST(LinkFaults, AnAbsentDeviceIsLookedForSixTimesInThirtySeconds) {
  const std::uint32_t pauses[] = {4000, 5000, 6000, 7000, 8000};
  std::uint32_t away = 1;  // it is back a millisecond behind an attempt
  for (std::uint32_t failed = 1; failed <= 5; ++failed) {
    std::vector<Expected> log = LostAt(kSwath2);
    const std::uint32_t found = AddAttempts(failed, 1, &log) + 201;
    log.insert(log.end(), {{found, "连接1成功!"}, {found, kSwath2}, {found + 1, kSent2}});
    // Or at the very moment of the next one.
    const std::uint32_t latest = away - 1 + pauses[failed - 1];
    ExpectComesRight({{"just missed", {{4, 2, Spoiled::kLeaves, away}}, log},
                      {"just met", {{4, 2, Spoiled::kLeaves, latest}}, log}});
    away = latest + 1;
  }
  for (const bool chinese : {false, true}) {
    Scene scene;
    scene.script = {{4, 2, Spoiled::kLeaves, away}};
    scene.localeId = chinese ? 0x0C04 : 0x0809;
    const Outcome outcome = Play(scene);
    std::vector<Expected> log = LostAt(kSwath2);
    AddAttempts(5, 1, &log);
    // The swath has failed: the thread ends at once. The host polls five milliseconds ahead of it.
    log.insert(log.end(), {{30001, "打印机设备未连接"},
                           {30001, "连接失败"},
                           {30001, "Error: 17"},
                           {30501, "重新连接失败!"},
                           {30501, "Error: 17"},
                           {31001, "Task end(1)!"},
                           {31095, "All swath sended!"},
                           {31095, "jobend: *"}});
    EXPECT_TRUE(Tells(outcome.log, log, chinese));
    EXPECT_EQ(BoxesOf({17, 17}, chinese), outcome.boxes);
    EXPECT_EQ("", outcome.violation);
    EXPECT_EQ(2u, outcome.swathsTaken);
    EXPECT_FALSE(outcome.printedWhole);
  }
}

TEST(LinkFaults, ALastSwathThatIsLostEndsTheWaitForTheJobEnd) {
  Scene scene;
  scene.script = {{4, 4, Spoiled::kLeaves}};
  std::vector<Expected> log = LostAt("Tx Swath4(0) size:1854080");
  AddAttempts(5, 1, &log);
  log.push_back({91, "All swath sended!"});
  for (std::uint32_t ms = 91 + 3100; ms < 30000; ms += 3100)
    log.push_back({ms, "Cmm5 reply Waitting..."});
  std::stable_sort(log.begin(), log.end(),
                   [](const Expected& a, const Expected& b) { return a.ms < b.ms; });
  log.insert(log.end(), {{30001, "打印机设备未连接"},
                         {30001, "连接失败"},
                         {30001, "Error: 17"},
                         {30091, "Cmm(5) Quit:1-0-0-0"},
                         {30501, "重新连接失败!"},
                         {30501, "Error: 17"},
                         {31001, "Task end(1)!"},
                         {31091, "jobend: *"}});
  EXPECT_TRUE(Tells(Play(scene).log, log));
}

TEST(LinkFaults, AThreadThatDoesNotEndIsEndedByForceAfterTwentyOneSeconds) {
  const char* const kSkipped = "Job start without the end of this job: it is ended here";
  Scene silent;
  silent.script = {{4, 2, Spoiled::kSilent}};
  silent.hostNapMs = 1006;  // on the thread's own milliseconds
  silent.skipEndCall = true;
  EXPECT_TRUE(Tells(Play(silent).log, {{0, kSwath2},
                                       {1001, kSkipped},
                                       {22201, "强行退出TX线程,delay:20200ms"},
                                       {22201, "Tx task end delay:20200ms"},
                                       {22201, "Connect"}}));
  Scene away = silent;
  away.script = {{4, 2, Spoiled::kLeaves, 26'000}};
  std::vector<Expected> log = LostAt(kSwath2);
  AddAttempts(4, 1, &log);
  log.insert(log.begin() + 6, {1001, kSkipped});
  log.insert(log.end(), {{22001, "打印机设备未连接"},
                         {22001, "第5连接失败(error code:1167),继续尝试连接..."},
                         {22201, "强行退出TX线程,delay:20200ms"},
                         {22201, "Tx task end delay:20200ms"},
                         {22201, "打印机设备未连接"}});
  EXPECT_TRUE(Tells(Play(away).log, log));
}

}  // namespace
