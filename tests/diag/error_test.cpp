#include "diag/driver_error.h"
#include "diag/error_texts.h"
#include "support/job_fixture.h"
#include "support/log_text.h"

namespace qrn {
namespace {

using Errors = JobFixture;

TEST_F(Errors, AreShownAndLoggedInTheLanguageOfTheSystem) {
  const std::string english =
      "Device link fail!, please check:\r\n         Is cable link right?\r\n         Have usb "
      "driver installed?\r\n"
      "         Is printer power on now?";
  const std::string chinese =
      "无法连接打印设备，请确认\n\n         USB连线是否正确?\n\n         USB驱动是否安装成功?\n\n  "
      "       打印机是否已经上电?";
  struct Case {
    std::uint32_t locale;
    const std::string& text;
  };
  for (const Case& expected : {Case{0x0409, english}, Case{0x0804, chinese}, Case{0x0404, chinese},
                               Case{0x0411, english}}) {
    platform.localeId = expected.locale;
    platform.boxes.clear();
    RaiseError(31);
    ASSERT_EQ(1u, platform.boxes.size());
    EXPECT_EQ(expected.text, CodePageToUtf8(platform.boxes[0].first));
    EXPECT_EQ("Tip", platform.boxes[0].second);
    const std::string log = TakeLog();
    EXPECT_TRUE(HasLines(log, {"Error: " + expected.text.substr(0, 12)}));
    EXPECT_EQ(log.find("Error: "), log.rfind("Error: "));
    EXPECT_EQ(31, job.nErrCode);
  }
}

TEST_F(Errors, KeepALostLinkWhateverComesBehindIt) {
  RaiseError(3);
  EXPECT_EQ(3, job.nErrCode);
  RaiseError(17);
  EXPECT_EQ(17, job.nErrCode);
  RaiseError(26);
  EXPECT_EQ(17, job.nErrCode);
  ASSERT_EQ(3u, platform.boxes.size());
  EXPECT_EQ("Printer error,Cancel job", platform.boxes[2].first);
}

TEST_F(Errors, HaveATextForEveryCodeThatFitsItsSlot) {
  for (const bool chinese : {false, true}) {
    for (std::uint32_t code = 0; code < kErrorCodes; ++code) {
      char slot[kErrorSlotBytes];
      CopyErrorText(code, chinese, slot);
      const std::size_t length = std::char_traits<char>::length(slot);
      EXPECT_GT(length, 0u) << code;
      EXPECT_EQ(0, slot[kErrorSlotBytes - 1]);
      for (std::size_t i = length; i < sizeof slot; ++i) ASSERT_EQ(0, slot[i]);
      EXPECT_EQ(std::string::npos, CodePageToUtf8(slot).find("??")) << code;
    }
  }
  ShowError(36);  // beyond the tables: an empty box, nothing recorded
  EXPECT_EQ("", platform.boxes.back().first);
  EXPECT_EQ(0, job.nErrCode);
}

}  // namespace
}  // namespace qrn
