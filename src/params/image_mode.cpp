#include "params/image_mode.h"

#include "diag/job_log.h"
#include "params/feather_masks.h"
#include "params/one_head.h"
#include "params/param_block.h"
#include "params/printer_params.h"
#include "params/resolution.h"
#include "platform/bytes.h"

namespace qrn {
namespace {

struct ResolutionMode {
  std::uint8_t passCount;
  std::uint8_t resParamA;
  std::uint8_t resParamB;
};

// In the order of kResolutionX.
constexpr std::array<ResolutionMode, kResolutionX.size()> kResolutionModes = {
    {{3, 5, 12}, {4, 5, 12}, {6, 5, 9}, {8, 5, 9}}};

constexpr std::uint8_t kHeadTypeMax = 1;
constexpr std::uint8_t kBitsPerPixel = 2;
constexpr std::uint16_t kHistoryRowsDual = 720;  // two head heights

bool IsImageSupported(const Job& job) {
  if (job.headType > kHeadTypeMax) {
    LogPrint("图像支持喷头模式异常(仅支持DX5&DX7) mode:%d", job.headType);
    return false;
  }
  if (job.nColors != kPlanes) {
    LogPrint("图像颜色值异常:%d!=%d", job.nColors, static_cast<int>(kPlanes));
    return false;
  }
  if (job.nBitsPerPixel != kBitsPerPixel) {
    LogPrint("图像位模式异常:%d!=%d", static_cast<int>(job.nBitsPerPixel), kBitsPerPixel);
    return false;
  }
  // The bands move by two head heights of rows whatever nResY is, and four times nResY rows must
  // hold them. A value of 0 is left to the check of the paper feed.
  if (job.nResY != 0 && job.nResY < kHeadLines) {
    LogPrint("Vertical resolution too low: %d < %d", job.nResY, kHeadLines);
    return false;
  }
  return true;
}

void CalcBandGeometry(Job& job) {
  const std::uint32_t usableLines = (kNozzles - job.featherRows) * 2;
  if (job.dualHead == 1) {
    job.checkRows = Low16(2u * job.nResY);
    job.passStep = Low16(usableLines / job.passCount);
    job.historyRows = Low16(kHistoryRowsDual - job.headGapY);
  } else {
    job.passCount = Low8(2u * job.passCount);
    job.historyRows = job.checkRows = job.nResY;
    job.passStep = Low16(usableLines / job.passCount + 1);
    if (job.passStep * job.passCount > job.nResY)
      job.passStep = Low16(job.passStep - job.passCount);
  }
  job.swathH = Low16(job.passCount * job.passStep);
  LogPrint("羽化模式:%d-%d,swathH:%d, Pass:%d", job.passStep, job.featherRows, job.swathH,
           job.passCount);
}

// Size in mm of `dots` at `dotsPerInch`, in 32 bits; for log lines.
std::uint32_t SizeMm(std::uint32_t dots, std::uint32_t dotsPerInch) {
  return dotsPerInch != 0 ? dots * 254u / (dotsPerInch * 10u) : 0;
}

void LogImage(const Job& job) {
  LogPrint("图像%dx%d(%dmmx%dmm),分辨率:%dx%d, MaxC:%d,Bitn:%d, Pass:%d",
           static_cast<int>(job.nLineBits), static_cast<int>(job.nHeight),
           static_cast<int>(SizeMm(job.nLineBits, job.nResX * job.nBitsPerPixel)),
           static_cast<int>(SizeMm(job.nHeight, job.nResY)), job.nResX, job.nResY, job.nColors,
           static_cast<int>(job.nBitsPerPixel), job.passCount);
}

}  // namespace

bool CheckResolutionX(Job& job) {
  for (std::size_t i = 0; i < kResolutionX.size(); ++i) {
    if (kResolutionX[i] != job.nResX) continue;
    job.passCount = kResolutionModes[i].passCount;
    job.resParamA = kResolutionModes[i].resParamA;
    job.resParamB = kResolutionModes[i].resParamB;
    job.resCode = Low8(((job.resParamB - 1u) << 3) | 4u);
    return true;
  }
  LogPrint("不支持当前水平分辨率:%d", job.nResX);
  return false;
}

void CalcHeadGeometry(Job& job) {
  const std::uint32_t passes = job.passCount;
  job.marginDots = Low16(job.nResX * 640u / 254u);  // 64 mm
  // The heads hang 140 mm apart; the printer corrects that by columns.
  job.headGapX = Low16(job.nResX * 1400u / 254u / passes +
                       GetPrinterParams().bytes[kParamHeadGapXAt + job.resIdx]);
  if (job.twoHeadCarriage == 1 && job.singleHead == 1)
    job.marginDots = Low16(passes * job.headGapX + job.marginDots);

  // Neighbouring nozzle rows are 53/600 and 180/600 inch apart, in turns.
  const double sixHundredths = static_cast<double>(passes) * 600.0;
  const double gapMin = job.nResX * 53 / sixHundredths;
  const double gapMax = job.nResX * 180 / sixHundredths;
  job.rowGapMin = TruncateLow16(gapMin);
  job.rowGapMax = TruncateLow16(gapMax);
  double offset = (gapMin + gapMax) * 4.0;
  for (std::uint32_t row = 0; row < kPlanes; ++row) {
    offset -= row % 2 == 0 ? gapMax : gapMin;
    const std::uint16_t whole = TruncateLow16(offset);
    job.rowOffset[row] = offset - whole > 0.5 ? Low16(whole + 1u) : whole;
  }
}

bool CheckImageMode(Job& job) {
  if (!IsImageSupported(job)) return false;
  BuildFeatherMasks(job);
  CalcBandGeometry(job);
  LogImage(job);
  if (job.nResY > kResolutionY) {
    LogPrint("Passes print %d lines an inch, the paper is fed for %d: they overlap",
             static_cast<int>(kResolutionY), job.nResY);
  }
  if (job.dualHead != 1 && job.nResY != 0) WarnOfUnprintedLines(job);
  job.bandLine = 0;
  return true;
}

}  // namespace qrn
