#include "params/paper_feed.h"

#include <cmath>

#include "base/bytes.h"
#include "base/shared.h"
#include "diag/job_log.h"
#include "params/param_block.h"

namespace qrn {
namespace {

constexpr std::uint8_t kCalibSelectMax = 4;

// Just under 254, tenths of a millimetre in an inch.
constexpr double kTenthMmPerInch = 253.99999187200024;
// The same as a whole number of 2^-45: a double between 2^7 and 2^8 has 45 binary places.
constexpr int kTenthMmPerInchPlaces = 45;

// (value * factor) / divisor, exact and cut to a whole number, of which the low 64 bits are kept.
// No standard type holds the product, so it is formed and divided in digits of 32 bits. Requires:
// divisor not 0.
std::uint64_t MulDiv(std::uint64_t value, std::uint64_t factor, std::uint32_t divisor) {
  const std::uint64_t valueLow = Low32(value), valueHigh = value >> 32;
  const std::uint64_t factorLow = Low32(factor), factorHigh = factor >> 32;
  const std::uint64_t low = valueLow * factorLow;
  const std::uint64_t middleA = valueHigh * factorLow + (low >> 32);
  const std::uint64_t middleB = valueLow * factorHigh + Low32(middleA);
  const std::uint64_t high = valueHigh * factorHigh + (middleA >> 32) + (middleB >> 32);
  const std::uint32_t digits[4] = {Low32(high >> 32), Low32(high), Low32(middleB), Low32(low)};
  std::uint64_t quotient = 0, rest = 0;
  for (const std::uint32_t digit : digits) {
    rest = (rest << 32) | digit;
    quotient = (quotient << 32) | (rest / divisor);
    rest %= divisor;
  }
  return quotient;
}

// lines x base / (calibration x resolution) x kTenthMmPerInch, without any rounding on the way: the
// steps of a swath must not depend on how wide a machine's floating point is.
std::uint16_t ExactSteps(std::uint16_t lines, std::uint32_t stepBase, std::uint32_t divisor) {
  const auto factor =
      static_cast<std::uint64_t>(std::ldexp(kTenthMmPerInch, kTenthMmPerInchPlaces));
  const std::uint64_t product = static_cast<std::uint64_t>(lines) * stepBase;
  return Low16(MulDiv(product, factor, divisor) >> kTenthMmPerInchPlaces);
}

}  // namespace

std::uint16_t SelectedCalibration() {
  const PrinterParams& params = GetPrinterParams();
  const std::uint8_t select = params.bytes[kParamCalibSelectAt];
  if (select > kCalibSelectMax) return 0;
  return Low16(params.bytes[kParamCalibLowAt + select] + 256u * params.bytes[kParamCalibHighAt]);
}

bool CalcSwathSteps(Job& job) {
  if (job.nResY == 0 || job.stepCalib == 0) {
    LogPrint("步进计量输入值异常:%d-%d", job.nResY, job.stepCalib);
    return false;
  }
  const std::uint32_t stepBase = GetPrinterParams().Long(kParamStepBaseAt);
  const std::uint32_t divisor = static_cast<std::uint32_t>(job.stepCalib) * job.nResY;
  job.stepsPerLine = static_cast<double>(stepBase) / divisor * kTenthMmPerInch;
  StoreShared(job.swathSteps, ExactSteps(job.passStep, stepBase, divisor));
  return true;
}

}  // namespace qrn
