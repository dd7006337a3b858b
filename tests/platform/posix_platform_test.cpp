#include "platform/posix/posix_platform.h"

#include <gtest/gtest.h>

#include <atomic>

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
  EXPECT_EQ(0u, platform.DeviceOpen("one"));
  std::uint8_t packet[128];
  EXPECT_FALSE(platform.BulkRead(1, packet, sizeof packet));
}

struct Reader {
  PosixPlatform* platform;
  std::atomic<int> state{0};
};

TEST_F(Posix, EndsAThreadByForceInAReadThatNeverCompletes) {
  port.dueMs = platform.TickMs() + 0x7FFFFFF0;
  Reader reader{&platform};
  const ThreadHandle thread = platform.ThreadStart(
      [](void* argument) {
        auto* self = static_cast<Reader*>(argument);
        self->state = 1;
        std::uint8_t packet[128];
        (void)self->platform->BulkRead(1, packet, sizeof packet);
        self->state = 2;
      },
      &reader);
  ASSERT_NE(0u, thread);
  while (reader.state == 0) platform.SleepMs(1);
  platform.ThreadTerminate(thread);
  const int reads = port.reads;  // nothing of the thread runs from here on
  EXPECT_EQ(1, reader.state);
  platform.SleepMs(50);
  EXPECT_EQ(reads, port.reads);
  platform.ThreadRelease(thread);
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

}  // namespace
}  // namespace qrn
