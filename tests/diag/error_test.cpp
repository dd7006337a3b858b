#include <cstring>
#include <iterator>

#include "diag/driver_error.h"
#include "diag/error_texts.h"
#include "support/job_fixture.h"
#include "support/log_text.h"

namespace qrn {
namespace {

using Errors = JobFixture;

// By code. The address is the printer's own.
struct Texts {
  const char *chinese, *english;
};
const Texts kTexts[] = {
    {"无错误", "No error"},
    {"IP地址异常,请将IP设为:192.168.0.10", "IP error, please set as:192.168.0.10"},
    {"打印参数未初始化", "The parametre used without initalize"},
    {"打印参数不可识别", "The parametre isn't validble"},
    {"打印范围溢出，超出最大值", "Overflow print width"},
    {"数据缓冲溢出，超出最大值", "Overflow data buffer"},
    {"无可打印资源", "None print data"},
    {"接收错误", "Rx error"},
    {"发送错误", "Tx error"},
    {"用户取消作业(在PC端)", "Pc user cancel job"},
    {"用户取消作业(在打印机端)", "Printer user cancel job"},
    {"小车受阻", "Carrier stall"},
    {"PC未能与打印机通信,请检查网线", "Can't link from printer"},
    {"打印资源无法初始化,Init()失败", "Function init() error"},
    {"获取数据源GetImageByPass()失败", "Function GetImageByPass() error"},
    {"打印模式GetJobColors()不支持", "Not support this print mode"},
    {"无法建立sock网络连接", "No sock link"},
    {"无法重新建立网络连接", "Can't link"},
    {"HR_PRINTER_ERROR", "HR_PRINTER_ERROR"},
    {"HR_JOB_RESTART_ERROR", "HR_JOB_RESTART_ERROR"},
    {"HR_QUEUE_MANAGE_ERROR", "HR_QUEUE_MANAGE_ERROR"},
    {"HR_SWATH_SN_ERROR", "HR_SWATH_SN_ERROR"},
    {"HR_LOG_FILE_ERROR", "HR_LOG_FILE_ERROR"},
    {"HR_UART1_FAIL_ERROR", "HR_UART1_FAIL_ERROR"},
    {"HR_DMA_DONE_HOLD_ERROR", "HR_DMA_DONE_HOLD_ERROR"},
    {"HR_CARRIER_RESET_ERROR", "HR_CARRIER_RESET_ERROR"},
    {"打印机错误,取消作业", "Printer error,Cancel job"},
    {"HR_MAIN_DELAY_ERROR", "HR_MAIN_DELAY_ERROR"},
    {"#周期#参数设置异常,请设为2000，保存后并重启打印机",
     "#Period# error, please set 2000, save and reset printer!"},
    {"纵轴校准值异常", "Vertical axis value invalid!"},
    {"机型与打印驱动不匹配,请检查程序版本与驱动版本",
     "Printer unmatch with this driver,please check!"},
    {"无法连接打印设备，请确认\n\n         USB连线是否正确?\n\n         USB驱动是否安装成功?\n\n   "
     "      打印机是否已经上电?",
     "Device link fail!, please check:\r\n         Is cable link right?\r\n         Have usb "
     "driver installed?\r\n         Is printer power on now?"},
    {"驱动或打印模式设置异常!", "Driver or rip mode invalid!"},
    {"驱动安装或颜色曲线加载异常!", "Corvane driver color setup error!"},
    {"驱动与打印机颜色设置不匹配!", "Driver's wave mod is unmatch with printer!"},
    {"墨序设置异常", "Color list set error!"},
};

TEST_F(Errors, AreShownAndLoggedInTheLanguageOfTheSystem) {
  const std::string english = kTexts[31].english, chinese = kTexts[31].chinese;
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

TEST_F(Errors, HaveTheirTextInEachLanguageAndASlotFilledWithZeros) {
  static_assert(std::size(kTexts) == kErrorCodes);
  for (std::uint32_t code = 0; code < kErrorCodes; ++code) {
    for (const bool chinese : {false, true}) {
      char slot[kErrorSlotBytes];
      std::memset(slot, '#', sizeof slot);
      CopyErrorText(code, chinese, slot);
      ASSERT_EQ(0, slot[kErrorSlotBytes - 1]);
      EXPECT_EQ(chinese ? kTexts[code].chinese : kTexts[code].english, CodePageToUtf8(slot));
      const std::size_t length = std::char_traits<char>::length(slot);
      for (std::size_t i = length; i < sizeof slot; ++i) ASSERT_EQ(0, slot[i]);
    }
  }
  ShowError(36);  // beyond the tables: an empty box, nothing recorded
  EXPECT_EQ("", platform.boxes.back().first);
  EXPECT_EQ(0, job.nErrCode);
}

}  // namespace
}  // namespace qrn
