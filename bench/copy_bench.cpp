// What only moves bytes, beside a plain copy of the same bytes between the same kinds of places:
// line intake and framing; and the speeds that memory itself reaches.
#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "bench/bench_job.h"
#include "bench/check.h"
#include "bench/measure.h"
#include "job/heads.h"
#include "link/frame.h"
#include "link/transport.h"
#include "raster/line_intake.h"
#include "sim/wire/wire.h"

namespace qrn::bench {
namespace {

using plain::PlainRaster;

constexpr std::uint32_t kSwathBytes = 13'472'000;  // two heads, one metre, 1440 dpi

void SetSpeeds(benchmark::State& state, std::size_t bytes, const Timing& timing,
               const Timing& copy) {
  state.counters["GB_per_s"] = 1e-9 * static_cast<double>(bytes) / timing.seconds;
  state.counters["copy_GB_per_s"] = 1e-9 * static_cast<double>(bytes) / copy.seconds;
  state.counters["of_copy"] = copy.seconds / timing.seconds;
}

std::vector<std::uint8_t> RandomBytes(std::size_t bytes, std::uint32_t seed) {
  std::mt19937 random(seed);
  std::vector<std::uint8_t> all(bytes);
  for (std::uint8_t& byte : all) byte = static_cast<std::uint8_t>(random());
  return all;
}

void SendData(const std::vector<std::uint8_t>& swath) {
  if (LinkSend(1, swath.data(), static_cast<std::uint32_t>(swath.size()), kTypeData) != 1)
    Fail("framing", "not sent");
}

// The strict receiver takes the frames apart again.
void CheckFrames(IdlePlatform& system, const std::vector<std::uint8_t>& swath) {
  sim::WireReceiver receiver;
  std::vector<sim::WireMessage> messages;
  system.onWrite = [&](const std::uint8_t* data, std::uint32_t bytes) {
    receiver.Take(data, bytes, &messages);
  };
  SendData(swath);
  system.onWrite = nullptr;
  if (!receiver.Violation().empty()) Fail("framing", receiver.Violation());
  if (messages.size() != 1 || messages[0].bytes != swath) Fail("framing", "other bytes went out");
}

// From a swath to the bulk writes, the slots of the queue in turn; beside it a copy in pieces of a
// write into one place, because that is what the transport's buffer is.
Timing Frame(benchmark::State& state, std::size_t bytes) {
  IdlePlatform system;
  constexpr std::size_t kWriteBytes = std::size_t{kGroupSlots} * kSlotBytes;
  std::vector<std::vector<std::uint8_t>> slots;
  for (std::uint32_t slot = 0; slot < kSwathSlots; ++slot)
    slots.push_back(RandomBytes(bytes, slot));
  std::vector<std::uint8_t> place(kWriteBytes, std::uint8_t{1});
  CheckFrames(system, slots[0]);
  std::size_t turn = 0;
  const auto next = [&turn] { turn = (turn + 1) % kSwathSlots; };
  const Timing copy = Measure(next, [&] {
    for (std::size_t at = 0; at < bytes; at += kWriteBytes) {
      std::memcpy(place.data(), slots[turn].data() + at, std::min(kWriteBytes, bytes - at));
      benchmark::ClobberMemory();
    }
  });
  const Timing timing = Measure(next, [&] { SendData(slots[turn]); });
  SetSpeeds(state, bytes, timing, copy);
  return timing;
}

// The lines of a band but the last, which would set off the passes. No two are the same bytes in
// memory, and a band of them is more than the second-level cache holds.
Timing TakeIn(benchmark::State& state, const std::string& name, const JobSpec& mode) {
  BenchJob bench(mode);
  Job& job = bench.Record();
  PlainRaster plain(GeometryOf(job));
  const std::uint32_t bytes = bench.LineBytes(), lineCount = job.swathH - 1u;
  const auto image = RandomBytes(std::size_t{lineCount} * kColors * bytes, 1);
  const auto eachLine = [&](auto&& use) {
    const std::uint8_t* source = image.data();
    for (std::uint32_t line = 0; line < lineCount; ++line) {
      for (std::uint32_t color = 0; color < kColors; ++color, source += bytes)
        use(color, line, source);
    }
  };
  const auto take = [&] {
    job.bandLine = 0;
    eachLine([&](std::uint32_t color, std::uint32_t, const std::uint8_t* source) {
      (void)AddLine(job, color, bytes, source);  // every line is usable
    });
  };
  const auto copy = [&] {
    eachLine([&](std::uint32_t color, std::uint32_t line, const std::uint8_t* source) {
      std::memcpy(plain.Row(color, std::uint32_t{job.historyRows} + line), source, bytes);
    });
  };
  take();
  copy();
  CheckRows(name, job, plain);
  const Timing copying = Measure([] {}, copy);
  const Timing timing = Measure([] {}, take);
  SetSpeeds(state, image.size(), timing, copying);
  return timing;
}

template <class Speed>
void RegisterMemory(const std::string& name, std::size_t bytes, Speed speed) {
  Register("memory/" + name + "/" + std::to_string(bytes), [=](benchmark::State& state) {
    const double bytesPerSecond = speed(bytes);
    state.counters["GB_per_s"] = 1e-9 * bytesPerSecond;
    return Timing{static_cast<double>(bytes) / bytesPerSecond, 0};
  });
}

}  // namespace

void RegisterCopies(const Plan& plan) {
  // A line, a swath, and the lines of a pass, at 1440 dpi and one metre.
  for (const std::size_t bytes : {14'176u, kSwathBytes, 40'826'880u}) {
    RegisterMemory("read", bytes, ReadSpeed);
    RegisterMemory("fill", bytes, FillSpeed);
    RegisterMemory("copy", bytes, CopySpeed);
  }
  const auto framed = static_cast<std::size_t>(kSwathBytes * plan.scale) / kSwathUnitBytes;
  Register("framing",
           [framed](benchmark::State& state) { return Frame(state, framed * kSwathUnitBytes); });
  for (const JobSpec& whole : kModes) {
    const JobSpec mode = Scaled(whole, plan.scale);
    const std::string name = std::string("intake/") + mode.name;
    Register(name, [name, mode](benchmark::State& state) { return TakeIn(state, name, mode); });
  }
}

}  // namespace qrn::bench
