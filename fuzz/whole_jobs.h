// For targets that run whole jobs through the exports on virtual time.
#ifndef QRN_FUZZ_WHOLE_JOBS_H_
#define QRN_FUZZ_WHOLE_JOBS_H_

#include <cstdint>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "host/job.h"
#include "qrn_driver.h"
#include "sim/sim_platform.h"

namespace qrn::fuzz {

// False for a job whose buffers would take more than 64 MiB, but true for one whose buffers cannot
// be obtained at all, which must be refused.
inline bool IsAffordable(const HostJobDesc& desc) {
  constexpr std::uint64_t kBytesMax = 64u << 20, kObtainableMax = 0xFFFFFFFF;
  const std::uint64_t resX = desc.resX & 0xFFFFu, resY = desc.resY & 0xFFFFu;
  const std::uint64_t stride = (std::uint64_t{desc.width * desc.bitsPerPixel} + 31) / 32 * 4;
  const std::uint64_t passBuffer = 4 * resY * stride;
  const std::uint64_t passes = resX < 1440 ? 3 : resX < 1620 ? 4 : resX < 2160 ? 6 : 8;
  const std::uint64_t twoHeads = (resX * 6400 / 254 + 8 * stride) * 360 / passes;
  const std::uint64_t oneHead = 720 * (4 * stride / 3 + 1000);  // where that is more
  const std::uint64_t swathBuffer = std::max(twoHeads, oneHead);
  return passBuffer > kObtainableMax || 8 * passBuffer + 7 * swathBuffer <= kBytesMax;
}

// After the end of a job nothing of it may be left, whatever befell it.
inline void CheckNothingLeft(const sim::SimPlatform& platform) {
  FUZZ_CHECK(platform.LiveThreads() == 0);
  FUZZ_CHECK(platform.OpenDevices() == 0);
  const Job& job = GetJob();
  FUZZ_CHECK(job.hDevice == 0 && job.hTxThread == 0);
  FUZZ_CHECK(job.PrintOutBuf == nullptr && job.printOutBufSize == 0);
  for (const std::uint8_t* buffer : job.Mem.pPassBuffer) FUZZ_CHECK(buffer == nullptr);
  for (const Swath& swath : job.swathQueue) FUZZ_CHECK(swath.pSwathData == nullptr);
}

// Some plane line of a small image: blank, solid, or noise that repeats.
inline std::vector<std::uint8_t> LineOf(std::uint8_t pattern, std::uint32_t color,
                                        std::uint32_t line, std::size_t bytes) {
  std::vector<std::uint8_t> pixels(bytes);
  const bool blank = ((pattern >> 3) & color) != 0 || (pattern & 7u) == 0;
  if (blank) return pixels;
  std::uint32_t noise = pattern + 31u * color + 7u * line;
  for (std::uint8_t& byte : pixels) {
    noise = noise * 1664525u + 1013904223u;
    byte = (pattern & 7u) == 1 ? std::uint8_t{0xFF} : static_cast<std::uint8_t>(noise >> 24);
  }
  return pixels;
}

}  // namespace qrn::fuzz

#endif  // QRN_FUZZ_WHOLE_JOBS_H_
