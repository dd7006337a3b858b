#include "bench/measure.h"

#include <time.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <numeric>

namespace qrn::bench {
namespace {

bool g_singleSamples = false;

// One memory of speeds for each kind.
template <class Work>
double SpeedOnce(std::map<std::size_t, double>& known, std::size_t bytes, Work work) {
  const auto found = known.find(bytes);
  if (found != known.end()) return found->second;
  // Small sizes several times over, so that a sample is long against the clock.
  const std::size_t times = 1 + (std::size_t{16} << 20) / (bytes + 1);
  const Timing timing = Measure([] {},
                                [&] {
                                  for (std::size_t i = 0; i < times; ++i) {
                                    work();
                                    benchmark::ClobberMemory();
                                  }
                                });
  return known[bytes] = static_cast<double>(bytes * times) / timing.seconds;
}

}  // namespace

void Fail(const std::string& where, const std::string& what) {
  std::fprintf(stderr, "qrn_bench: %s: %s\n", where.c_str(), what.c_str());
  std::exit(1);
}

double CpuSeconds() {
  timespec now{};
  if (clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now) != 0) Fail("clock", "none for this thread");
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

void TakeSingleSamples() { g_singleSamples = true; }

bool Samples::Enough() const {
  if (g_singleSamples && !seconds_.empty()) return true;
  const double total = std::accumulate(seconds_.begin(), seconds_.end(), 0.0);
  return (seconds_.size() >= 7 && total >= 0.25) || (seconds_.size() >= 3 && total >= 2) ||
         total >= 4 || seconds_.size() >= 21;
}

Timing Samples::Result() const {
  if (seconds_.empty()) return {};
  std::vector<double> sorted = seconds_;
  std::sort(sorted.begin(), sorted.end());
  const std::size_t last = sorted.size() - 1;
  const double median = (sorted[last / 2] + sorted[sorted.size() / 2]) / 2;
  const double quartiles = sorted[last - last / 4] - sorted[last / 4];
  return {median, median > 0 ? quartiles / median : 0};
}

double ReadSpeed(std::size_t bytes) {
  static std::map<std::size_t, double> known;
  const std::vector<std::uint64_t> from(bytes / 8, 1);
  return SpeedOnce(known, bytes, [&from] {
    benchmark::DoNotOptimize(std::accumulate(from.begin(), from.end(), std::uint64_t{0}));
  });
}

double FillSpeed(std::size_t bytes) {
  static std::map<std::size_t, double> known;
  std::vector<std::uint8_t> to(bytes, 1);
  return SpeedOnce(known, bytes, [&to] {
    std::memset(to.data(), 0, to.size());
    benchmark::DoNotOptimize(to.data());
  });
}

double CopySpeed(std::size_t bytes) {
  static std::map<std::size_t, double> known;
  const std::vector<std::uint8_t> from(bytes, 1);
  std::vector<std::uint8_t> to(bytes, 2);
  return SpeedOnce(known, bytes, [&from, &to] {
    std::memcpy(to.data(), from.data(), to.size());
    benchmark::DoNotOptimize(to.data());
  });
}

}  // namespace qrn::bench
