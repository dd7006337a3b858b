// The clock, medians, and the speeds that memory itself reaches.
#ifndef QRN_BENCH_MEASURE_H_
#define QRN_BENCH_MEASURE_H_

#include <benchmark/benchmark.h>

#include <cstddef>
#include <string>
#include <vector>

namespace qrn::bench {

// Ends the run: what was to be measured does not do what the reference does.
[[noreturn]] void Fail(const std::string& where, const std::string& what);

// Seconds of processor time of this thread.
double CpuSeconds();

struct Timing {
  double seconds = 0;  // median
  double spread = 0;   // third minus first quartile, as a share of the median
};

class Samples {
 public:
  void Add(double seconds) { seconds_.push_back(seconds); }
  // Whether there are enough: 21; seven that took a quarter of a second; three that took two; or
  // what took four.
  bool Enough() const;
  Timing Result() const;

 private:
  std::vector<double> seconds_;
};

template <class Work>
double SecondsOf(Work work) {
  const double start = CpuSeconds();
  work();
  benchmark::ClobberMemory();
  return CpuSeconds() - start;
}

// Times `work` until there are enough samples, with `prepare` before each.
template <class Prepare, class Work>
Timing Measure(Prepare prepare, Work work) {
  Samples samples;
  while (!samples.Enough()) {
    prepare();
    samples.Add(SecondsOf(work));
  }
  return samples.Result();
}

// Bytes per second of one thread over as many bytes, measured once a run for each size: read into
// registers, fill with zeros, copy from one place to another.
double ReadSpeed(std::size_t bytes);
double FillSpeed(std::size_t bytes);
double CopySpeed(std::size_t bytes);

// Registers a measurement that takes its own medians: `run` is called once a repetition and returns
// what it measured, after it has checked the bytes. A Timing(benchmark::State&).
template <class Function>
void Register(const std::string& name, Function run) {
  benchmark::RegisterBenchmark(name.c_str(),
                               [run](benchmark::State& state) {
                                 for (auto _ : state) {
                                   const Timing timing = run(state);
                                   state.SetIterationTime(timing.seconds);
                                   state.counters["spread"] = timing.spread;
                                 }
                               })
      ->UseManualTime()
      ->Iterations(1)
      ->Unit(benchmark::kMillisecond);
}

// How much of it.
struct Plan {
  double scale = 1;         // of every width
  double comparedMm = 200;  // length of the jobs that run beside the plain raster
  double pageMm = 1000;     // length of the jobs that are reported
};
constexpr Plan kQuickPlan = {0.02, 30, 40};
// From now on one sample of each is enough: the bytes are what matters.
void TakeSingleSamples();

// One registering function a file.
void RegisterPasses(const Plan& plan);
void RegisterBands(const Plan& plan);
void RegisterJobs(const Plan& plan);
void RegisterCopies(const Plan& plan);

}  // namespace qrn::bench

#endif  // QRN_BENCH_MEASURE_H_
