#include "bench/limits.h"

#include "bench/measure.h"
#include "job/heads.h"

namespace qrn::bench {
namespace {

double Read(std::size_t bytes) { return static_cast<double>(bytes) / ReadSpeed(bytes); }
double Fill(std::size_t bytes) { return static_cast<double>(bytes) / FillSpeed(bytes); }
double Copy(std::size_t bytes) { return static_cast<double>(bytes) / CopySpeed(bytes); }

}  // namespace

double LeastSeconds(const Job& job) {
  // One head takes one line of every nozzle's two.
  const std::size_t lines = job.dualHead == 1 ? 2 * kNozzles : kNozzles;
  return Read(kColors * lines * (job.nLineBits / 8)) + Fill(job.passDataSize);
}

double SweepSeconds(const Job& job, const Sweeps& sweeps) {
  const std::size_t moved = std::size_t{kColors} * kBothHeadsRows * job.lineStride;
  return sweeps.passes * Fill(job.printOutBufSize) +
         sweeps.printingPasses * Copy(job.passDataSize) +
         sweeps.bands * (Copy(moved) + Fill(moved));
}

}  // namespace qrn::bench
