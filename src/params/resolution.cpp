#include "params/resolution.h"

#include "base/bytes.h"
#include "diag/job_log.h"

namespace qrn {
namespace {

struct ResolutionMode {
  std::uint8_t passCount;
  std::uint8_t resParamA;
  std::uint8_t resParamB;
};

// In the order of kResolutionX.
constexpr std::array<ResolutionMode, kResolutionX.size()> kResolutionModes = {
    {{.passCount = 3, .resParamA = 5, .resParamB = 12},
     {.passCount = 4, .resParamA = 5, .resParamB = 12},
     {.passCount = 6, .resParamA = 5, .resParamB = 9},
     {.passCount = 8, .resParamA = 5, .resParamB = 9}}};

}  // namespace

std::uint16_t ResolutionByIndex(std::uint32_t index) {
  const std::uint8_t entry = Low8(index);
  return entry < kResolutionX.size() ? Low16(kResolutionX[entry]) : std::uint16_t{0};
}

std::uint8_t ResolutionIndex(std::uint32_t resolution) {
  for (std::size_t i = 0; i < kResolutionX.size(); ++i) {
    if (kResolutionX[i] == Low16(resolution)) return Low8(i);
  }
  return 0;
}

bool CheckResolutionX(Job& job) {
  job.resIdx = ResolutionIndex(job.nResX);
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

}  // namespace qrn
