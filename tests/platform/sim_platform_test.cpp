// Virtual time: what waits, what runs, and that a seed tells all.
#include "sim/sim_platform.h"

#include <gtest/gtest.h>

#include "platform/fake_port.h"

namespace qrn::sim {
namespace {

// Two threads that note when they run.
struct Trace {
  SimPlatform* platform;
  std::string text;
};

void Steps(void* argument) {
  auto* trace = static_cast<Trace*>(argument);
  for (int step = 0; step < 20; ++step) {
    trace->text += 't';
    trace->platform->SleepMs(100);
  }
}

std::string Interleaving(std::uint64_t seed) {
  FakePort port;
  SimOptions options;
  options.seed = seed;
  SimPlatform platform(port, options);
  Trace trace{&platform, ""};
  const ThreadHandle thread = platform.ThreadStart(Steps, &trace);
  for (int step = 0; step < 20; ++step) {
    trace.text += 'h';
    platform.SleepMs(100);
  }
  platform.ThreadRelease(thread);
  return trace.text;
}

TEST(SimPlatform, IsTheSameRunForTheSameSeed) {
  std::size_t different = 0;
  for (std::uint64_t seed = 1; seed <= 10; ++seed) {
    const std::string run = Interleaving(seed);
    EXPECT_EQ(40u, run.size());
    EXPECT_EQ(run, Interleaving(seed));
    different += run != Interleaving(seed + 1);
  }
  EXPECT_GE(different, 8u);
}

TEST(SimPlatform, MovesItsClockAcrossTheWrapAndTheYear) {
  FakePort port;
  SimOptions options;
  options.startTickMs = 0xFFFFFF00;
  options.startTime = {2024, 2, 28, 23, 59, 59};
  SimPlatform platform(port, options);
  platform.SleepMs(1000);
  EXPECT_EQ(744u, platform.TickMs());
  EXPECT_EQ(29, platform.LocalTimeNow().day);
  EXPECT_EQ(0, platform.LocalTimeNow().hour);
  platform.SleepMs(24 * 3600 * 1000);
  EXPECT_EQ(3, platform.LocalTimeNow().month);
  port.dueMs = platform.TickMs() + 5000;
  std::uint8_t packet[128];
  EXPECT_TRUE(platform.BulkRead(1, packet, sizeof packet));
  EXPECT_LE(port.dueMs, platform.TickMs());
  EXPECT_GT(port.dueMs + 10, platform.TickMs());
}

// In a read that never completes, and in reads that never make it wait.
TEST(SimPlatform, EndsAThreadByForceInWhateverItReads) {
  for (const std::uint32_t dueMs : {0x7FFFFFFFu, 0u}) {
    FakePort port;
    port.dueMs = dueMs;
    SimPlatform platform(port, {});
    const ThreadHandle thread = platform.ThreadStart(
        [](void* argument) {
          std::uint8_t packet[128];
          for (;;) (void)static_cast<SimPlatform*>(argument)->BulkRead(1, packet, sizeof packet);
        },
        &platform);
    platform.SleepMs(1000);
    EXPECT_GT(port.reads, 50u);
    EXPECT_EQ(1u, platform.LiveThreads());
    platform.ThreadTerminate(thread);
    platform.ThreadRelease(thread);
    const std::uint32_t reads = port.reads;
    platform.SleepMs(1000);
    EXPECT_EQ(reads, port.reads);
    EXPECT_EQ(0u, platform.LiveThreads());
  }
}

// A run that never ends is the harness's to give up, on the host's thread, whichever thread waits.
TEST(SimPlatform, GivesUpARunThatPassesItsLimit) {
  FakePort port;
  SimOptions options;
  options.seed = 7;
  options.limitMs = 60'000;
  SimPlatform platform(port, options);
  const ThreadHandle thread = platform.ThreadStart(
      [](void* argument) {
        for (;;) static_cast<SimPlatform*>(argument)->SleepMs(40'000);
      },
      &platform);
  platform.SleepMs(60'000);
  try {
    platform.ThreadRelease(thread);
    FAIL() << "waited for a thread that never ends";
  } catch (const TimeLimitPassed& passed) {
    EXPECT_STREQ("the job is not over after 60 s of virtual time: seed 7", passed.what());
  }
}

TEST(SimPlatform, ListsOpensAndCountsDevices) {
  FakePort port;
  SimOptions options;
  options.failThreadStart = true;
  SimPlatform platform(port, options);
  const UsbList list = platform.UsbListOpen();
  const char* path = nullptr;
  EXPECT_EQ(UsbPathStatus::kUnreadable, platform.UsbListPath(list, 0, &path));
  EXPECT_EQ(UsbPathStatus::kPath, platform.UsbListPath(list, 1, &path));
  EXPECT_EQ(UsbPathStatus::kEnd, platform.UsbListPath(list, 2, &path));
  EXPECT_EQ(0u, platform.DeviceOpen("two"));
  EXPECT_EQ(2u, platform.LastError());
  EXPECT_EQ(1u, platform.DeviceOpen("one"));
  EXPECT_EQ(1u, platform.OpenDevices());
  port.failWith = 31;
  EXPECT_FALSE(platform.BulkWrite(1, "", 1));
  EXPECT_EQ(31u, platform.LastError());
  platform.DeviceClose(1);
  EXPECT_EQ(0u, platform.OpenDevices());
  EXPECT_EQ(0u, platform.ThreadStart(Steps, nullptr));
}

}  // namespace
}  // namespace qrn::sim
