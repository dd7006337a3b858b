#include "protocol/job_info.h"

#include "base/bytes.h"
#include "diag/job_log.h"
#include "platform/platform.h"

namespace qrn {
namespace {

constexpr std::uint16_t kColorBarOption = 0x4000;  // of carriageOpts

// The printer expects the 10 and the cut as they are. A job that was never configured gives 0.
std::uint16_t ImageWidthMm(const Job& job) {
  const double dotsPerInchBits = static_cast<double>(job.nBitsPerPixel) * job.nResX;
  return TruncateLow16((static_cast<double>(job.nLineBits) * 25.4 + 10.0) / dotsPerInchBits);
}

}  // namespace

void BuildJobInfo(const Job& job, std::uint8_t* body) {
  body[kJobInfoPassCountAt] = job.passCount;
  const LocalTime now = ThePlatform().LocalTimeNow();
  PutU16(body + kJobInfoTimeAt, Low16(now.hour * 256u + now.minute));
  body[kJobInfoMarkAt] = 0xCF;
  PutU16(body + kJobInfoSignatureAt, 0x2015);
  body[kJobInfoResIdxAt] = job.resIdx;
  body[kJobInfoConstant1At] = 1;
  if ((job.carriageOpts & kColorBarOption) != 0) LogPrint("校色板");
  LogPrint("WAVE: %d-%d", job.waveNo, 0);

  const std::uint16_t widthMm = ImageWidthMm(job);
  body[kJobInfoSpeedAt] = job.carriageSpeed;
  PutU16(body + kJobInfoCarriageAt, job.twoHeadCarriage == 1 ? 1800 : 1200);
  body[kJobInfoConstant25At] = 25;
  PutU16(body + kJobInfoResXAt, job.nResX);
  PutU16(body + kJobInfoResYAt, job.nResY);
  PutU32(body + kJobInfoWidthMmAt, widthMm);
  PutU32(body + kJobInfoHeightAt, job.nHeight);
  body[kJobInfoResCodeAt] = job.resCode;
  body[kJobInfoResParamAAt] = job.resParamA;
  body[kJobInfoResParamBAt] = job.resParamB;
  LogPrint("Jobinfo: %d-%d,resolu:0x%02X(%d-%d), pic:%dx%d(%dx%d),C-0x%02X", job.passCount,
           job.carriageSpeed, static_cast<unsigned>(job.resCode), job.resParamA, job.resParamB,
           widthMm, static_cast<int>(job.nHeight), job.nResX, job.nResY,
           static_cast<unsigned>(body[kJobInfoConstant1At]));
}

}  // namespace qrn
