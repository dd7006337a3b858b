// What comparisons with the plain raster ask of the core's beside its own calls: rows of the pass
// buffers as the host sees them, and one pass as RunPasses makes it, without the swath.
// STAND-IN: written for rows that lie in the buffers as the host gave them; the only place to
// change when they no longer do.
#ifndef QRN_TESTS_REFERENCE_CORE_STEPS_H_
#define QRN_TESTS_REFERENCE_CORE_STEPS_H_

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "host/job.h"
#include "raster/band.h"

namespace qrn {

inline void PutRow(Job& job, std::uint32_t plane, std::uint32_t row, const std::uint8_t* line,
                   std::uint32_t bytes) {
  std::memcpy(job.Mem.pPassBuffer[plane] + std::size_t{row} * job.lineStride, line,
              std::min(bytes, job.lineStride));
}

// lineStride bytes.
inline void GetRow(const Job& job, std::uint32_t plane, std::uint32_t row, std::uint8_t* line) {
  std::memcpy(line, job.Mem.pPassBuffer[plane] + std::size_t{row} * job.lineStride, job.lineStride);
}

// Pass passNo in direction passDir; counts passNo on.
inline void RunPass(Job& job) {
  std::memset(job.PrintOutBuf, 0, job.printOutBufSize);
  ConvertPass(job);
  ++job.passNo;
}

}  // namespace qrn

#endif  // QRN_TESTS_REFERENCE_CORE_STEPS_H_
