// The job's feather masks, deinterleaved like the runs of a stored row: one feather run for each
// mask and phase. On a run every mask repeats after 256 bytes or fewer. The transmit thread builds
// them within the connect, the host's thread reads them.
#ifndef QRN_RASTER_FEATHER_RUNS_H_
#define QRN_RASTER_FEATHER_RUNS_H_

#include <cstddef>
#include <cstdint>

#include "job/job.h"
#include "raster/kernels.h"

namespace qrn {

constexpr std::uint32_t kFeatherPeriodBytes = 256;
// A period and what a strip reads: one that begins anywhere in the period is read in one go.
constexpr std::uint32_t kFeatherRunBytes = kFeatherPeriodBytes + kStripReadBytes;

// The feather runs of all phases of all masks of the job. Requires: layout and masks.
std::size_t FeatherRunsBytes(const Job& job);
void BuildFeatherRuns(const Job& job, std::uint8_t* runs);

// Mask i for the run of a phase.
inline const std::uint8_t* FeatherRun(const Job& job, std::uint32_t phase, std::uint32_t i) {
  return job.Mem.pFeatherRuns + std::size_t{phase * job.featherRows + i} * kFeatherRunBytes;
}

}  // namespace qrn

#endif  // QRN_RASTER_FEATHER_RUNS_H_
