// The platforms that run here: the system's own, and virtual time. And what cuts numbers.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <string>
#include <utility>

#include "base/bytes.h"
#include "platform/posix/posix_platform.h"
#include "platform/usb_port.h"
#include "sim/time/sim_platform.h"

namespace qrn {
namespace {

TEST(TruncateLow16, IsDefinedForEveryNumber) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  const std::pair<double, int> cases[] = {
      {0.999, 0},    {-0.999, 0},       {65535.9, 65535},      {65536.0, 0},
      {-1.0, 65535}, {-65537.5, 65535}, {4294967296.0 + 7, 7}, {1e300, 0},
      {-1e300, 0},   {kInfinity, 0},    {-kInfinity, 0},       {std::nan(""), 0}};
  for (const auto& [value, wanted] : cases) EXPECT_EQ(wanted, TruncateLow16(value)) << value;
}

// One device, whose transfers complete, fail or wait as told.
class FakePort : public UsbPort {
 public:
  std::uint32_t dueMs = 0;     // reads complete from this tick on
  std::uint32_t failWith = 0;  // not 0: writes fail with it
  std::atomic<std::uint32_t> reads = 0;

  bool Listable(std::uint32_t) override { return true; }
  const char* PathAt(std::uint32_t index, std::uint32_t) override {
    return index == 0 ? "" : index == 1 ? "one" : nullptr;
  }
  std::uint32_t Open(const char*, std::uint32_t, std::uint32_t*) override { return 1; }
  void Close(std::uint32_t, std::uint32_t) override {}
  UsbStep Write(std::uint32_t, const std::uint8_t*, std::uint32_t, std::uint32_t) override {
    return failWith != 0 ? UsbStep{UsbStep::kFailed, failWith} : UsbStep{UsbStep::kDone, 0};
  }
  UsbStep Read(std::uint32_t, std::uint8_t*, std::uint32_t, std::uint32_t nowMs) override {
    ++reads;
    const bool due = static_cast<std::int32_t>(nowMs - dueMs) >= 0;
    return due ? UsbStep{UsbStep::kDone, 0} : UsbStep{UsbStep::kWait, nowMs + 10};
  }
};

void ReadForEver(void* platform) {
  std::uint8_t packet[128];
  for (;;) (void)static_cast<Platform*>(platform)->BulkRead(1, packet, sizeof packet);
}

// Ends a thread in a read that never completes, and in reads that never make it wait.
void EndByForce(Platform& platform, FakePort& port, bool waits) {
  port.dueMs = platform.TickMs() + (waits ? 0x7FFFFFF0u : 0u);
  port.reads = 0;
  const ThreadHandle thread = platform.ThreadStart(ReadForEver, &platform);
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
  const char* path = nullptr;
  EXPECT_EQ(UsbPathStatus::kUnreadable, platform.UsbListPath(1, 0, &path));
  EXPECT_EQ(UsbPathStatus::kPath, platform.UsbListPath(1, 1, &path));
  EXPECT_EQ(1u, platform.DeviceOpen(path));
  port.failWith = 31;
  EXPECT_FALSE(platform.BulkWrite(1, "", 1));
  EXPECT_EQ(31u, platform.LastError());
  platform.Plug(nullptr);
  std::uint8_t packet[128];
  EXPECT_FALSE(platform.BulkWrite(1, "", 1));
  EXPECT_FALSE(platform.BulkRead(1, packet, sizeof packet));
  EXPECT_EQ(1167u, platform.LastError());
  platform.DeviceClose(1);
  EXPECT_EQ(UsbPathStatus::kEnd, platform.UsbListPath(platform.UsbListOpen(), 0, &path));
  EXPECT_EQ(0u, platform.DeviceOpen("one"));
}

TEST_F(Posix, EndsAThreadByForceInWhateverItReads) {
  EndByForce(platform, port, true);
  EndByForce(platform, port, false);
}

TEST_F(Posix, CountsMillisecondsAndWaitsForThePortAndForTheEndOfAThread) {
  const auto now = [] {
    const auto since = std::chrono::steady_clock::now().time_since_epoch();
    return Low32(std::chrono::duration_cast<std::chrono::milliseconds>(since).count());
  };
  const std::uint32_t before = now(), told = platform.TickMs();
  EXPECT_LE(told - before, now() - before);
  port.dueMs = told + 20;
  port.reads = 0;
  const ThreadHandle thread = platform.ThreadStart(
      [](void* self) {
        std::uint8_t packet[128];
        (void)static_cast<Platform*>(self)->BulkRead(1, packet, sizeof packet);
      },
      &platform);
  platform.ThreadRelease(thread);
  EXPECT_GT(port.reads, 1u);
  EXPECT_GE(static_cast<std::int32_t>(platform.TickMs() - port.dueMs), 0);
  const std::uint32_t start = platform.TickMs();
  platform.SleepMs(20);
  EXPECT_LE(20u, platform.TickMs() - start);
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
  const auto speak = [this](const char* all, const char* messages, const char* lang) {
    setenv("LC_ALL", all, 1), setenv("LC_MESSAGES", messages, 1), setenv("LANG", lang, 1);
    return platform.SystemLocaleId();
  };
  EXPECT_EQ(0x0804u, speak("", "", "zh"));
  EXPECT_EQ(0x0409u, speak("", "", "za_CN"));
  EXPECT_EQ(0x0409u, speak("", "", "ah"));
  EXPECT_EQ(0x0409u, speak("", "", ""));
  EXPECT_EQ(0x0804u, speak("", "zh_TW", "en_US"));
  EXPECT_EQ(0x0409u, speak("C", "zh_TW", "zh_CN"));
}

TEST_F(Posix, TellsLocalTime) {
  const std::time_t before = std::time(nullptr);
  const LocalTime now = platform.LocalTimeNow();
  std::tm parts = *std::localtime(&before);  // for daylight saving
  parts.tm_year = now.year - 1900, parts.tm_mon = now.month - 1, parts.tm_mday = now.day;
  parts.tm_hour = now.hour, parts.tm_min = now.minute, parts.tm_sec = now.second;
  const std::time_t told = std::mktime(&parts);
  EXPECT_LE(before, told);
  EXPECT_LE(told, std::time(nullptr));
}

TEST(SimPlatform, CountsWhatIsLeft) {
  FakePort port;
  for (const bool waits : {false, true}) {
    sim::SimPlatform platform(port, {});
    EndByForce(platform, port, waits);
    EXPECT_EQ(0u, platform.LiveThreads());
    EXPECT_NE(0u, platform.ThreadStart(ReadForEver, &platform));
    EXPECT_EQ(1u, platform.LiveThreads());  // goes with the platform
    EXPECT_EQ(1u, platform.DeviceOpen("one"));
    EXPECT_EQ(1u, platform.OpenDevices());
    platform.DeviceClose(1);
    EXPECT_EQ(0u, platform.OpenDevices());
  }
}

TEST(SimPlatform, GivesUpARunThatPassesItsLimitWhicheverThreadWaits) {
  FakePort port;
  sim::SimOptions options;
  options.limitMs = 60'000;
  sim::SimPlatform platform(port, options);
  platform.SleepMs(60'000);
  const ThreadHandle thread = platform.ThreadStart(
      [](void* self) {
        for (;;) static_cast<Platform*>(self)->SleepMs(40'000);
      },
      &platform);
  EXPECT_THROW(platform.ThreadRelease(thread), sim::TimeLimitPassed);
}

}  // namespace
}  // namespace qrn
