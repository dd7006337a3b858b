// Finding and opening the printer, and finding it again.
#include "link/reconnect.h"
#include "link/replies.h"
#include "link/usb_device.h"
#include "platform/shared.h"
#include "support/job_fixture.h"

namespace qrn {
namespace {

class Device : public JobFixture {
 protected:
  Device() { SetUsbIds(job); }
};

constexpr const char* kPrinter = "\\\\?\\usb#VID_5E3C&Pid_A71D#1";

TEST_F(Device, IsTheFirstPathWithBothIdentifiersThatOpens) {
  struct Case {
    const char* name;
    std::vector<std::string> paths;
    std::string opened;  // "" = none
  };
  const std::string farAway = std::string(250, 'x') + "pid_a71d vid_5e3c";
  const std::string atTheEdge = std::string(239, 'x') + "pid_a71dvid_5e3c and more";
  const std::string cutByOne = 'x' + atTheEdge;
  for (const Case& expected : {
           Case{"upper case, other order", {"mouse", kPrinter}, kPrinter},
           Case{"one identifier only", {"vid_5e3c", "pid_a71d"}, ""},
           Case{"first is held by another program", {"held pid_a71d vid_5e3c", kPrinter}, kPrinter},
           Case{"details unreadable", {"", kPrinter}, kPrinter},
           Case{"two printers",
                {"pid_a71d#vid_5e3c#1", "pid_a71d#vid_5e3c#2"},
                "pid_a71d#vid_5e3c#1"},
           Case{"identifiers behind character 255", {farAway}, ""},
           Case{"identifiers that end at character 255", {atTheEdge}, atTheEdge},
           Case{"identifiers that end at character 256", {cutByOne}, ""},
           Case{"nothing there", {}, ""},
       }) {
    SCOPED_TRACE(expected.name);
    platform.paths = expected.paths;
    platform.opened.clear();
    EXPECT_EQ(expected.opened.empty() ? 0 : 1, UsbOpen(job));
    EXPECT_EQ(expected.opened.empty(), job.hDevice == 0);
    if (!expected.opened.empty()) {
      EXPECT_EQ(expected.opened, platform.opened.at(0));
    }
    EXPECT_EQ(expected.opened.empty() ? "打印机设备未连接\r\n\r\n" : "", TakeLog());
    EXPECT_LE(platform.openCount, 1u);  // the one before was closed
  }
  platform.listable = false;
  EXPECT_EQ(0, UsbOpen(job));
  EXPECT_EQ("ERROR   -   SetupDiGetClassDevs()\r\nUSB设备未连接\r\n\r\n", TakeLog());
  UsbClose(job);
  UsbClose(job);
  EXPECT_EQ(0u, platform.openCount);
}

TEST_F(Device, IsGivenUpAfterSixAttemptsWithGrowingPauses) {
  EXPECT_EQ(0, LinkReconnect(job));
  EXPECT_EQ((std::vector<std::uint32_t>{4000, 5000, 6000, 7000, 8000}), platform.sleeps);
  EXPECT_EQ(17, job.nErrCode);
  EXPECT_EQ(1u, platform.boxes.size());
  EXPECT_TRUE(HasLines(
      TakeLog(),
      {"\r\n重新连接...\r\n", "第1连接失败(error code:31),继续尝试连接...", "第2连接失败(",
       "第3连接失败(", "第4连接失败(", "第5连接失败(", "连接失败\r\r\n", "Error: Can't link"}));
}

TEST_F(Device, IsFoundAgainWhenItAnswersTheTest) {
  platform.onSleep = [this] {
    if (platform.sleeps.back() == 4000) platform.paths = {kPrinter};
  };
  platform.replies = {Reply({0, 0, 10}), Reply({10, 1})};  // the empty one is read past
  EXPECT_EQ(1, LinkReconnect(job));
  EXPECT_EQ((std::vector<std::uint32_t>{4000, 200}), platform.sleeps);
  EXPECT_TRUE(platform.replies.empty());
  ASSERT_EQ(1u, platform.written.size());
  EXPECT_EQ(10, platform.written[0][32]);
  for (std::size_t i = 33; i < 126; ++i) EXPECT_EQ(0, platform.written[0][i]);
  platform.replies = {Packet(0xF003, 1, {})};  // no known packet, but the printer did answer
  EXPECT_TRUE(UsbLinkCheck(job));
  // It opens, but does not answer: that is a failed attempt too, and every attempt closes what it
  // opened.
  platform.sleeps.clear();
  EXPECT_EQ(0, LinkReconnect(job));
  EXPECT_EQ(11u, platform.sleeps.size());
  EXPECT_EQ(1u, platform.openCount);
  UsbClose(job);
}

}  // namespace
}  // namespace qrn
