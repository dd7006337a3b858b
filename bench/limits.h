// What the memory alone would take for the work, at the speeds of the same run.
#ifndef QRN_BENCH_LIMITS_H_
#define QRN_BENCH_LIMITS_H_

#include <cstdint>

#include "job/job.h"

namespace qrn::bench {

// The least that a printing pass must move: each byte of its lines read once, each byte of its
// columns written once. Requires: the sizes of a printing pass in the record.
double LeastSeconds(const Job& job);

// What a job sweeps over when it keeps plain buffers: each pass clears PrintOutBuf, each printing
// one is copied into its swath, each band moves 720 rows of every colour up and clears as many.
struct Sweeps {
  std::uint32_t passes, printingPasses, bands;
};
double SweepSeconds(const Job& job, const Sweeps& sweeps);

}  // namespace qrn::bench

#endif  // QRN_BENCH_LIMITS_H_
