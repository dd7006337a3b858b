// qrn_bench [--job-mm=LENGTH] [options of Google Benchmark]
//
// Measures the library's work against the plain raster and against the memory of the same machine,
// in the same run. Every measurement first checks the bytes; a difference ends the run with exit
// code 1.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include "bench/measure.h"

namespace {

constexpr double kComparedMm = 200;

std::string Processor() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);) {
    if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
  }
  return "unknown";
}

void AddContext() {
  benchmark::AddCustomContext("processor", Processor());
#ifdef __clang__
  benchmark::AddCustomContext("compiler", __VERSION__);
#else
  benchmark::AddCustomContext("compiler", "GCC " __VERSION__);
#endif
  benchmark::AddCustomContext("bits", std::to_string(8 * sizeof(void*)));
  benchmark::AddCustomContext("build", QRN_BENCH_BUILD);
  benchmark::AddCustomContext("flags", QRN_BENCH_FLAGS);
#ifndef __OPTIMIZE__
  benchmark::AddCustomContext("warning", "not optimised: the numbers mean nothing");
#endif
}

// Takes --job-mm=LENGTH out of the arguments.
double TakeJobMm(int* argc, char** argv) {
  constexpr char kOption[] = "--job-mm=";
  double lengthMm = kComparedMm;
  int kept = 0;
  for (int i = 0; i < *argc; ++i) {
    if (std::strncmp(argv[i], kOption, sizeof kOption - 1) == 0)
      lengthMm = std::atof(argv[i] + sizeof kOption - 1);
    else
      argv[kept++] = argv[i];
  }
  *argc = kept;
  return lengthMm;
}

}  // namespace

int main(int argc, char** argv) {
  const double jobMm = TakeJobMm(&argc, argv);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv) || jobMm < 1) return 2;
  AddContext();
  qrn::bench::RegisterCopies();
  qrn::bench::RegisterPasses();
  qrn::bench::RegisterBands();
  qrn::bench::RegisterJobs(jobMm);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}
