#include "platform/posix/posix_platform.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "platform/fake_port.h"

namespace qrn {
namespace {

class Posix : public testing::Test {
 protected:
  Posix() { platform.Plug(&port); }
  ~Posix() override { platform.Plug(nullptr); }
  FakePort port;
  PosixPlatform& platform = ThePosixPlatform();
};

TEST_F(Posix, ListsWhatIsPluggedInAndNothingElse) {
  const char* path = nullptr;
  const UsbList list = platform.UsbListOpen();
  EXPECT_EQ(UsbPathStatus::kUnreadable, platform.UsbListPath(list, 0, &path));
  EXPECT_EQ(UsbPathStatus::kPath, platform.UsbListPath(list, 1, &path));
  EXPECT_EQ(1u, platform.DeviceOpen(path));
  port.failWith = 31;
  EXPECT_FALSE(platform.BulkWrite(1, "", 1));
  EXPECT_EQ(31u, platform.LastError());
  platform.Plug(nullptr);
  EXPECT_EQ(UsbPathStatus::kEnd, platform.UsbListPath(list, 0, &path));
  EXPECT_NE(0u, platform.UsbListOpen());
  EXPECT_FALSE(platform.BulkWrite(1, "", 1));
  platform.DeviceClose(1);
  EXPECT_EQ(0u, platform.DeviceOpen("one"));
  std::uint8_t packet[128];
  EXPECT_FALSE(platform.BulkRead(1, packet, sizeof packet));
}

struct Reader {
  PosixPlatform* platform;
  std::atomic<int> state{0};
};

// In a read that never completes, and in reads that never make it wait.
TEST_F(Posix, EndsAThreadByForceInWhateverItReads) {
  for (const std::uint32_t dueMs : {platform.TickMs() + 0x7FFFFFF0, platform.TickMs()}) {
    port.dueMs = dueMs;
    Reader reader{&platform};
    const ThreadHandle thread = platform.ThreadStart(
        [](void* argument) {
          auto* self = static_cast<Reader*>(argument);
          std::uint8_t packet[128];
          for (;;) {
            self->state = 1;
            (void)self->platform->BulkRead(1, packet, sizeof packet);
          }
        },
        &reader);
    ASSERT_NE(0u, thread);
    while (reader.state == 0) platform.SleepMs(1);
    platform.ThreadTerminate(thread);
    const std::uint32_t reads = port.reads;  // nothing of the thread runs from here on
    platform.SleepMs(50);
    EXPECT_EQ(reads, port.reads);
    platform.ThreadRelease(thread);
  }
}

TEST_F(Posix, WaitsForThePortAndForTheEndOfAThread) {
  port.dueMs = platform.TickMs() + 20;
  Reader reader{&platform};
  const ThreadHandle thread = platform.ThreadStart(
      [](void* argument) {
        auto* self = static_cast<Reader*>(argument);
        std::uint8_t packet[128];
        self->state = self->platform->BulkRead(1, packet, sizeof packet) ? 3 : 4;
      },
      &reader);
  platform.ThreadRelease(thread);
  EXPECT_EQ(3, reader.state);
  EXPECT_GE(static_cast<std::int32_t>(platform.TickMs() - port.dueMs), 0);
}

TEST_F(Posix, SleepsNoLessThanItIsAskedTo) {
  const std::uint32_t start = platform.TickMs();
  platform.SleepMs(20);
  EXPECT_GE(platform.TickMs() - start, 19u);  // the clock shows whole milliseconds
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
       {Case{{"", "", "zh_CN.UTF-8"}, 4}, Case{{"", "", "zh"}, 4}, Case{{"", "", "en_US"}, 9},
        Case{{"", "", "za_CN"}, 9}, Case{{"", "", "ah"}, 9}, Case{{"", "", ""}, 9},
        Case{{"", "zh_TW", "en_US"}, 4}, Case{{"C", "zh_TW", "zh_CN"}, 9}}) {
    for (std::size_t i = 0; i < 3; ++i) setenv(kNames[i], c.values[i], 1);
    EXPECT_EQ(c.primary, platform.SystemLocaleId() & 0xFFu) << c.values[0] << c.values[2];
  }
  for (const char* name : kNames) unsetenv(name);
  EXPECT_EQ(9u, platform.SystemLocaleId() & 0xFFu);
}

TEST_F(Posix, TellsLocalTimeAndWhatExists) {
  const std::time_t before = std::time(nullptr);
  const LocalTime now = platform.LocalTimeNow();
  std::tm parts{};
  parts.tm_year = now.year - 1900, parts.tm_mon = now.month - 1, parts.tm_mday = now.day;
  parts.tm_hour = now.hour, parts.tm_min = now.minute, parts.tm_sec = now.second;
  parts.tm_isdst = -1;
  const std::time_t told = std::mktime(&parts);
  EXPECT_LE(before, told);
  EXPECT_LE(told, std::time(nullptr));
  EXPECT_TRUE(platform.PathExists("/"));
  EXPECT_FALSE(platform.PathExists("/no such file"));
}

}  // namespace
}  // namespace qrn
