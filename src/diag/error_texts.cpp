#include "diag/error_texts.h"

#include <cstring>
#include <iterator>

#include "diag/code_page.h"

namespace qrn {
namespace {

// The printer's fixed network address, which text 1 ends with, is 192.168.0.10.
constexpr const char* kErrorTextChinese[] = {
    "无错误",
    "IP地址异常,请将IP设为:192.168.0.10",
    "打印参数未初始化",
    "打印参数不可识别",
    "打印范围溢出，超出最大值",
    "数据缓冲溢出，超出最大值",
    "无可打印资源",
    "接收错误",
    "发送错误",
    "用户取消作业(在PC端)",
    "用户取消作业(在打印机端)",
    "小车受阻",
    "PC未能与打印机通信,请检查网线",
    "打印资源无法初始化,Init()失败",
    "获取数据源GetImageByPass()失败",
    "打印模式GetJobColors()不支持",
    "无法建立sock网络连接",
    "无法重新建立网络连接",
    "HR_PRINTER_ERROR",
    "HR_JOB_RESTART_ERROR",
    "HR_QUEUE_MANAGE_ERROR",
    "HR_SWATH_SN_ERROR",
    "HR_LOG_FILE_ERROR",
    "HR_UART1_FAIL_ERROR",
    "HR_DMA_DONE_HOLD_ERROR",
    "HR_CARRIER_RESET_ERROR",
    "打印机错误,取消作业",
    "HR_MAIN_DELAY_ERROR",
    "#周期#参数设置异常,请设为2000，保存后并重启打印机",
    "纵轴校准值异常",
    "机型与打印驱动不匹配,请检查程序版本与驱动版本",
    "无法连接打印设备，请确认\n\n         USB连线是否正确?\n\n         USB驱动是否安装成功?\n\n    "
    "     打印机是否已经上电?",
    "驱动或打印模式设置异常!",
    "驱动安装或颜色曲线加载异常!",
    "驱动与打印机颜色设置不匹配!",
    "墨序设置异常",
};
constexpr const char* kErrorTextEnglish[] = {
    "No error",
    "IP error, please set as:192.168.0.10",
    "The parametre used without initalize",
    "The parametre isn't validble",
    "Overflow print width",
    "Overflow data buffer",
    "None print data",
    "Rx error",
    "Tx error",
    "Pc user cancel job",
    "Printer user cancel job",
    "Carrier stall",
    "Can't link from printer",
    "Function init() error",
    "Function GetImageByPass() error",
    "Not support this print mode",
    "No sock link",
    "Can't link",
    "HR_PRINTER_ERROR",
    "HR_JOB_RESTART_ERROR",
    "HR_QUEUE_MANAGE_ERROR",
    "HR_SWATH_SN_ERROR",
    "HR_LOG_FILE_ERROR",
    "HR_UART1_FAIL_ERROR",
    "HR_DMA_DONE_HOLD_ERROR",
    "HR_CARRIER_RESET_ERROR",
    "Printer error,Cancel job",
    "HR_MAIN_DELAY_ERROR",
    "#Period# error, please set 2000, save and reset printer!",
    "Vertical axis value invalid!",
    "Printer unmatch with this driver,please check!",
    "Device link fail!, please check:\r\n         Is cable link right?\r\n         Have usb driver "
    "installed?\r\n         Is printer power on now?",
    "Driver or rip mode invalid!",
    "Corvane driver color setup error!",
    "Driver's wave mod is unmatch with printer!",
    "Color list set error!",
};
static_assert(std::size(kErrorTextChinese) == kErrorCodes);
static_assert(std::size(kErrorTextEnglish) == kErrorCodes);

}  // namespace

void CopyErrorText(std::uint32_t code, bool chinese, char (&slot)[kErrorSlotBytes]) {
  std::memset(slot, 0, sizeof slot);
  if (code >= kErrorCodes) return;
  ToCodePage(chinese ? kErrorTextChinese[code] : kErrorTextEnglish[code], slot, sizeof slot);
}

}  // namespace qrn
