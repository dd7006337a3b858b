// Jobs on real threads, hundreds in a row in one process, faults among them: for the thread
// sanitizer, and to see that nothing piles up.
//
// A good job lasts for 1.3 s: each command is seen at the next of the 100 ms polls, and the stop of
// the link gives the thread a second to end. So the hundreds run on a clock that is forty times as
// fast for the library, and two jobs on the true one.
#include <gtest/gtest.h>

#include <atomic>
#include <string>

#include "jobs/holdings.h"
#include "jobs/plan.h"
#include "scenarios/host.h"
#include "sim/proof/compare.h"
#include "sim/time/real_time.h"
#include "sim/virtual_printer.h"
#include "support/forwarding_platform.h"
#include "support/log_folder.h"
#include "support/log_text.h"
#include "support/test_seed.h"

namespace {

using scenarios::Scenario;

// A clock that runs `speed` times as fast as the true one.
class Hurried final : public qrn::ForwardingPlatform {
 public:
  explicit Hurried(std::uint32_t speed)
      : ForwardingPlatform(qrn::sim::RealTimePlatform()), speed_(speed) {}
  std::uint32_t TickMs() override { return ForwardingPlatform::TickMs() * speed_; }
  void SleepMs(std::uint32_t ms) override {
    ForwardingPlatform::SleepMs((ms + speed_ - 1) / speed_);
  }

 private:
  std::uint32_t speed_;
};

// Plays the plan on real threads; nothing may be held after it.
void Play(const Scenario& plan, Hurried& clock) {
  SCOPED_TRACE(TextOf(plan));
  qrn::sim::VirtualPrinter printer(plan.machine, plan.quirks);
  std::atomic<int> boxes = 0;
  qrn::sim::PlugIntoRealTime(&printer, [&boxes](const std::string&) { ++boxes; });
  qrn::UsePlatform(&clock);
  scenarios::Host host([](const std::string&) {});
  const scenarios::Page page = host.Print(plan.jobs[0]);
  const bool isWhole = host.LinesTaken() == page.Lines() && plan.jobs.size() == 1;
  for (std::size_t i = 1; i < plan.jobs.size(); ++i) host.Print(plan.jobs[i]);
  qrn::UsePlatform(nullptr);
  qrn::sim::PlugIntoRealTime(nullptr, nullptr);
  EXPECT_EQ("", printer.Violation());
  EXPECT_FALSE(printer.Stats().open);
  const Fate fate = FateOf(plan);
  if (!isWhole || fate.mayFail || fate.mayCancel || fate.mayLose) return;
  EXPECT_EQ(0, boxes);
  EXPECT_LE(1u, printer.Stats().jobsEnded);  // again when the answer was lost
  const auto found = Compare(page, printer.CurrentPaper(), plan.machine, printer.ResolutionX());
  EXPECT_EQ(0u, found.differingCells) << found.firstDifference;
}

TEST(RealThreads, HundredsOfJobsInARowLeaveNothingBehind) {
  constexpr int kJobs = QRN_JOBS_IN_A_ROW, kSpeed = 40;
  Hurried clock(kSpeed);
  const LogFolder folder;
  const Holdings before;
  const std::uint64_t seed = TestSeed();
  for (std::uint64_t i = 0; i < kJobs && !testing::Test::HasFailure(); ++i)
    Play(DrawPlan("small plan", seed + i), clock);
  before.ExpectTheSame();
}

// On the true clock: the thread waits for a reply that never comes, the next start ends it after
// 21.2 s, and the next job prints as if nothing had happened.
TEST(RealThreads, AThreadThatNoReplyWakesIsEndedByForceAndTheNextJobPrints) {
  Hurried clock(1);
  const LogFolder folder;
  const Holdings before;
  Play(DrawPlan("hang", 1), clock);
  Scenario good;
  good.lines = {"job line 48x700 1440 random", "machine flash_interval=2"};
  std::string error;
  ASSERT_TRUE(Understand(&good, &error)) << error;
  Play(good, clock);  // in more passes than the queue has slots
  const std::vector<std::string> logs = LogFolder::Logs();
  const auto isForced = [&logs](std::size_t log) {
    return CodePageToUtf8(logs.at(log)).find("强行退出TX线程,delay:") != std::string::npos;
  };
  EXPECT_TRUE(isForced(0));
  EXPECT_FALSE(isForced(logs.size() - 1));
  before.ExpectTheSame();
}

}  // namespace
