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
#include "sim/compare.h"
#include "sim/real_time.h"
#include "sim/virtual_printer.h"
#include "support/forwarding_platform.h"
#include "support/log_folder.h"
#include "support/log_text.h"
#include "support/test_seed.h"

namespace {

using scenarios::Scenario;

// Counts what the library holds, on a clock that runs `speed` times as fast as the true one.
class Watched final : public qrn::ForwardingPlatform {
 public:
  explicit Watched(std::uint32_t speed)
      : ForwardingPlatform(qrn::sim::RealTimePlatform()), speed_(speed) {}

  std::atomic<int> devices = 0, threads = 0, forced = 0;

  std::uint32_t TickMs() override { return ForwardingPlatform::TickMs() * speed_; }
  void SleepMs(std::uint32_t ms) override {
    ForwardingPlatform::SleepMs((ms + speed_ - 1) / speed_);
  }
  qrn::DeviceHandle DeviceOpen(const char* path) override {
    const qrn::DeviceHandle device = ForwardingPlatform::DeviceOpen(path);
    devices += device != 0;
    return device;
  }
  void DeviceClose(qrn::DeviceHandle device) override {
    ForwardingPlatform::DeviceClose(device);
    --devices;
  }
  qrn::ThreadHandle ThreadStart(void (*procedure)(void*), void* argument) override {
    const qrn::ThreadHandle thread = ForwardingPlatform::ThreadStart(procedure, argument);
    threads += thread != 0;
    return thread;
  }
  void ThreadTerminate(qrn::ThreadHandle thread) override {
    ForwardingPlatform::ThreadTerminate(thread);
    ++forced;
  }
  void ThreadRelease(qrn::ThreadHandle thread) override {
    ForwardingPlatform::ThreadRelease(thread);
    --threads;
  }

 private:
  std::uint32_t speed_;
};

// Plays the plan on real threads; nothing may be held after it.
void Play(const Scenario& plan, Watched& watched) {
  SCOPED_TRACE(TextOf(plan));
  qrn::sim::VirtualPrinter printer(plan.machine, plan.quirks);
  std::atomic<int> boxes = 0;
  qrn::sim::PlugIntoRealTime(&printer, [&boxes](const std::string&) { ++boxes; });
  qrn::UsePlatform(&watched);
  scenarios::Host host([](const std::string&) {});
  const scenarios::Page page = host.Print(plan.jobs[0]);
  const bool isWhole = host.LinesTaken() == page.Lines() && plan.jobs.size() == 1;
  for (std::size_t i = 1; i < plan.jobs.size(); ++i) host.Print(plan.jobs[i]);
  qrn::UsePlatform(nullptr);
  qrn::sim::PlugIntoRealTime(nullptr, nullptr);
  EXPECT_EQ("", printer.Violation());
  EXPECT_EQ(0, watched.devices);
  EXPECT_EQ(0, watched.threads);
  const Fate fate = FateOf(plan);
  if (!isWhole || fate.mayFail || fate.mayCancel || fate.mayLose) return;
  EXPECT_EQ(0, boxes);
  EXPECT_LE(1u, printer.Stats().jobsEnded);  // again when the answer was lost
  const auto found = Compare(page, printer.CurrentPaper(), plan.machine, printer.ResolutionX());
  EXPECT_EQ(0u, found.differingCells) << found.firstDifference;
}

TEST(RealThreads, HundredsOfJobsInARowLeaveNothingBehind) {
  constexpr int kJobs = QRN_JOBS_IN_A_ROW, kSpeed = 40;
  Watched watched(kSpeed);
  const LogFolder folder;
  const Holdings before;
  const std::uint64_t seed = TestSeed();
  for (std::uint64_t i = 0; i < kJobs && !testing::Test::HasFailure(); ++i)
    Play(DrawPlan("small plan", seed + i), watched);
  before.ExpectTheSame();
}

// On the true clock: the thread waits for a reply that never comes, the next start ends it after
// 21.2 s, and the job behind it prints as if nothing had been.
TEST(RealThreads, AThreadThatNoReplyWakesIsEndedByForceAndTheNextJobPrints) {
  Watched watched(1);
  const LogFolder folder;
  const Holdings before;
  Play(DrawPlan("hang", 1), watched);
  EXPECT_EQ(1, watched.forced);
  const std::string log = CodePageToUtf8(folder.Logs().at(0));
  EXPECT_NE(std::string::npos, log.find("强行退出TX线程,delay:")) << log;
  Scenario good;
  good.lines = {"job line 48x700 1440 random", "machine flash_interval=2"};
  std::string error;
  ASSERT_TRUE(Understand(&good, &error)) << error;
  Play(good, watched);  // in more passes than the queue has slots
  EXPECT_EQ(1, watched.forced);
  before.ExpectTheSame();
}

}  // namespace
