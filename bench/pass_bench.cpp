// One pass of a page of one metre: cleared, converted, for every mode, direction and amount of ink.
// Bytes per second are those that the pass must move at least: each byte of its rows read once,
// each byte of its columns written once.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstring>

#include "bench/bench_job.h"
#include "raster/band.h"

namespace {

using namespace qrn;

constexpr std::size_t kDifferentLines = 61;

struct Mode {
  const char* name;
  bench::JobSpec spec;
};
constexpr Mode kModes[] = {
    {"1080dpi", {1080}}, {"1440dpi", {1440}},           {"1620dpi", {1620}},
    {"2160dpi", {2160}}, {"onehead1080", {1080, true}},
};

void ConvertOnePass(benchmark::State& state, const Mode& mode, bool reverse, int inkPercent) {
  bench::BenchJob bench(mode.spec);
  Job& job = bench.Record();
  const auto lines = bench::InkLines(kDifferentLines, job.nLineBits / 8, inkPercent);
  std::size_t bytes = 0;
  for (auto _ : state) {
    bench::FillPassBuffers(job, lines);  // what the pass before has cleared
    job.passNo = 0;
    job.passDir = reverse ? 1 : 0;
    const auto start = std::chrono::steady_clock::now();
    ConvertPass(job);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    state.SetIterationTime(took.count());
    benchmark::DoNotOptimize(job.PrintOutBuf[0]);
    benchmark::ClobberMemory();
    const std::size_t rowBytes = std::size_t{job.checkRows} * job.lineStride * kPlanes;
    bytes += rowBytes + (job.passEmpty == 0 ? job.passDataSize : 0);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
}

const bool kRegistered = [] {
  for (const Mode& mode : kModes) {
    for (const int ink : {0, 5, 30, 100}) {
      for (const bool reverse : {false, true}) {
        if (ink == 0 && reverse) continue;  // a blank pass has no direction
        const std::string name = std::string("pass/") + mode.name + "/ink" + std::to_string(ink) +
                                 (reverse ? "/reverse" : "/forward");
        benchmark::RegisterBenchmark(name.c_str(), ConvertOnePass, mode, reverse, ink)
            ->UseManualTime()
            ->Unit(benchmark::kMillisecond)
            ->MinTime(0.2);
      }
    }
  }
  return true;
}();

}  // namespace
