#include "params/connect.h"

#include <cstring>

#include "base/bytes.h"
#include "base/shared.h"
#include "diag/driver_error.h"
#include "diag/job_log.h"
#include "params/image_mode.h"
#include "params/ink_order.h"
#include "params/machine.h"
#include "params/paper_feed.h"
#include "params/param_block.h"
#include "params/print_width.h"
#include "raster/job_memory.h"

namespace qrn {
namespace {

constexpr std::uint8_t kFlashOptBit = 0x40;

bool Refuse(DriverError code) {
  RaiseError(code);
  return false;
}

}  // namespace

bool ParsePrinterParams(Job& job, const std::uint8_t* payload, std::uint32_t bytes) {
  const bool whole = bytes >= kParamBlockBytes;
  PrinterParams& params = GetPrinterParams();
  if (whole) std::memcpy(params.bytes, payload, kParamBlockBytes);
  const std::uint16_t signature = whole ? params.Word(kParamSignatureAt) : std::uint16_t{0};
  if (signature != kParamSignature) {
    LogPrint("不可识别打印机参数%X", static_cast<unsigned>(signature));
    return Refuse(kErrorBadParameters);
  }
  if (!TakeMachine(job)) return false;
  if (!CheckImageMode(job)) return Refuse(kErrorBadMode);
  if (!CheckPrintWidth(job)) return Refuse(kErrorTooWide);
  job.stepCalib = SelectedCalibration();
  if (!CalcSwathSteps(job)) return Refuse(kErrorFeedValue);
  if (!SetInkOrder(job, params.bytes + kParamInkOrderAt)) return Refuse(kErrorInkOrder);
  LogPrint("纵轴(pass%d):%d-%d, %0.2f, swathsteps:%d", static_cast<int>(job.nResY / kNozzles),
           job.stepCalib, static_cast<int>(params.Long(kParamStepBaseAt)), job.stepsPerLine,
           LoadShared(job.swathSteps));
  job.lineStride = Low32((job.nLineBits + 31ull) / 32u * 4u);
  job.flashOpt = (params.bytes[kParamFlashOptAt] & kFlashOptBit) != 0;
  AllocJobMem(job);
  LogPrint("===============\r\n");
  return true;
}

void UpdateFwPara(Job& job, const std::uint8_t* section, std::uint32_t bytes) {
  if (bytes < kParamUpdateBytes) {
    LogPrint("Update fw para: too short, %d < %d", static_cast<int>(bytes),
             static_cast<int>(kParamUpdateBytes));
    return;
  }
  PrinterParams& params = GetPrinterParams();
  std::memcpy(params.bytes + kParamUpdateAt, section, kParamUpdateBytes);
  const std::uint16_t correction = params.bytes[kParamBiDirAt + job.resIdx];
  const std::uint16_t calibration = SelectedCalibration();
  if (correction == LoadShared(job.biDirOfs) && calibration == job.stepCalib) return;
  LogPrint("Update fw para:%d,%d", correction, calibration);
  StoreShared(job.biDirOfs, correction);
  job.stepCalib = calibration;
  (void)CalcSwathSteps(job);  // refused: the job goes on with the steps it has
}

}  // namespace qrn
