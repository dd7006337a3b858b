#include "raster/pass_rows.h"

#include <algorithm>
#include <cstring>

#include "base/bytes.h"
#include "raster/column_modes.h"
#include "raster/feather_runs.h"
#include "raster/kernels.h"

namespace qrn {
namespace {

bool HasInk(const std::uint8_t* bytes, std::size_t count) {
  std::size_t at = 0;
  for (; at + kCacheLineBytes <= count; at += kCacheLineBytes) {
    std::uint64_t words[kCacheLineBytes / sizeof(std::uint64_t)];
    std::memcpy(words, bytes + at, sizeof words);
    if ((words[0] | words[1] | words[2] | words[3] | words[4] | words[5] | words[6] | words[7]) !=
        0)
      return true;
  }
  std::uint8_t last = 0;
  for (; at < count; ++at) last = Low8(last | bytes[at]);
  return last != 0;
}

std::uint32_t PartBytesOf(const RowLayout& layout, std::uint32_t part) {
  return std::min(kPartBytes, layout.runBytes - part * kPartBytes);
}

// The hardware prefetcher sees no stream in runs that are far apart, so the places of the next
// parts are prefetched here.
void PrefetchParts(const std::uint8_t* run, std::uint32_t phases, std::size_t runsApart) {
  for (std::uint32_t phase = 0; phase < phases; ++phase) {
    for (std::uint32_t at = 0; at < kPartBytes; at += kCacheLineBytes)
      __builtin_prefetch(run + phase * runsApart + at, 1);
  }
}

// One part of every run from the line's bytes that belong to it. What the line lacks is blank.
void StorePart(const RowLayout& layout, std::uint8_t* run, std::uint8_t* occupancy,
               std::uint32_t part, const std::uint8_t* line, std::uint32_t bytes) {
  constexpr std::uint32_t kPhasesMax = 8;
  const std::uint32_t wholeBytes = kPartBytes * layout.phases;
  const std::uint32_t partBytes = PartBytesOf(layout, part);
  const bool ink = HasInk(line, bytes);
  std::uint8_t filledUp[kPartBytes * kPhasesMax];
  if (ink && bytes < wholeBytes) {
    std::memcpy(filledUp, line, bytes);
    std::memset(filledUp + bytes, 0, wholeBytes - bytes);
    line = filledUp;
  }
  run += part * kPartBytes;
  const std::size_t runsApart = std::size_t{layout.rows} * layout.runBytes;
  unsigned inked = 0;
  if (ink) {
    PrefetchParts(run + kPartBytes, layout.phases, runsApart);
    inked = TheKernel().deinterleave(layout.phases, line, partBytes / kVectorBytes, run, runsApart);
  }
  for (std::uint32_t phase = 0; phase < layout.phases; ++phase) {
    if (!ink) std::memset(run + phase * runsApart, 0, partBytes);
    occupancy[phase * layout.parts + part] = Low8(inked >> phase & 1u);
  }
}

// Calls `act` on the occupancy of window lines [first, first + count) of a colour, which is in one
// or two pieces.
template <class Act>
bool ForOccupancy(const Job& job, std::uint32_t color, std::uint32_t first, std::uint32_t count,
                  Act act) {
  const RowLayout& layout = job.Mem.layout;
  const std::uint32_t begin = RingIndex(job, first);
  const std::uint32_t upTo = std::min(count, layout.rows - begin);
  return act(OccupancyAt(job, color, begin), std::size_t{upTo} * layout.occupancyBytes) &&
         act(OccupancyAt(job, color, 0), std::size_t{count - upTo} * layout.occupancyBytes);
}

}  // namespace

RowLayout LayoutOf(const Job& job) {
  RowLayout layout{};
  layout.rows = job.nResY * kPassBufferHeights;
  layout.lineBytes = job.lineStride;
  const ColumnMode* mode = ModeOf(job);
  const std::uint32_t printedBytes = std::min(job.nLineBits / 8, job.lineStride);
  if (mode != nullptr && printedBytes >= mode->needBytes) {
    const std::uint32_t groups = (printedBytes - mode->needBytes) / mode->groupBytes + 1;
    layout.deinterleavedBytes = groups * mode->groupBytes;
    layout.phases = mode->phases;
    layout.columns = layout.deinterleavedBytes * kPixelsPerByte / layout.phases;
    layout.runBytes = DivUp(layout.columns, kPixelsPerByte * kVectorBytes) * kVectorBytes;
    layout.parts = DivUp(layout.runBytes, kPartBytes);
  }
  layout.tailBytes = layout.lineBytes - layout.deinterleavedBytes;
  layout.occupancyBytes = layout.phases * layout.parts + 1;
  return layout;
}

std::uint64_t PassBufferBytes(const RowLayout& layout) {
  const std::uint64_t rowBytes = std::uint64_t{layout.phases} * layout.runBytes + layout.tailBytes;
  return layout.rows * (rowBytes + layout.occupancyBytes) + layout.lineBytes;
}

void StoreRow(Job& job, std::uint32_t color, std::uint32_t windowLine, const std::uint8_t* line,
              std::uint32_t bytes) {
  const RowLayout& layout = job.Mem.layout;
  const std::uint32_t index = RingIndex(job, windowLine);
  std::uint8_t* const occupancy = OccupancyAt(job, color, index);
  if (bytes < layout.lineBytes && HasInk(occupancy, layout.occupancyBytes)) {
    // A short line replaces the start of an earlier one; the bytes of that one after its end stay.
    std::uint8_t* const whole = TailAt(job, color, layout.rows);
    LoadRow(job, color, windowLine, whole);
    std::memcpy(whole, line, bytes);
    line = whole;
    bytes = layout.lineBytes;
  }
  const std::uint32_t deinterleavedBytes = std::min(bytes, layout.deinterleavedBytes);
  if (!HasInk(line, bytes)) {
    std::memset(occupancy, 0, layout.occupancyBytes);
    return;
  }
  std::uint8_t* const firstRun = RunAt(job, color, 0, index);
  const std::uint32_t partLineBytes = kPartBytes * layout.phases;
  for (std::uint32_t part = 0; part < layout.parts; ++part) {
    const std::uint32_t from = std::min(part * partLineBytes, deinterleavedBytes);
    StorePart(layout, firstRun, occupancy, part, line + from,
              std::min(partLineBytes, deinterleavedBytes - from));
  }
  std::uint8_t* const tail = TailAt(job, color, index);
  const std::uint32_t filled = bytes - deinterleavedBytes;
  std::memcpy(tail, line + deinterleavedBytes, filled);
  std::memset(tail + filled, 0, layout.tailBytes - filled);
  occupancy[layout.occupancyBytes - 1] = HasInk(tail, layout.tailBytes) ? 1 : 0;
}

void LoadRow(const Job& job, std::uint32_t color, std::uint32_t windowLine, std::uint8_t* line) {
  const RowLayout& layout = job.Mem.layout;
  const std::uint32_t index = RingIndex(job, windowLine);
  const std::uint8_t* const occupancy = OccupancyAt(job, color, index);
  std::memset(line, 0, layout.lineBytes);
  for (std::uint32_t phase = 0; phase < layout.phases; ++phase) {
    const std::uint8_t* const run = RunAt(job, color, phase, index);
    if (!HasInk(occupancy + phase * layout.parts, layout.parts)) continue;
    std::uint32_t pixel = phase;
    for (std::uint32_t column = 0; column < layout.columns; ++column, pixel += layout.phases) {
      const unsigned level = run[column / kPixelsPerByte] >> (2 * (column % kPixelsPerByte)) & 3u;
      std::uint8_t& target = line[pixel / kPixelsPerByte];
      target = Low8(target | level << (6 - 2 * (pixel % kPixelsPerByte)));
    }
  }
  if (occupancy[layout.occupancyBytes - 1] != 0) {
    std::memcpy(line + layout.deinterleavedBytes, TailAt(job, color, index), layout.tailBytes);
  }
}

void TakeOutPixels(Job& job, std::uint32_t color, std::uint32_t phase, std::uint32_t firstLine,
                   std::uint32_t count) {
  const RowLayout& layout = job.Mem.layout;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint32_t index = RingIndex(job, firstLine + 2 * i);
    std::memset(OccupancyAt(job, color, index) + phase * layout.parts, 0, layout.parts);
  }
}

void TakeOutFeathered(Job& job, std::uint32_t color, std::uint32_t phase, std::uint32_t windowLine,
                      const std::uint8_t* mask) {
  const RowLayout& layout = job.Mem.layout;
  const std::uint32_t index = RingIndex(job, windowLine);
  std::uint8_t* const run = RunAt(job, color, phase, index);
  std::uint8_t* const occupancy = OccupancyAt(job, color, index) + phase * layout.parts;
  for (std::uint32_t part = 0; part < layout.parts; ++part) {
    if (occupancy[part] == 0) continue;
    const std::uint32_t begin = part * kPartBytes;
    const std::uint32_t bytes = PartBytesOf(layout, part);
    const std::uint8_t* const cells = mask + begin % kFeatherPeriodBytes;
    for (std::uint32_t i = 0; i < bytes; ++i) run[begin + i] = Low8(run[begin + i] & ~cells[i]);
    occupancy[part] = HasInk(run + begin, bytes) ? 1 : 0;
  }
}

bool AreRowsBlank(const Job& job, std::uint32_t first, std::uint32_t count) {
  for (std::uint32_t color = 0; color < kColors; ++color) {
    const auto blank = [](const std::uint8_t* occupancy, std::size_t bytes) {
      return !HasInk(occupancy, bytes);
    };
    if (!ForOccupancy(job, color, first, count, blank)) return false;
  }
  return true;
}

void ClearRows(Job& job, std::uint32_t first, std::uint32_t count) {
  for (std::uint32_t color = 0; color < kColors; ++color) {
    (void)ForOccupancy(job, color, first, count, [](std::uint8_t* occupancy, std::size_t bytes) {
      std::memset(occupancy, 0, bytes);
      return true;
    });
  }
}

}  // namespace qrn
