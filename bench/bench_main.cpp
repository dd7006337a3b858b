// qrn_bench [--job-mm=LENGTH | --quick] [--kernel=NAME] [options of Google Benchmark]
//
// Measures the library's work against the plain raster and against the memory of the same machine,
// in the same run. Every measurement first checks the bytes; a difference ends the run with exit
// code 1. --quick does all of it on pages as wide as a thumb, once: the checks without the numbers.
// --kernel: sse2, the best there is, or plain.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include "bench/measure.h"
#include "raster/kernels.h"

namespace {

std::string Processor() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);) {
    if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
  }
  return "unknown";
}

void ChooseKernel(const char* name) {
  for (const qrn::Kernel* kernel : qrn::Kernels()) {
    if (std::strcmp(kernel->name, name) != 0) continue;
    qrn::UseKernel(*kernel);
    return;
  }
  qrn::bench::Fail("--kernel", name);
}

void AddContext() {
  benchmark::AddCustomContext("processor", Processor());
#ifdef __clang__
  benchmark::AddCustomContext("compiler", __VERSION__);
#else
  benchmark::AddCustomContext("compiler", "GCC " __VERSION__);
#endif
  benchmark::AddCustomContext("bits", std::to_string(8 * sizeof(void*)));
  benchmark::AddCustomContext("kernel", qrn::TheKernel().name);
  benchmark::AddCustomContext("build", QRN_BENCH_BUILD);
  benchmark::AddCustomContext("flags", QRN_BENCH_FLAGS);
#ifndef __OPTIMIZE__
  benchmark::AddCustomContext("warning", "not optimised: the numbers mean nothing");
#endif
}

// Takes the program's own options out of the arguments.
qrn::bench::Plan TakePlan(int* argc, char** argv) {
  constexpr char kJobMm[] = "--job-mm=", kKernel[] = "--kernel=";
  qrn::bench::Plan plan;
  int kept = 0;
  for (int i = 0; i < *argc; ++i) {
    if (std::strncmp(argv[i], kJobMm, sizeof kJobMm - 1) == 0) {
      plan.comparedMm = std::atof(argv[i] + sizeof kJobMm - 1);
    } else if (std::strncmp(argv[i], kKernel, sizeof kKernel - 1) == 0) {
      ChooseKernel(argv[i] + sizeof kKernel - 1);
    } else if (std::strcmp(argv[i], "--quick") == 0) {
      plan = qrn::bench::kQuickPlan;
      qrn::bench::TakeSingleSamples();
    } else {
      argv[kept++] = argv[i];
    }
  }
  *argc = kept;
  return plan;
}

}  // namespace

int main(int argc, char** argv) {
  const qrn::bench::Plan plan = TakePlan(&argc, argv);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv) || plan.comparedMm < 1) return 2;
  AddContext();
  qrn::bench::RegisterCopies(plan);
  qrn::bench::RegisterPasses(plan);
  qrn::bench::RegisterBands(plan);
  qrn::bench::RegisterJobs(plan);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
}
