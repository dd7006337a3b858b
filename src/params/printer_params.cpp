#include "params/printer_params.h"

#include <cstring>

#include "diag/driver_error.h"
#include "diag/job_log.h"
#include "params/image_mode.h"
#include "params/ink_order.h"
#include "params/param_block.h"
#include "params/resolution.h"
#include "platform/bytes.h"
#include "platform/shared.h"
#include "raster/job_memory.h"

namespace qrn {
namespace {

PrinterParams g_params{};

constexpr std::uint8_t kHeadPha = 0x10;
constexpr std::uint8_t kHeadPhb = 0x20;
constexpr std::uint8_t kCalibSelectMax = 4;

std::uint16_t ParamU16(std::size_t offset) { return U16(g_params.bytes + offset); }
std::uint32_t ParamU32(std::size_t offset) { return U32(g_params.bytes + offset); }

void TakeHeads(Job& job) {
  const std::uint8_t carriage = g_params.bytes[kParamCarriageAt];
  job.headMask = g_params.bytes[kParamHeadMaskAt] & 0xF0;
  job.carriageHeads = carriage & 0x0F;
  job.headType = carriage >> 4;
  job.headMirror = job.headType == 1;
  job.twoHeadCarriage = job.carriageHeads == 1;
  job.dualHead = job.headMask == (kHeadPha | kHeadPhb);
  job.singleHead = 4;
  if (job.dualHead == 1) return;
  if ((job.headMask & kHeadPha) != 0) {
    job.singleHead = 0;
  } else if ((job.headMask & kHeadPhb) != 0) {
    job.singleHead = 1;
  }
}

void TakeOptions(Job& job) {
  job.bidirectional = g_params.bytes[kParamBidirectionalAt];
  job.carriageOpts = ParamU16(kParamOptionsAt);
  job.waveNo = g_params.bytes[kParamWaveNoAt];
  job.fixedDir = (g_params.bytes[kParamFixedDirAt] & 0x20) != 0;
}

// 33120 is the carriage's clock base. Requires: the base pass count of nResX.
void CalcCarriageSpeed(Job& job) {
  const std::int32_t base = 33120 / (2 * job.nResX / job.passCount);
  const std::int32_t setting = g_params.bytes[kParamSpeedAt];
  job.carriageSpeed = Low8(static_cast<std::uint32_t>(10 + (base - 10) * setting / 10));
}

// The vertical head offset is kept by base pass count: 3, 4, 6, 8 have the indexes 1..4.
std::size_t PassIndexOf(std::uint8_t passCount) {
  switch (passCount) {
    case 3:
      return 1;
    case 4:
      return 2;
    case 6:
      return 3;
    case 8:
      return 4;
    default:
      return 0;
  }
}

void TakeAlignment(Job& job) {
  job.resFactor = static_cast<float>(job.nResX) * 0.0033333334f;
  StoreShared(job.biDirOfs, g_params.bytes[kParamBiDirAt + job.resIdx]);
  job.headGapY = g_params.bytes[kParamHeadGapYAt + PassIndexOf(job.passCount)];
  job.flashParam = ParamU16(kParamFlashParamAt);
  job.flashEvery = g_params.bytes[kParamFlashEveryAt];
  job.featherPercent = g_params.bytes[kParamFeatherAt];
}

// Boards of the middle id range report themselves in bytes, the others in words.
void TakeBoards(Job& job) {
  const std::uint8_t* board = g_params.bytes;
  job.mainBoardId = board[kParamMainBoardIdAt];
  job.carriageBoardSn = U16(board + 6);
  if (job.mainBoardId > 110 && job.mainBoardId < 210) {
    job.mainBoardVer = board[1];
    job.carriageBoardId = board[4];
    job.carriageBoardVer = board[5];
  } else {
    job.carriageBoardId = board[1];
    job.carriageBoardVer = U16(board + 2);
    job.mainBoardVer = U16(board + 4);
  }
}

void LogMachine(Job& job) {
  LogPrint("===============\r\n主板:%03d/%X,  编号:%4d", job.mainBoardId,
           static_cast<unsigned>(job.mainBoardVer), ParamU16(kParamSerialAt));
  LogPrint("小车:%03d/%X,  编号:%4d", job.carriageBoardId,
           static_cast<unsigned>(job.carriageBoardVer), job.carriageBoardSn);
  LogPrint("速度: %d-%d", g_params.bytes[kParamSpeedAt], job.carriageSpeed);
  LogPrint("水平: MinW-%04d, MaxW-%d, Db-%d", job.rowGapMin, job.rowGapMax,
           LoadShared(job.biDirOfs));
  if (job.carriageHeads == 1) {
    LogPrint("2pheads:   PHAB,hori-%d(%d),Veri-%d", job.headGapX,
             g_params.bytes[kParamHeadGapXAt + job.resIdx], job.headGapY);
  }
  LogPrint("喷头: %d-%d, 0x%02X", job.carriageHeads, job.headType,
           static_cast<unsigned>(job.headMask));
}

bool CheckPrintWidth(Job& job) {
  if (g_params.bytes[kParamNoMarginAt] != 0) PutU16(g_params.bytes + kParamMarginAt, 0);
  const std::uint32_t travel600 = ParamU32(kParamTravelAt);
  const std::uint32_t margin = ParamU16(kParamMarginAt);
  const std::uint32_t travelMm = travel600 != 0 ? travel600 * 254u / 6000u : 2150u;
  const std::uint32_t reserveMm =
      margin * 1016u / 6000u + 195u + (job.carriageHeads != 0 ? 60u : 0u);
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

// A selector outside the table selects nothing: the value counts as 0, which the feed check
// refuses.
std::uint16_t SelectedCalibration() {
  const std::uint8_t select = g_params.bytes[kParamCalibSelectAt];
  if (select > kCalibSelectMax) return 0;
  return Low16(g_params.bytes[kParamCalibLowAt + select] +
               256u * g_params.bytes[kParamCalibHighAt]);
}

bool Refuse(DriverError code) {
  RaiseError(code);
  return false;
}

// Everything that must stand before the image can be judged; false when the resolution cannot be
// printed.
bool TakeMachine(Job& job) {
  TakeHeads(job);
  TakeOptions(job);
  job.resIdx = ResolutionIndex(job.nResX);
  if (!CheckResolutionX(job)) return false;
  CalcCarriageSpeed(job);
  CalcHeadGeometry(job);
  TakeAlignment(job);
  TakeBoards(job);
  LogMachine(job);
  return true;
}

}  // namespace

PrinterParams& GetPrinterParams() { return g_params; }

bool ParsePrinterParams(Job& job, const std::uint8_t* payload, std::uint32_t bytes) {
  const bool whole = bytes >= kParamBlockBytes;
  if (whole) std::memcpy(g_params.bytes, payload, kParamBlockBytes);
  const std::uint16_t signature = whole ? ParamU16(kParamSignatureAt) : std::uint16_t{0};
  if (signature != kParamSignature) {
    LogPrint("不可识别打印机参数%X", static_cast<unsigned>(signature));
    return Refuse(kErrorBadParameters);
  }
  if (!TakeMachine(job)) return false;
  if (!CheckImageMode(job)) return Refuse(kErrorBadMode);
  if (!CheckPrintWidth(job)) return Refuse(kErrorTooWide);
  job.stepCalib = SelectedCalibration();
  if (!CalcSwathSteps(job)) return Refuse(kErrorFeedValue);
  if (!SetInkOrder(job, g_params.bytes + kParamInkOrderAt)) return Refuse(kErrorInkOrder);
  LogPrint("纵轴(pass%d):%d-%d, %0.2f, swathsteps:%d", job.nResY / 180, job.stepCalib,
           static_cast<int>(ParamU32(kParamStepBaseAt)), job.stepsPerLine,
           LoadShared(job.swathSteps));
  job.lineStride = Low32((job.nLineBits + 31ull) / 32u * 4u);
  job.flashOpt = (g_params.bytes[kParamFlashOptAt] & 0x40) != 0;
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
  std::memcpy(g_params.bytes + kParamUpdateAt, section, kParamUpdateBytes);
  const std::uint16_t correction = g_params.bytes[kParamBiDirAt + job.resIdx];
  const std::uint16_t calibration = SelectedCalibration();
  if (correction == LoadShared(job.biDirOfs) && calibration == job.stepCalib) return;
  LogPrint("Update fw para:%d,%d", correction, calibration);
  StoreShared(job.biDirOfs, correction);
  job.stepCalib = calibration;
  (void)CalcSwathSteps(job);  // refused: the job goes on with the steps it has
}

std::uint8_t NextSwathDir(Job& job) {
  if (job.bidirectional != 1) return job.fixedDir;
  job.passDir = job.passDir == 0 ? 1 : 0;
  return job.passDir;
}

}  // namespace qrn
