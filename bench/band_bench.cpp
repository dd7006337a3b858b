// A whole band: its lines taken in, its passes cleared, tested and converted, the rows moved on; no
// swaths.
#include <cstring>
#include <string>

#include "bench/bench_job.h"
#include "bench/check.h"
#include "bench/limits.h"
#include "bench/measure.h"
#include "job/heads.h"
#include "params/connect.h"
#include "raster/band.h"
#include "raster/convert.h"
#include "raster/line_intake.h"
#include "raster/pass_rows.h"

namespace qrn::bench {
namespace {

using plain::PlainRaster;

constexpr std::uint32_t kPlainBands = 2;

// The lines of a band. The very last one would set off passes and swaths: it goes into its row
// directly.
void TakeLines(Job& job, const Lines& lines, std::uint32_t firstLine) {
  const auto bytes = static_cast<std::uint32_t>(lines[0].size());
  for (std::uint32_t line = 0; line < job.swathH; ++line) {
    for (std::uint32_t color = 0; color < kColors; ++color) {
      const std::uint8_t* const source = LineOf(lines, color, firstLine + line);
      if (line + 1 == job.swathH && color + 1 == kColors) {
        StoreRow(job, color, std::uint32_t{job.historyRows} + line, source, bytes);
      } else {
        (void)AddLine(job, color, bytes, source);  // every line is usable
      }
    }
  }
}

void MoveOn(Job& job) {
  ShiftPassBuffers(job);
  job.bandLine = 0;
}

void RunBandPasses(Job& job) {
  for (std::uint32_t pass = 0; pass < job.passCount; ++pass) {
    job.passDir = NextSwathDir(job);
    RunPass(job);
  }
}

// Every row above the first band as if its lines had come in before, except that no earlier pass
// has taken dots out: each phase of a row is still there when its pass comes.
void FillHistory(Job& job, PlainRaster& plain, const Lines& lines) {
  const auto bytes = static_cast<std::uint32_t>(lines[0].size());
  for (std::uint32_t color = 0; color < kColors; ++color) {
    for (std::uint32_t row = 0; row < job.historyRows; ++row) {
      const std::uint8_t* const line = LineOf(lines, color, row);
      StoreRow(job, color, row, line, bytes);
      std::memcpy(plain.Row(color, row), line, bytes);
    }
  }
}

// Bands in both, side by side. Returns the plain one's time for a band.
Timing CheckBands(const std::string& where, Job& job, const Lines& lines) {
  PlainRaster plain(GeometryOf(job));
  Samples samples;
  FillHistory(job, plain, lines);
  for (std::uint32_t band = 0; band < kPlainBands; ++band) {
    const std::uint32_t first = band * job.swathH;
    TakeLines(job, lines, first);
    double seconds = SecondsOf([&] {
      for (std::uint32_t line = 0; line < job.swathH; ++line) {
        for (std::uint32_t color = 0; color < kColors; ++color) {
          std::memcpy(plain.Row(color, std::uint32_t{job.historyRows} + line),
                      LineOf(lines, color, first + line), lines[0].size());
        }
      }
    });
    for (std::uint32_t pass = 0; pass < job.passCount; ++pass) {
      job.passDir = NextSwathDir(job);
      bool printed = false;
      seconds += SecondsOf([&] { printed = plain.ConvertPass(pass, job.passDir); });
      RunPass(job);
      CheckPass(where, job, plain, printed);
    }
    seconds += SecondsOf([&plain] { plain.Shift(); });
    samples.Add(seconds);
    MoveOn(job);
  }
  CheckRows(where, job, plain);
  return samples.Result();
}

Timing RunBand(benchmark::State& state, const std::string& name, const JobSpec& mode,
               int inkPercent) {
  BenchJob bench(mode);
  Job& job = bench.Record();
  const Lines lines = InkLines(kDifferentLines, bench.LineBytes(), inkPercent);
  const Timing plain = CheckBands(name, job, lines);
  std::uint32_t line = 0;
  const Timing timing = Measure([] {},
                                [&] {
                                  TakeLines(job, lines, line);
                                  RunBandPasses(job);
                                  MoveOn(job);
                                  line += job.swathH;
                                });
  state.counters["plain_ms"] = 1e3 * plain.seconds;
  state.counters["plain_ratio"] = plain.seconds / timing.seconds;
  if (job.passEmpty == 0)
    state.counters["of_limit"] = job.passCount * LeastSeconds(job) / timing.seconds;
  return timing;
}

}  // namespace

void RegisterBands(const Plan& plan) {
  for (const JobSpec& whole : kModes) {
    const JobSpec mode = Scaled(whole, plan.scale);
    for (const int ink : {0, 5, 30, 100}) {
      const std::string name = std::string("band/") + mode.name + "/ink" + std::to_string(ink);
      Register(name, [name, mode, ink](benchmark::State& state) {
        return RunBand(state, name, mode, ink);
      });
    }
  }
}

}  // namespace qrn::bench
