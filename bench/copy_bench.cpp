// What only moves bytes, and the memory limits that it is held against: line intake and framing, a
// plain copy, fill and read of the same sizes.
#include <benchmark/benchmark.h>

#include <cstring>
#include <numeric>
#include <vector>

#include "bench/bench_job.h"
#include "link/frame.h"
#include "link/transport.h"
#include "raster/line_intake.h"

namespace {

using namespace qrn;

constexpr std::size_t kSwathBytes = 13'472'000;  // two heads, one metre, 1440 dpi
constexpr std::size_t kLineBytes = 14'176;

void Copy(benchmark::State& state) {
  const auto bytes = static_cast<std::size_t>(state.range(0));
  const std::vector<std::uint8_t> from(bytes, 1);
  std::vector<std::uint8_t> to(bytes);
  for (auto _ : state) {
    std::memcpy(to.data(), from.data(), bytes);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
}

void Fill(benchmark::State& state) {
  std::vector<std::uint8_t> to(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    std::memset(to.data(), 0, to.size());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.range(0) * state.iterations());
}

void Read(benchmark::State& state) {
  const std::vector<std::uint64_t> from(static_cast<std::size_t>(state.range(0)) / 8, 1);
  for (auto _ : state) {
    benchmark::DoNotOptimize(std::accumulate(from.begin(), from.end(), std::uint64_t{0}));
  }
  state.SetBytesProcessed(state.range(0) * state.iterations());
}

// Everything between a swath and the bulk writes.
void Frame(benchmark::State& state) {
  bench::IdlePlatform platform;
  const std::vector<std::uint8_t> swath(kSwathBytes, 0x5A);
  for (auto _ : state) {
    if (LinkSend(1, swath.data(), kSwathBytes, kTypeData) != 1) state.SkipWithError("not sent");
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(kSwathBytes) * state.iterations());
}

// Lines of a band, all planes, without the passes that the last one sets off.
void Intake(benchmark::State& state) {
  bench::BenchJob bench({1440});
  Job& job = bench.Record();
  const std::vector<std::uint8_t> line(kLineBytes, 0x5A);
  for (auto _ : state) {
    for (std::uint32_t color = 0; color < kPlanes; ++color)
      AddLine(job, color, kLineBytes, line.data());
    if (job.bandLine + 1u == job.swathH) job.bandLine = 0;
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(kLineBytes * kPlanes) * state.iterations());
}

BENCHMARK(Copy)->Name("memory/copy")->Arg(kLineBytes)->Arg(kSwathBytes);
BENCHMARK(Fill)->Name("memory/fill")->Arg(kSwathBytes);
BENCHMARK(Read)->Name("memory/read")->Arg(kSwathBytes);
BENCHMARK(Frame)->Name("framing");
BENCHMARK(Intake)->Name("intake");

}  // namespace
