// Whole jobs on a printer that misbehaves: what the host sees, and what is on the paper in the end.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "jobs/job_runner.h"
#include "sim/sim_platform.h"
#include "support/log_text.h"
#include "support/test_seed.h"

namespace {

using qrn::sim::ParseQuirk;
using qrn::sim::Quirk;
using qrn::sim::QuirkScript;

QuirkScript Script(const std::string& text) {
  Quirk quirk;
  std::string error;
  EXPECT_TRUE(ParseQuirk(text, &quirk, &error)) << error;
  return {quirk};
}

struct Fault {
  const char* quirk;
  bool started;                  // PP_Init's result
  bool printedWhole;             // every cell has its ink in the end
  std::size_t boxes;             // shown to the user
  std::uint32_t elapsedMsMin;    // virtual time that the fault costs at least
  std::vector<const char*> log;  // lines that must stand in the log, in this order
};

class Faults : public testing::TestWithParam<Fault> {};

TEST_P(Faults, HaveTheirOutcome) {
  const LogFolder folder;
  JobPlan plan;
  plan.lineApi = true;
  plan.seed = TestSeed();
  plan.quirks = Script(GetParam().quirk);
  const JobOutcome outcome = RunJob(plan);
  EXPECT_EQ(GetParam().started, outcome.started);
  EXPECT_EQ("", outcome.violation);
  EXPECT_EQ(GetParam().boxes, outcome.boxes.size());
  EXPECT_GE(outcome.elapsedMs, GetParam().elapsedMsMin);
  if (GetParam().started) {
    EXPECT_EQ(GetParam().printedWhole, outcome.comparison.differingCells == 0)
        << outcome.comparison.firstDifference;
  }
  const std::string log = CodePageToUtf8(folder.Logs().at(0));
  std::size_t at = 0;
  for (const char* line : GetParam().log) {
    const std::size_t found = log.find(line, at);
    ASSERT_NE(std::string::npos, found) << line << " in\n" << log;
    at = found + 1;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Printer, Faults,
    testing::Values(Fault{"refuse:on=connect,count=3,status=0x54",
                          true,
                          true,
                          0,
                          6000,
                          {"Rx 打印机未进入工作状态: 4-5 ", "Rx 打印机未进入工作状态: 4-5 ",
                           "Job start", "Rx 作业结束", "jobend: "}},
                    Fault{"refuse:on=connect,count=1,status=0x21",
                          false,
                          false,
                          0,
                          0,
                          {"Rx 打印机未进入工作状态: 1-2 ", "FW错误 REPLY FAIL", "指令(2)执行失败",
                           "jobend: "}},
                    Fault{"buffer-full:at=2,count=25",
                          true,
                          true,
                          0,
                          12000,
                          {"Fw buffer wait 5s...", "Fw buffer wait 5s..."}},
                    Fault{"refuse:on=swath,status=7,at=2,count=2",
                          true,
                          true,
                          0,
                          6000,
                          {"Rx cmm spool overflow, sleep(3000)", "Tx Swath2(1) size:",
                           "Rx cmm spool overflow, sleep(3000)", "Tx Swath2(2) size:"}},
                    Fault{"pause:at=3,ms=9000",
                          true,
                          true,
                          0,
                          4000,
                          {"CMM1: Pause-1, Cancel-0",
                           "Rx JOBS_Pause, size:", "CMM1: Pause-0, Cancel-0", "Rx 作业结束"}},
                    Fault{
                        "cancel:at=3", true, false, 0, 0, {"Cancel-1", "Task end(3)!", "jobend: "}},
                    Fault{"unplug:msg=12,ms=5500",
                          true,
                          true,
                          0,
                          4000,
                          {"重新连接...", "第1连接失败(", "连接1成功!", "Rx 作业结束"}},
                    Fault{"unplug:msg=12",
                          true,
                          false,
                          2,
                          30000,
                          {"第5连接失败(", "连接失败", "Error: Can't link", "重新连接失败!",
                           "Error: Can't link", "Task end(1)!"}}));

TEST(SkippedEnd, TheNextStartEndsTheJobAndTheOneAfterPrints) {
  const LogFolder folder;
  JobPlan plan;
  plan.skipEndCall = true;
  const JobOutcome skipped = RunJob(plan);
  EXPECT_EQ("", skipped.violation);
  EXPECT_EQ(0u, skipped.stats.jobsEnded);
  const std::vector<std::string> logs = folder.Logs();
  ASSERT_EQ(2u, logs.size());
  EXPECT_NE(std::string::npos, logs[0].find("without the end of this job"));
  EXPECT_NE(std::string::npos, logs[0].find("mem: free --"));
  EXPECT_EQ(std::string::npos, logs[1].find("Swath"));

  plan.skipEndCall = false;
  const JobOutcome next = RunJob(plan);
  EXPECT_EQ("", next.violation);
  EXPECT_EQ(0u, next.comparison.differingCells) << next.comparison.firstDifference;
}

// The old job's thread waits for room that never comes, and is told to leave: left alone it would
// be ended by force after twenty seconds.
TEST(SkippedEnd, CallsTheThreadOffAPrinterWithoutRoom) {
  const LogFolder folder;
  JobPlan plan;
  plan.skipEndCall = true;
  plan.quirks = Script("buffer-full:at=1,count=1000");
  const JobOutcome outcome = RunJob(plan);
  EXPECT_EQ("", outcome.violation);
  EXPECT_LT(outcome.elapsedMs, 3000u);  // both starts included
  const std::string log = CodePageToUtf8(folder.Logs().at(0));
  EXPECT_EQ(std::string::npos, log.find("强行退出TX线程")) << log;
  EXPECT_NE(std::string::npos, log.find("Task end(1)!")) << log;
}

TEST(ShortImage, OfALineHostEndsWithoutAFlush) {
  const LogFolder folder;
  JobPlan plan;
  plan.lineApi = true;
  plan.linesHanded = 100;
  plan.solid = {{0, 500}};
  const JobOutcome outcome = RunJob(plan);
  EXPECT_EQ("", outcome.violation);
  EXPECT_EQ(1u, outcome.stats.jobsEnded);
  EXPECT_EQ(0u, outcome.stats.swaths);
  EXPECT_EQ(std::string::npos, folder.Logs().at(0).find("Rip last swath"));
}

// In a process of its own: what the library had begun stays behind.
TEST(TimeLimit, EndsAJobThatWaitsForTooLong) {
  const LogFolder folder;
  JobPlan plan;
  plan.seed = 5;
  plan.limitMs = 60'000;
  plan.quirks = Script("pause:at=2,ms=3600000");
  const auto run = [&plan] {
    try {
      RunJob(plan);
    } catch (const qrn::sim::TimeLimitPassed& passed) {
      std::fputs(passed.what(), stderr);
      std::_Exit(3);
    }
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(3), "not over after 60 s of virtual time: seed 5");
}

TEST(Replay, TheSameSeedGivesTheSameBytesAndTheSameLog) {
  JobPlan plan;
  plan.seed = TestSeed();
  plan.quirks = Script("unplug:msg=9,ms=5000");
  std::vector<std::vector<std::uint8_t>> transfers[2];
  std::string logs[2];
  for (int run = 0; run < 2; ++run) {
    const LogFolder folder;
    transfers[run] = RunJob(plan).transfers;
    logs[run] = folder.Logs().at(0);
  }
  EXPECT_TRUE(Unnumbered(transfers[0]) == Unnumbered(transfers[1]));
  EXPECT_EQ(logs[0], logs[1]);
}

}  // namespace
