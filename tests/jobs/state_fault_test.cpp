// Pauses, cancels and full buffers that the printer reports in the middle of a job, each where it
// can be reported.
#include <string>

#include "jobs/scene.h"

namespace {

constexpr char kSwath2[] = "Tx Swath2(0) size:1854080", kSwath3[] = "Tx Swath3(0) size:1854080",
               kSwath4[] = "Tx Swath4(0) size:1854080";
constexpr char kPaused[] = "CMM1: Pause-1, Cancel-0", kGoesOn[] = "CMM1: Pause-0, Cancel-0",
               kCancelled[] = "CMM1: Pause-0, Cancel-1", kPoll[] = "Tx Cmm 10-A(0)";

qrn::Bytes State(std::uint16_t code, std::uint16_t ok, std::uint16_t state) {
  return qrn::Reply({code, ok, state, 0, 0, 0xAB, 0x12, 0xCD});
}

qrn::Bytes Room(std::uint16_t state, std::uint16_t high) {
  return qrn::Reply({12, 1, state, 0, 0, high});
}

// A pause with the machine's own section of the parameters, but for the shift of reverse passes.
qrn::Bytes PauseWithUpdate(std::uint16_t code, std::uint8_t shift1440) {
  const auto block = qrn::sim::ParameterBlock({});
  qrn::Bytes reply = qrn::Words({code, 1, 3, 0, 0, 0, 0x1122});
  reply.insert(reply.end(), block.begin() + 8, block.begin() + 78);
  reply[14 + 42 - 8] = shift1440;
  return qrn::Packet(0xF008, 42, reply);
}

struct Case {
  const char* name;
  std::vector<Spoiled> script;
  std::vector<Expected> log;
  std::uint32_t hostNapMs = 0;
  bool allPlanes = false;
  std::uint32_t farLine = 0;
};

std::vector<Outcome> PlayAll(const std::vector<Case>& cases) {
  std::vector<Outcome> outcomes;
  for (const Case& expected : cases) {
    SCOPED_TRACE(expected.name);
    Scene scene;
    scene.script = expected.script;
    scene.hostNapMs = expected.hostNapMs;
    scene.allPlanes = expected.allPlanes;
    scene.farLine = expected.farLine;
    outcomes.push_back(Play(scene));
    EXPECT_TRUE(outcomes.back().started);
    EXPECT_EQ("", outcomes.back().violation);
    EXPECT_TRUE(outcomes.back().boxes.empty());
    EXPECT_TRUE(Tells(outcomes.back().log, expected.log));
  }
  return outcomes;
}

TEST(Pauses, HoldTheThreadForTwoSecondsAndArePolledUntilTheJobGoesOn) {
  for (const Outcome& outcome : PlayAll({
           {"in the reply to a swath",
            {{4, 2, Spoiled::kSays, 0, {State(4, 1, 3)}}},
            {{0, kSwath2},
             {1, kPaused},
             {1, "Rx JOBS_Pause, size:16, AB-12-CD"},
             {2001, "Swath002 sended:2001"},
             {2001, kPoll},
             {2002, kGoesOn},
             {2003, kSwath3}}},
           {"in one that ends behind the status",
            {{4, 2, Spoiled::kSays, 0, {qrn::Reply({4, 1, 3, 0})}}},
            {{0, kSwath2},
             {1, kPaused},
             {1, "Rx JOBS_Pause, size:8, 0-0-0"},
             {2001, "Swath002 sended:2001"},
             {2001, kPoll},
             {2002, kGoesOn},
             {2003, kSwath3}}},
           {"with new parameters, then with the same again",
            {{4, 2, Spoiled::kSays, 0, {PauseWithUpdate(4, 40)}},
             {10, 1, Spoiled::kSays, 0, {PauseWithUpdate(10, 40)}},
             {10, 2, Spoiled::kSays, 0, {PauseWithUpdate(10, 32)}}},
            {{0, kSwath2},
             {1, kPaused},
             {1, "Rx JOBS_Pause, size:84, 0-1122-0"},
             {1, "Update fw para:40,2540"},
             {2001, "Swath002 sended:2001"},
             {2001, kPoll},
             {2002, "Rx JOBS_Pause, size:84, 0-1122-0"},
             {4003, kGoesOn},
             {4003, kSwath3}}},
           // Nothing is left to send: the polls alone remain.
           {"polls that say nothing",
            {{4, 4, Spoiled::kSays, 0, {State(4, 1, 3)}},
             {10, 1, Spoiled::kSays, 0, {State(10, 1, 1)}, 3}},
            {{0, kSwath4},
             {1, kPaused},
             {1, "Rx JOBS_Pause, size:16, AB-12-CD"},
             {2001, "Swath004 sended:2001"},
             {2001, kPoll},
             {3502, kPoll},
             {5003, kPoll},
             {6504, kPoll},
             {6505, kGoesOn}},
            10'000},
           {"polls that find it paused",
            {{4, 4, Spoiled::kSays, 0, {State(4, 1, 3)}},
             {10, 1, Spoiled::kSays, 0, {State(10, 1, 3)}, 2}},
            {{0, kSwath4},
             {1, kPaused},
             {1, "Rx JOBS_Pause, size:16, AB-12-CD"},
             {2001, "Swath004 sended:2001"},
             {2001, kPoll},
             {2002, "Rx JOBS_Pause, size:16, AB-12-CD"},
             {4102, kPoll},
             {4103, "Rx JOBS_Pause, size:16, AB-12-CD"},
             {6203, kPoll},
             {6204, kGoesOn}},
            10'000},
           {"in the answer to a buffer query",
            {{12, 2, Spoiled::kSays, 0, {Room(3, 0)}, 2}},
            {{0, "Swath001 sended:1"}, {1, kPaused}, {1003, kGoesOn}, {1003, kSwath2}}},
           {"in the answer to a buffer query that tells of room",
            {{12, 2, Spoiled::kSays, 0, {Room(3, 0xFF)}}},
            {{0, "Swath001 sended:1"},
             {1, kPaused},
             {1, kSwath2},
             {2, kGoesOn},
             {2, "Swath002 sended:1"}}},
       })) {
    EXPECT_TRUE(outcome.printedWhole);
  }
}

TEST(Cancels, EndTheJobWhereverTheyAreReported) {
  for (const Outcome& outcome : PlayAll({
           {"in the reply to a swath",
            {{4, 2, Spoiled::kSays, 0, {State(4, 1, 2)}}},
            {{0, kSwath2},
             {1, kCancelled},
             {1, "Rx JOBS_CANCEL(1)"},
             {1, "Swath002 sended:1"},
             {1, "Task end(3)!"},
             {95, "All swath sended!"},
             {95, "jobend: *"}}},
           {"by a job that is gone",
            {{4, 2, Spoiled::kSays, 0, {State(4, 1, 0)}}},
            {{0, kSwath2},
             {1, "Rx op取消作业"},
             {1, kCancelled},
             {1, "Swath002 sended:1"},
             {1, "Task end(3)!"},
             {95, "All swath sended!"},
             {95, "jobend: *"}}},
           {"in the reply to a poll",
            {{4, 2, Spoiled::kSays, 0, {State(4, 1, 3)}},
             {10, 1, Spoiled::kSays, 0, {State(10, 1, 2)}}},
            {{0, kSwath2},
             {1, kPaused},
             {1, "Rx JOBS_Pause, size:16, AB-12-CD"},
             {2001, "Swath002 sended:2001"},
             {2001, kPoll},
             {2002, kCancelled},
             {2002, "Rx JOBS_CANCEL(1)"},
             {2095, "All swath sended!"},
             {2095, "Cmm(5) Quit:1-0-0-1"},
             {2102, "Task end(3)!"},
             {3095, "jobend: *"}}},
           {"in the answer to a buffer query",
            {{12, 2, Spoiled::kSays, 0, {Room(2, 0)}}},
            {{0, "Swath001 sended:1"},
             {1, "CMM1: Pause-1, Cancel-1"},
             {1, "Tx swathing... bur quit!"},
             {1, "Task end(3)!"},
             {96, "All swath sended!"},
             {96, "jobend: *"}}},
           {"in one that ends behind the status",
            {{12, 2, Spoiled::kSays, 0, {qrn::Reply({12, 1, 2, 0})}}},
            {{0, "Swath001 sended:1"},
             {1, "CMM1: Pause-1, Cancel-1"},
             {1, "Tx swathing... bur quit!"},
             {1, "Task end(3)!"}}},
           // Passes are 90 lines apart and four meet each line: four between the two are blank.
           {"in the reply to a swath that only feeds, which is never taken",
            {{4, 5, Spoiled::kSays, 0, {State(4, 0, 2)}, 1'000'000}},
            {{0, "Tx empty Swath5(0)  steps:7200"},
             {1, kCancelled},
             {1, "Rx JOBS_CANCEL(1)"},
             {1, "Tx swathing... bur quit!"},
             {1, "Task end(3)!"}},
            0,
            false,
            720},
           // The job goes on for a moment: what was reported once is told the printer.
           {"and taken back",
            {{4, 2, Spoiled::kSays, 0, {State(4, 1, 3)}},
             {10, 1, Spoiled::kSays, 0, {State(10, 0, 2)}},
             {10, 2, Spoiled::kSays, 0, {State(10, 1, 4)}}},
            {{0, kSwath2},
             {1, kPaused},
             {1, "Rx JOBS_Pause, size:16, AB-12-CD"},
             {2001, "Swath002 sended:2001"},
             {2001, kPoll},
             {2002, kCancelled},
             {2002, "Rx JOBS_CANCEL(1)"},
             {2002, "Tx Cmm 10-A(1)"},
             {2003, kGoesOn},
             {2004, kSwath3},
             {2005, "Swath003 sended:1"},
             {2005, "Tx Cmm 9-9(0)"},
             {2006, kCancelled},
             {2006, "RxOP 取消作业"},
             {2095, "All swath sended!"},
             {2095, "Cmm(5) Quit:1-0-0-1"},
             {2106, "Task end(3)!"},
             {3095, "jobend: *"}}},
           {"while the host waits for a slot",
            {{12, 1, Spoiled::kSays, 0, {Room(5, 0)}, 2}, {12, 3, Spoiled::kSays, 0, {Room(2, 0)}}},
            {{0, "Job start"},
             {1005, "CMM1: Pause-1, Cancel-1"},
             {1005, "Tx swathing... bur quit!"},
             {1005, "Task end(3)!"},
             {1100, "Get Pc buffer... bur quit!"},
             {1100, "Wait swath Queue sended.1-0-5"},
             {1100, "All swath sended!"},
             {1100, "jobend: *"}},
            0,
            true},
       })) {
    EXPECT_FALSE(outcome.printedWhole);
  }
}

TEST(FullBuffers, AreAskedAgainEveryHalfSecondAndHoldTheHostBack) {
  std::vector<Expected> waits = {
      {0, "Job start"}, {5000, "PC buffer wait..."}, {5012, "Fw buffer wait 5s..."}};
  std::uint32_t ms = 2 + 12 * 501 + 1;
  for (int swath = 1; swath <= 5; ++swath, ms += 2) {
    const std::string number = std::to_string(swath);
    waits.push_back({ms, "Tx Swath" + number + "(0) size:1854080"});
    waits.push_back({ms + 1, "Swath00" + number + " sended:1"});
  }
  waits.push_back({6100, "PC overflow: 6100"});
  for (const Outcome& outcome : PlayAll({
           {"room at the 22nd query",
            {{12, 2, Spoiled::kSays, 0, {Room(5, 0)}, 21}},
            {{0, "Swath001 sended:1"},
             {5010, "Fw buffer wait 5s..."},
             {10020, "Fw buffer wait 5s..."},
             {10522, kSwath2}}},
           {"six slots are full", {{12, 1, Spoiled::kSays, 0, {Room(5, 0)}, 12}}, waits, 0, true},
       })) {
    EXPECT_TRUE(outcome.printedWhole);
  }
}

}  // namespace
