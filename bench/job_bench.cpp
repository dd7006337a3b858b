// A whole job on a printer that takes everything at once, in one thread: lines, bands, swaths, the
// queue, framed writes. The queue is emptied where the host's thread waits for a slot, so that the
// data have left the caches as they do when a printer takes its time.
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "bench/bench_job.h"
#include "bench/limits.h"
#include "bench/measure.h"
#include "bench/sending.h"
#include "raster/line_intake.h"
#include "raster/swath_builder.h"
#include "raster/swath_queue.h"
#include "reference/plain_raster.h"

namespace qrn::bench {
namespace {

using plain::PlainRaster;

constexpr double kMmPerMetre = 1000;

struct JobTime {
  double lines = 0;  // while lines come in
  double end = 0;    // from the last line to the last write
  double Total() const { return lines + end; }
};

JobTime RunCore(BenchJob& bench, const Lines& lines) {
  Job& job = bench.Record();
  bench.Restart();
  job.bTxRun = 1;
  bench.System().onSleep = [&job] { SendReady(job); };
  const auto bytes = static_cast<std::uint32_t>(lines[0].size());
  JobTime time;
  time.lines = SecondsOf([&] {
    for (std::uint32_t line = 0; line < job.nHeight; ++line) {
      for (std::uint32_t plane = 0; plane < kPlanes; ++plane)
        (void)AddLine(job, plane, bytes, LineOf(lines, plane, line));  // every line is usable
    }
  });
  time.end = SecondsOf([&job] {
    if (FlushLastBands(job) != 1) Fail("job", "the last bands failed");
    (void)WaitSwathQueue(job);  // always true
  });
  return time;
}

// The plain raster's passes through the core's queue. Each is copied into a buffer that PutSwath
// may keep.
class PlainJob {
 public:
  PlainJob(const Job& job, IdlePlatform& system) : raster_(job), handed_(job.printOutBufSize) {
    Job& own = raster_.Record();
    own.bTxRun = 1;
    for (std::uint32_t slot = 0; slot < kSwathSlots; ++slot) {
      slots_[slot].resize(job.printOutBufSize);
      own.swathQueue[slot].pSwathData = slots_[slot].data();
    }
    free_ = handed_.data();
    system.onSleep = [&own] { SendReady(own); };
  }

  JobTime Run(const Lines& lines) {
    Job& own = raster_.Record();
    const auto take = [this](PlainRaster&) { Take(); };
    const auto bytes = static_cast<std::uint32_t>(lines[0].size());
    JobTime time;
    time.lines = SecondsOf([&] {
      for (std::uint32_t line = 0; line < own.nHeight; ++line) {
        for (std::uint32_t plane = 0; plane < kPlanes; ++plane)
          raster_.AddLine(plane, bytes, LineOf(lines, plane, line), take);
      }
    });
    time.end = SecondsOf([&] {
      raster_.Flush(take);
      (void)WaitSwathQueue(own);  // always true
    });
    return time;
  }

 private:
  void Take() {
    Job& own = raster_.Record();
    if (own.passEmpty == 0) {
      const std::uint32_t units = (own.passDataSize + kSwathUnitBytes - 1) / kSwathUnitBytes;
      std::memcpy(free_, raster_.PrintOut(),
                  std::min(units * kSwathUnitBytes, own.printOutBufSize));
    }
    std::uint8_t* const columns = own.PrintOutBuf;
    own.PrintOutBuf = free_;
    if (!PutSwath(own)) Fail("plain job", "no swath");
    free_ = own.PrintOutBuf;
    own.PrintOutBuf = columns;
  }

  PlainRaster raster_;
  std::vector<std::uint8_t> handed_, slots_[kSwathSlots];
  std::uint8_t* free_;
};

struct Checked {
  JobTime plain;
  Sweeps sweeps;
};

// The same job through both; the bytes that leave must be the same.
Checked CheckJob(const std::string& where, BenchJob& bench, const Lines& lines) {
  Checked checked;
  std::uint64_t wanted = 0;
  {
    bench.Restart();
    PlainJob plain(bench.Record(), bench.System());
    ResetSequence(bench.System());
    StreamHash hash(bench.System());
    checked.plain = plain.Run(lines);
    // Hashing goes on in both parts; it is small against either.
    const double share = 1 - hash.Seconds() / checked.plain.Total();
    checked.plain.lines *= share;
    checked.plain.end *= share;
    wanted = hash.Value();
  }
  ResetSequence(bench.System());
  StreamHash hash(bench.System());
  (void)RunCore(bench, lines);  // for its bytes
  if (hash.Value() != wanted || hash.DataMessages() == 0) Fail(where, "other bytes went out");
  const Job& job = bench.Record();
  checked.sweeps = {job.passNo, hash.DataMessages(), job.passNo / job.passCount};
  return checked;
}

Timing RunJob(benchmark::State& state, const std::string& name, const JobSpec& spec) {
  BenchJob bench(spec);
  Job& job = bench.Record();
  const Lines lines = InkLines(kDifferentLines, bench.LineBytes(), 30);
  const Checked checked = CheckJob(name, bench, lines);

  Samples total, taking, ending;
  while (!total.Enough()) {
    const JobTime time = RunCore(bench, lines);
    total.Add(time.Total());
    taking.Add(time.lines);
    ending.Add(time.end);
  }
  const Timing timing = total.Result();
  const double lengthMetres = 1.0 * spec.height / LinesOfMm(kMmPerMetre);
  const double squareMetres = spec.widthMm / kMmPerMetre * lengthMetres;
  const double perMetre = taking.Result().seconds / lengthMetres + ending.Result().seconds;
  state.counters["plain_ms"] = 1e3 * checked.plain.Total();
  state.counters["plain_ratio"] = checked.plain.Total() / timing.seconds;
  state.counters["s_per_m2"] = timing.seconds / squareMetres;
  state.counters["plain_s_per_m2"] = checked.plain.Total() / squareMetres;
  // A page of one metre has as much of an end as this one.
  state.counters["s_per_m2_of_1m"] = perMetre / spec.widthMm * kMmPerMetre;
  state.counters["plain_s_per_m2_of_1m"] =
      (checked.plain.lines / lengthMetres + checked.plain.end) / spec.widthMm * kMmPerMetre;
  state.counters["of_sweeps"] = SweepSeconds(job, checked.sweeps) / timing.seconds;
  state.counters["of_limit"] = checked.sweeps.printingPasses * LeastSeconds(job) / timing.seconds;
  state.counters["ms_per_band"] = 1e3 * taking.Result().seconds * job.swathH / spec.height;
  return timing;
}

void RegisterJob(const std::string& name, const JobSpec& spec) {
  Register(name, [name, spec](benchmark::State& state) { return RunJob(state, name, spec); });
}

}  // namespace

void RegisterJobs(double lengthMm) {
  for (JobSpec spec : kModes) {
    if (spec.oneHead) continue;
    spec.height = LinesOfMm(lengthMm);
    RegisterJob(std::string("job/") + spec.name, spec);
  }
  for (const std::uint32_t bands : {4u, 8u, 16u}) {
    JobSpec spec{"1440dpi", 1440, false, 200};
    spec.height = bands * 720;  // a few lines more than that many bands
    RegisterJob("length/" + std::to_string(bands) + "bands", spec);
  }
}

}  // namespace qrn::bench
