// Jobs on real threads, hundreds in a row in one process, faults among them: for the thread
// sanitizer, and to see that nothing piles up.
//
// A good job lasts for 1.3 s: each command is seen at the next of the 100 ms polls, and the stop of
// the link gives the thread a second to end. So the hundreds run on a clock that is forty times as
// fast for the library, and a few jobs on the true one.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <random>
#include <string>

#include "jobs/holdings.h"
#include "jobs/job_runner.h"
#include "sim/real_time.h"
#include "support/forwarding_platform.h"
#include "support/log_text.h"
#include "support/test_seed.h"

namespace {

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

// Two lines of 48 pixels on the smallest machine: six swaths or less.
JobPlan SmallPlan(Watched* watched) {
  JobPlan plan;
  plan.machine.heads = qrn::sim::Heads::kPha;
  plan.machine.twoHeadCarriage = false;
  plan.machine.inkOrder[0] = {7, 6, 5, 4, 3, 2, 1, 0};
  plan.resolution = 1080;
  plan.widthPixels = 48;
  plan.lines = 2;
  plan.solid = {{0, 2}};
  plan.realTime = true;
  plan.watched = watched;
  return plan;
}

// `ms` of quirks are the printer's, on the true clock.
struct Fault {
  const char* quirk;  // "%" stands for a moment
  int moments;        // from 1
  bool printedWhole;
  int weight;
};
constexpr char kSilence[] = "silence:at=%";  // only the next start ends the job
constexpr Fault kFaults[] = {
    {"", 1, true, 8},
    {"unplug:msg=%,ms=3", 18, true, 6},
    {"unplug:msg=%,ms=150", 18, true, 3},
    {"unplug:msg=%", 18, false, 1},
    {"unplug:byte=%00000,ms=3", 20, true, 2},
    {"pause:at=%,ms=120", 5, true, 4},
    {"pause:at=%,ms=120,on=query", 5, true, 2},
    {"cancel:at=%", 5, false, 4},
    {"cancel:at=%,on=query", 5, false, 2},
    {"cancel:at=%,gone=1", 5, false, 2},
    {"buffer-full:at=%,count=6", 5, true, 4},
    {"refuse:on=swath,status=7,at=%,count=2", 5, true, 2},
    {"refuse:on=swath,status=2,at=%", 5, true, 2},
    {"refuse:on=connect,status=0x52,count=%", 3, true, 2},
    {"refuse:on=connect,status=%", 2, false, 2},
    {"write-fails:write=%", 30, true, 4},
    {"read-fails:read=%", 18, true, 4},
    {"late:msg=%,ms=10", 18, true, 2},
    {"garbage:form=kind,msg=%", 18, true, 2},
    {kSilence, 4, false, 2},
};

const Fault& DrawFault(std::mt19937_64& random) {
  int total = 0;
  for (const Fault& fault : kFaults) total += fault.weight;
  int left = static_cast<int>(random() % static_cast<std::uint64_t>(total));
  const Fault* fault = kFaults;
  while (left >= fault->weight) left -= fault++->weight;
  return *fault;
}

// Plays one job, drawn from the seed (how its threads meet is not). True when a fault was to befall
// it.
bool PlayOne(std::mt19937_64& random, Watched& watched) {
  const Fault& fault = DrawFault(random);
  std::string quirk = fault.quirk;
  const std::string moment =
      std::to_string(1 + random() % static_cast<std::uint64_t>(fault.moments));
  if (quirk.find('%') != std::string::npos) quirk.replace(quirk.find('%'), 1, moment);
  JobPlan plan = SmallPlan(&watched);
  plan.lineApi = random() % 2 == 0;
  plan.skipEndCall = fault.quirk == kSilence || random() % 16 == 0;
  if (plan.skipEndCall) plan.napMs = static_cast<std::uint32_t>(random() % 1000);
  if (random() % 16 == 0) plan.linesHanded = 1;
  SCOPED_TRACE(Describe(plan) + " with " + quirk);
  if (!quirk.empty()) {
    std::string error;
    plan.quirks.resize(1);
    EXPECT_TRUE(qrn::sim::ParseQuirk(quirk, &plan.quirks[0], &error)) << error;
  }
  const JobOutcome outcome = RunJob(plan);
  EXPECT_EQ("", outcome.violation);
  EXPECT_EQ(0, watched.devices);
  EXPECT_EQ(0, watched.threads);
  if (fault.printedWhole && !plan.skipEndCall && plan.linesHanded >= plan.lines) {
    EXPECT_EQ(0u, outcome.comparison.differingCells) << outcome.comparison.firstDifference;
    EXPECT_TRUE(outcome.boxes.empty());
    EXPECT_LE(1u, outcome.stats.jobsEnded);  // again when the answer was lost
  }
  return !quirk.empty();
}

TEST(RealThreads, HundredsOfJobsInARowLeaveNothingBehind) {
  constexpr int kJobs = QRN_JOBS_IN_A_ROW, kSpeed = 40;
  std::mt19937_64 random(TestSeed());
  Watched watched(kSpeed);
  const LogFolder folder;
  int faults = 0;
  const Holdings before;
  for (int i = 0; i < kJobs && !testing::Test::HasFailure(); ++i) {
    SCOPED_TRACE("job " + std::to_string(i));
    faults += PlayOne(random, watched);
  }
  before.ExpectTheSame();
  std::printf("%d jobs, %d with a fault, %d threads ended by force\n", kJobs, faults,
              watched.forced.load());
}

// On the true clock: the thread waits for a reply that never comes, the next start ends it after
// 21.2 s, and the jobs behind it print as if nothing had been.
TEST(RealThreads, AThreadThatNoReplyWakesIsEndedByForceAndTheNextJobPrints) {
  Watched watched(1);
  const LogFolder folder;
  const Holdings before;
  JobPlan plan = SmallPlan(&watched);
  plan.lineApi = true;  // the swaths flow before the end call
  plan.napMs = 1000;
  plan.skipEndCall = true;
  plan.quirks.resize(1);
  std::string error;
  ASSERT_TRUE(qrn::sim::ParseQuirk("silence:at=1", &plan.quirks[0], &error)) << error;
  EXPECT_EQ("", RunJob(plan).violation);
  EXPECT_EQ(1, watched.forced);
  const std::string log = CodePageToUtf8(folder.Logs().at(0));
  EXPECT_NE(std::string::npos, log.find("强行退出TX线程,delay:")) << log;
  EXPECT_NE(std::string::npos, log.find("Tx task end delay:")) << log;
  plan.skipEndCall = false;
  plan.quirks.clear();
  for (int job = 0; job < 3; ++job) {
    const JobOutcome outcome = RunJob(plan);
    EXPECT_EQ("", outcome.violation);
    EXPECT_EQ(0u, outcome.comparison.differingCells) << outcome.comparison.firstDifference;
  }
  EXPECT_EQ(1, watched.forced);
  EXPECT_EQ(0, watched.devices);
  EXPECT_EQ(0, watched.threads);
  before.ExpectTheSame();
}

}  // namespace
