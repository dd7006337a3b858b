#include "params/print_width.h"

#include "base/bytes.h"
#include "diag/job_log.h"
#include "params/param_block.h"

namespace qrn {
namespace {

// What the carriage itself takes up of its travel, and what one for two heads takes up in addition.
constexpr std::uint32_t kCarriageMm = 195, kTwoHeadsMm = 60;
constexpr std::uint32_t kDefaultTravelMm = 2150;  // of a block that holds 0

}  // namespace

bool CheckPrintWidth(Job& job) {
  PrinterParams& params = GetPrinterParams();
  if (params.bytes[kParamNoMarginAt] != 0) PutU16(params.bytes + kParamMarginAt, 0);
  const std::uint32_t travel600 = params.Long(kParamTravelAt);
  const std::uint32_t margin = params.Word(kParamMarginAt);
  const std::uint32_t travelMm = travel600 != 0 ? travel600 * 254u / 6000u : kDefaultTravelMm;
  const std::uint32_t reserveMm =
      margin * 1016u / 6000u + kCarriageMm + (job.carriageHeads != 0 ? kTwoHeadsMm : 0u);
  job.maxPrintMm = travelMm > reserveMm ? Low16(travelMm - reserveMm) : std::uint16_t{0};
  LogPrint("最大打印范围:%d mm - %d-%d", job.maxPrintMm, static_cast<int>(travel600),
           static_cast<int>(margin * 4));

  const std::uint32_t imageMm = job.nLineBits / job.nBitsPerPixel * 254u / (job.nResX * 10u);
  if (Low16(imageMm) <= job.maxPrintMm) return true;
  LogPrint("图像宽:%d(%dmm > %dmm)\n", static_cast<int>(job.nLineBits), static_cast<int>(imageMm),
           job.maxPrintMm);
  LogPrint("打印图像超出机器最大宽度 %d", job.maxPrintMm);
  return false;
}

}  // namespace qrn
