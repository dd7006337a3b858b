// A whole job on a printer that takes everything at once, in one thread: lines, bands, swaths, the
// queue, framed writes. The queue is emptied where the host's thread waits for a slot, so that the
// data have left the caches as they do when a printer takes its time.
#include <string>
#include <vector>

#include "bench/bench_job.h"
#include "bench/check.h"
#include "bench/limits.h"
#include "bench/measure.h"
#include "bench/sending.h"
#include "job/heads.h"
#include "params/connect.h"
#include "params/param_block.h"
#include "raster/line_intake.h"
#include "raster/swath_queue.h"
#include "reference/plain_job.h"

namespace qrn::bench {
namespace {

constexpr double kMmPerMetre = 1000;
constexpr int kInkPercent = 30;

struct JobTime {
  double lines = 0;  // while lines come in
  double total = 0;
};

// A job's time, and what it has swept over.
struct JobRun {
  JobTime time;
  Sweeps sweeps;
};

JobRun RunCore(BenchJob& bench, const Lines& lines) {
  Job& job = bench.Record();
  bench.Restart();
  job.bTxRun = 1;
  std::uint32_t sent = 0;
  bench.System().onSleep = [&job, &sent] { sent += SendReady(job); };
  const auto bytes = static_cast<std::uint32_t>(lines[0].size());
  JobRun run;
  run.time.lines = SecondsOf([&] {
    for (std::uint32_t line = 0; line < job.nHeight; ++line) {
      for (std::uint32_t color = 0; color < kColors; ++color)
        (void)AddLine(job, color, bytes, LineOf(lines, color, line));  // every line is usable
    }
  });
  run.time.total = run.time.lines + SecondsOf([&job] {
                     FlushLastBands(job);
                     WaitSwathQueue(job);
                   });
  bench.System().onSleep = nullptr;
  run.sweeps = {job.passNo, sent, job.passNo / job.passCount};
  return run;
}

// The same job on the plain raster: every swath is copied and sent.
double PlainSeconds(const Job& job, const Lines& lines) {
  std::vector<std::uint8_t> copy;
  plain::PlainJob plain(
      GetPrinterParams().bytes, DescOf(job), [&copy](const auto& header, const auto& data) {
        copy = data;
        SendSwath(header.data(), copy.data(), static_cast<std::uint32_t>(copy.size()));
      });
  const auto bytes = static_cast<std::uint32_t>(lines[0].size());
  return SecondsOf([&] {
    for (std::uint32_t line = 0; line < job.nHeight; ++line) {
      for (std::uint32_t color = 0; color < kColors; ++color)
        (void)plain.AddLine(color, bytes, LineOf(lines, color, line));  // every line is usable
    }
    plain.Flush();
  });
}

// The same job through both; the bytes that leave must be the same. Returns the plain one's time.
double CheckJob(const std::string& where, BenchJob& bench, const Lines& lines) {
  double seconds = 0;
  std::uint64_t wanted = 0;
  {
    ResetSequence(bench.System());
    const StreamHash hash(bench.System());
    seconds = PlainSeconds(bench.Record(), lines) - hash.Seconds();
    wanted = hash.Value();
  }
  ResetSequence(bench.System());
  const StreamHash hash(bench.System());
  const JobRun run = RunCore(bench, lines);
  if (run.sweeps.printingPasses == 0) Fail(where, "nothing was printed");
  if (hash.Value() != wanted) Fail(where, "other bytes went out");
  return seconds;
}

struct JobTiming {
  Timing total;
  double linesSeconds;
  Sweeps sweeps;
};

JobTiming MeasureJob(BenchJob& bench, const Lines& lines) {
  Samples total, taking;
  Sweeps sweeps{};
  while (!total.Enough()) {
    const JobRun run = RunCore(bench, lines);
    total.Add(run.time.total);
    taking.Add(run.time.lines);
    sweeps = run.sweeps;
  }
  return {total.Result(), taking.Result().seconds, sweeps};
}

// The page that is compared with the plain raster's may be shorter than the one that is reported.
struct JobCase {
  JobSpec spec;
  double comparedMm, lengthMm;
};

Timing RunJob(benchmark::State& state, const std::string& name, const JobCase& one) {
  JobSpec spec = one.spec;
  spec.height = LinesOfMm(one.comparedMm);
  BenchJob bench(spec);
  Job& job = bench.Record();
  const Lines lines = InkLines(kDifferentLines, bench.LineBytes(), kInkPercent);
  const double plainSeconds = CheckJob(name, bench, lines);
  JobTiming timing = MeasureJob(bench, lines);
  state.counters["plain_ms"] = 1e3 * plainSeconds;
  state.counters["plain_ratio"] = plainSeconds / timing.total.seconds;
  state.counters["plain_s_per_m2"] =
      plainSeconds / (spec.widthMm * one.comparedMm) * kMmPerMetre * kMmPerMetre;
  if (one.lengthMm != one.comparedMm) {
    job.nHeight = LinesOfMm(one.lengthMm);
    timing = MeasureJob(bench, lines);
  }
  const double seconds = timing.total.seconds;
  state.counters["s_per_m2"] = seconds / (spec.widthMm * one.lengthMm) * kMmPerMetre * kMmPerMetre;
  state.counters["of_sweeps"] = SweepSeconds(job, timing.sweeps) / seconds;
  state.counters["of_limit"] = timing.sweeps.printingPasses * LeastSeconds(job) / seconds;
  const std::uint32_t bands = job.nHeight / job.swathH;  // while lines come in
  if (bands > 0) state.counters["ms_per_band"] = 1e3 * timing.linesSeconds / bands;
  return timing.total;
}

void RegisterJob(const std::string& name, const JobCase& one) {
  Register(name, [name, one](benchmark::State& state) { return RunJob(state, name, one); });
}

}  // namespace

void RegisterJobs(const Plan& plan) {
  for (const JobSpec& mode : kModes) {
    if (mode.oneHead) continue;
    RegisterJob(std::string("job/") + mode.name,
                {Scaled(mode, plan.scale), plan.comparedMm, plan.pageMm});
  }
  const JobSpec narrow{"1440dpi", 1440, false, 200 * plan.scale};
  for (const int lengthMm : {200, 400, 800}) {
    const double mm = lengthMm * plan.pageMm / kMmPerMetre;
    RegisterJob("length/" + std::to_string(lengthMm) + "mm", {narrow, mm, mm});
  }
}

}  // namespace qrn::bench
