#include "protocol/spit_plan.h"

#include "base/bytes.h"
#include "diag/job_log.h"

namespace qrn {
namespace {

constexpr std::uint8_t kSpitPha = 1;
constexpr std::uint8_t kSpitPhb = 2;
constexpr std::uint8_t kSpitFlashOpt = 0x10;

// Whose turn it is, odd = PHB. Outlives jobs, so that a new job goes on with the other head.
// Transmit thread.
std::uint8_t nSpitToggle = 0;

// The request names only the head whose turn it is.
std::uint8_t NextSpitMode(const Job& job) {
  if (job.twoHeadCarriage != 1) return kSpitPha;
  std::uint8_t mode = 0;
  if (job.dualHead == 1) {
    ++nSpitToggle;
    mode = (nSpitToggle & 1u) != 0 ? kSpitPhb : kSpitPha;
  } else {
    mode = job.singleHead == kSinglePhb ? kSpitPhb : kSpitPha;
  }
  return job.flashOpt == 1 ? Low8(mode + kSpitFlashOpt) : mode;
}

}  // namespace

void SpitPlan(Job& job, Swath& swath) {
  swath.header.spitMode = 0;
  // Only a pass towards the flash station can flash, and only one that prints counts.
  if (swath.dataSize == 0 || job.flashEvery == 0 || swath.header.endPos > swath.header.startPos)
    return;
  ++job.nSpitCount;
  if (job.nSpitCount < job.flashEvery) return;
  swath.header.spitAmount = Low16(static_cast<std::uint32_t>(job.flashParam) * 6000u / 254u);
  swath.header.spitMode = NextSpitMode(job);
  job.nSpitCount = 0;
  LogPrint("启动闪喷spit:%d-%d, mode:0x%X", swath.header.spitAmount, job.flashEvery,
           static_cast<unsigned>(swath.header.spitMode));
}

}  // namespace qrn
