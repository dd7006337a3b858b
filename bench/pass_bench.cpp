// One pass: cleared, converted, for every mode, direction and amount of ink; and over widths.
#include <algorithm>
#include <cstring>
#include <string>

#include "bench/bench_job.h"
#include "bench/check.h"
#include "bench/limits.h"
#include "bench/measure.h"
#include "job/heads.h"
#include "raster/convert.h"
#include "raster/pass_rows.h"

namespace qrn::bench {
namespace {

using plain::PlainRaster;

void FillRows(Job& job, const Lines& lines, std::uint32_t rows) {
  const auto bytes = static_cast<std::uint32_t>(lines[0].size());
  for (std::uint32_t color = 0; color < kColors; ++color) {
    for (std::uint32_t row = 0; row < rows; ++row)
      StoreRow(job, color, row, LineOf(lines, color, row), bytes);
  }
}

// Whether the pass prints nothing, in the plainest way.
bool IsBlankByteByByte(const Job& job, PlainRaster& plain) {
  const std::size_t bytes = std::size_t{job.checkRows} * job.lineStride;
  for (std::uint32_t color = 0; color < kColors; ++color) {
    const std::uint8_t* const first = plain.Row(color, job.passRow);
    if (!std::all_of(first, first + bytes, [](auto byte) { return byte == 0; })) return false;
  }
  return true;
}

// The passes of a band in both, side by side, compared pass by pass. Returns the plain one's time
// for a pass; for a blank one that of the byte-by-byte search alone.
Timing CheckPasses(const std::string& where, Job& job, const Lines& lines, std::uint8_t dir) {
  PlainRaster plain(GeometryOf(job));
  const std::uint32_t rows = job.Mem.layout.rows;
  FillRows(job, lines, rows);
  for (std::uint32_t color = 0; color < kColors; ++color) {
    for (std::uint32_t row = 0; row < rows; ++row)
      std::memcpy(plain.Row(color, row), LineOf(lines, color, row), lines[0].size());
  }
  Samples samples, blankSamples;
  job.passDir = dir;
  for (std::uint32_t pass = 0; pass < job.passCount; ++pass) {
    bool printed = false;
    samples.Add(SecondsOf([&] { printed = plain.ConvertPass(pass, dir); }));
    RunPass(job);
    CheckPass(where, job, plain, printed);
    if (printed) continue;
    bool blank = false;
    blankSamples.Add(SecondsOf([&] { blank = IsBlankByteByByte(job, plain); }));
    if (!blank) Fail(where, "two answers to whether the pass is blank");
  }
  CheckRows(where, job, plain);
  return job.passEmpty == 1 ? blankSamples.Result() : samples.Result();
}

struct PassCase {
  JobSpec spec;
  int inkPercent;
  bool reverse;
};

Timing ConvertOnePass(benchmark::State& state, const std::string& name, const PassCase& one) {
  BenchJob bench(one.spec);
  Job& job = bench.Record();
  const Lines lines = InkLines(kDifferentLines, bench.LineBytes(), one.inkPercent);
  const std::uint8_t dir = one.reverse ? 1 : 0;
  const Timing plain = CheckPasses(name, job, lines, dir);

  const Timing timing = Measure(
      [&] {
        if (job.passNo % job.passCount != 0) return;
        FillRows(job, lines, 4u * job.nResY);  // what the passes before have cleared
        job.passNo = 0;
        job.passDir = dir;
      },
      [&] { RunPass(job); });
  state.counters["plain_ms"] = 1e3 * plain.seconds;
  state.counters["plain_ratio"] = plain.seconds / timing.seconds;
  if (job.passEmpty == 1) return timing;
  state.counters["of_limit"] = LeastSeconds(job) / timing.seconds;
  state.counters["ns_per_column_byte"] = 1e9 * timing.seconds / job.passDataSize;
  return timing;
}

void RegisterPass(const std::string& name, const PassCase& one) {
  Register(name, [name, one](benchmark::State& state) { return ConvertOnePass(state, name, one); });
}

}  // namespace

void RegisterPasses(const Plan& plan) {
  for (const JobSpec& whole : kModes) {
    const JobSpec mode = Scaled(whole, plan.scale);
    const std::string pass = std::string("pass/") + mode.name;
    RegisterPass(pass + "/ink0", {mode, 0, false});  // a blank pass has no direction
    for (const int ink : {5, 30, 100}) {
      RegisterPass(pass + "/ink" + std::to_string(ink) + "/forward", {mode, ink, false});
      RegisterPass(pass + "/ink" + std::to_string(ink) + "/reverse", {mode, ink, true});
    }
  }
  for (const int widthMm : {100, 200, 500, 1000, 2000}) {
    const JobSpec spec{"1440dpi", 1440, false, widthMm * plan.scale};
    RegisterPass("width/" + std::to_string(widthMm) + "mm", {spec, 30, false});
  }
}

}  // namespace qrn::bench
