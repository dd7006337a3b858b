// The platforms that run here: the system's own, and virtual time. And what cuts numbers.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <string>
#include <utility>

#include "platform/bytes.h"
#include "platform/fake_port.h"
#include "platform/posix/posix_platform.h"
#include "sim/sim_platform.h"

namespace qrn {
namespace {

TEST(TruncateLow16, IsDefinedForEveryNumber) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const auto& [value, wanted] : {std::pair{0.999, 0},
                                      {-0.999, 0},
                                      {65535.9, 65535},
                                      {65536.0, 0},
                                      {-1.0, 65535},
                                      {-65537.5, 65535},
                                      {4294967296.0 + 7, 7},
                                      {1e300, 0},
                                      {-1e300, 0},
                                      {kInfinity, 0},
                                      {-kInfinity, 0},
                                      {std::nan(""), 0}})
    EXPECT_EQ(wanted, TruncateLow16(value)) << value;
}

void ReadForEver(void* platform) {
  std::uint8_t packet[128];
  for (;;) (void)static_cast<Platform*>(platform)->BulkRead(1, packet, sizeof packet);
}

// What both do with a port: it lists an unreadable path and the path of one device.
void ListAndFail(Platform& platform, FakePort& port) {
  const char* path = nullptr;
  const UsbList list = platform.UsbListOpen();
  EXPECT_EQ(UsbPathStatus::kUnreadable, platform.UsbListPath(list, 0, &path));
  EXPECT_EQ(UsbPathStatus::kPath, platform.UsbListPath(list, 1, &path));
  EXPECT_EQ(1u, platform.DeviceOpen(path));
  EXPECT_EQ(UsbPathStatus::kEnd, platform.UsbListPath(list, 2, &path));
  EXPECT_EQ(0u, platform.DeviceOpen("two"));
  EXPECT_EQ(2u, platform.LastError());
  port.failWith = 31;
  EXPECT_FALSE(platform.BulkWrite(1, "", 1));
  EXPECT_EQ(31u, platform.LastError());
  platform.DeviceClose(1);
}

// Ends a thread in a read that never completes, and in reads that never make it wait.
void EndByForce(Platform& platform, FakePort& port, bool waits) {
  port.dueMs = platform.TickMs() + (waits ? 0x7FFFFFF0u : 0u);
  const ThreadHandle thread = platform.ThreadStart(ReadForEver, &platform);
  ASSERT_NE(0u, thread);
  while (port.reads == 0) platform.SleepMs(1);
  platform.ThreadTerminate(thread);
  const std::uint32_t reads = port.reads;  // nothing of the thread runs from here on
  platform.SleepMs(50);
  EXPECT_EQ(reads, port.reads);
  platform.ThreadRelease(thread);
}

class Posix : public testing::Test {
 protected:
  Posix() { platform.Plug(&port); }
  ~Posix() override { platform.Plug(nullptr); }
  FakePort port;
  PosixPlatform& platform = ThePosixPlatform();
};

TEST_F(Posix, ListsWhatIsPluggedInAndNothingElse) {
  ListAndFail(platform, port);
  platform.Plug(nullptr);
  const char* path = nullptr;
  std::uint8_t packet[128];
  EXPECT_EQ(UsbPathStatus::kEnd, platform.UsbListPath(platform.UsbListOpen(), 0, &path));
  EXPECT_EQ(0u, platform.DeviceOpen("one"));
  EXPECT_FALSE(platform.BulkWrite(1, "", 1));
  EXPECT_FALSE(platform.BulkRead(1, packet, sizeof packet));
  EXPECT_EQ(1167u, platform.LastError());
  platform.DeviceClose(1);
}

TEST_F(Posix, EndsAThreadByForceInWhateverItReads) {
  EndByForce(platform, port, true);
  port.reads = 0;
  EndByForce(platform, port, false);
}

TEST_F(Posix, WaitsForThePortAndForTheEndOfAThread) {
  port.dueMs = platform.TickMs() + 20;
  bool done = false;
  std::pair<Platform*, bool*> reader{&platform, &done};
  platform.ThreadRelease(platform.ThreadStart(
      [](void* argument) {
        const auto [self, read] = *static_cast<decltype(reader)*>(argument);
        std::uint8_t packet[128];
        *read = self->BulkRead(1, packet, sizeof packet);
      },
      &reader));
  EXPECT_TRUE(done);
  EXPECT_GE(static_cast<std::int32_t>(platform.TickMs() - port.dueMs), 0);
}

TEST_F(Posix, ShowsBoxesInUtf8WhereTheUserLooks) {
  std::string shown;
  platform.HandleBoxes(
      [](void* context, const char* text, const char* caption) {
        *static_cast<std::string*>(context) = std::string(caption) + ": " + text;
      },
      &shown);
  platform.ShowBox("\xB4\xF2\xD3\xA1 ok", "Tip");  // code page 936
  EXPECT_EQ("Tip: 打印 ok", shown);
  platform.HandleBoxes(nullptr, nullptr);
  testing::internal::CaptureStderr();
  platform.ShowBox("\xC4\xAB", "Tip");
  EXPECT_EQ("Tip: 墨\n", testing::internal::GetCapturedStderr());
}

TEST_F(Posix, SpeaksTheLanguageOfItsEnvironment) {
  constexpr const char* kNames[] = {"LC_ALL", "LC_MESSAGES", "LANG"};
  struct Case {
    const char* values[3];
    std::uint32_t primary;
  };
  for (const Case& c :
       {Case{{"", "", "zh"}, 4}, Case{{"", "", "za_CN"}, 9}, Case{{"", "", "ah"}, 9},
        Case{{"", "", ""}, 9}, Case{{"", "zh_TW", "en_US"}, 4}, Case{{"C", "zh_TW", "zh"}, 9}}) {
    for (std::size_t i = 0; i < 3; ++i) setenv(kNames[i], c.values[i], 1);
    EXPECT_EQ(c.primary, platform.SystemLocaleId() & 0xFFu) << c.values[0] << c.values[2];
  }
  for (const char* name : kNames) unsetenv(name);
  EXPECT_EQ(9u, platform.SystemLocaleId() & 0xFFu);
}

TEST_F(Posix, TellsLocalTime) {
  const std::time_t before = std::time(nullptr);
  const LocalTime now = platform.LocalTimeNow();
  std::tm parts{};
  parts.tm_year = now.year - 1900, parts.tm_mon = now.month - 1, parts.tm_mday = now.day;
  parts.tm_hour = now.hour, parts.tm_min = now.minute, parts.tm_sec = now.second;
  parts.tm_isdst = -1;
  const std::time_t told = std::mktime(&parts);
  EXPECT_LE(before, told);
  EXPECT_LE(told, std::time(nullptr));
}

using sim::SimOptions;
using sim::SimPlatform;

TEST(SimPlatform, ListsOpensAndCountsDevicesAndThreads) {
  FakePort port;
  SimOptions options;
  options.failThreadStart = true;
  SimPlatform platform(port, options);
  ListAndFail(platform, port);
  EXPECT_EQ(0u, platform.OpenDevices());
  EXPECT_EQ(1u, platform.DeviceOpen("one"));
  EXPECT_EQ(1u, platform.OpenDevices());
  EXPECT_EQ(0u, platform.ThreadStart(ReadForEver, &platform));
  for (const bool waits : {false, true}) {
    SimPlatform other(port, {});
    port.reads = 0;
    EndByForce(other, port, waits);
    EXPECT_EQ(0u, other.LiveThreads());
  }
}

// Two threads that note when they run: the order is the seed's.
std::string Interleaving(std::uint64_t seed) {
  FakePort port;
  SimOptions options;
  options.seed = seed;
  SimPlatform platform(port, options);
  std::pair<SimPlatform*, std::string> trace{&platform, ""};
  const ThreadHandle thread = platform.ThreadStart(
      [](void* argument) {
        auto& [self, text] = *static_cast<decltype(trace)*>(argument);
        for (int step = 0; step < 20; ++step, self->SleepMs(100)) text += 't';
      },
      &trace);
  for (int step = 0; step < 20; ++step, platform.SleepMs(100)) trace.second += 'h';
  platform.ThreadRelease(thread);
  return trace.second;
}

TEST(SimPlatform, IsTheSameRunForTheSameSeed) {
  std::size_t different = 0;
  for (std::uint64_t seed = 1; seed <= 10; ++seed) {
    EXPECT_EQ(Interleaving(seed), Interleaving(seed));
    different += Interleaving(seed) != Interleaving(seed + 1);
  }
  EXPECT_GE(different, 8u);
}

TEST(SimPlatform, MovesItsClockAcrossTheWrapAndTheYearUpToItsLimit) {
  FakePort port;
  SimOptions options;
  options.startTickMs = 0xFFFFFF00;
  options.startTime = {2024, 2, 28, 23, 59, 59};
  options.seed = 7;
  options.limitMs = 24 * 3600 * 1000 + 60'000;
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
  EXPECT_LT(platform.TickMs() - port.dueMs, 10u);
  // A run that never ends is the harness's to give up, on the host's thread, whichever one waits.
  const ThreadHandle thread = platform.ThreadStart(
      [](void* self) {
        for (;;) static_cast<SimPlatform*>(self)->SleepMs(40'000);
      },
      &platform);
  try {
    platform.ThreadRelease(thread);
    FAIL() << "waited for a thread that never ends";
  } catch (const sim::TimeLimitPassed& passed) {
    EXPECT_STREQ("the job is not over after 86460 s of virtual time: seed 7", passed.what());
  }
}

}  // namespace
}  // namespace qrn
