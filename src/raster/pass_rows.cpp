#include "raster/pass_rows.h"

#include <algorithm>
#include <cstring>

#include "base/bytes.h"
#include "raster/column_modes.h"
#include "raster/kernels.h"

namespace qrn {
namespace {

bool HasInk(const std::uint8_t* bytes, std::size_t count) {
  std::size_t at = 0;
  for (; at + 64 <= count; at += 64) {
    std::uint64_t words[8];
    std::memcpy(words, bytes + at, sizeof words);
    if ((words[0] | words[1] | words[2] | words[3] | words[4] | words[5] | words[6] | words[7]) !=
        0)
      return true;
  }
  std::uint8_t rest = 0;
  for (; at < count; ++at) rest = Low8(rest | bytes[at]);
  return rest != 0;
}

std::uint32_t PartBytesOf(const RowLayout& layout, std::uint32_t part) {
  return std::min(kPartBytes, layout.runBytes - part * kPartBytes);
}

// The processor sees no stream in runs that lie far apart: it is told where the next parts go.
void PrefetchParts(const std::uint8_t* run, std::uint32_t phases, std::size_t runsApart) {
  for (std::uint32_t phase = 0; phase < phases; ++phase) {
    for (std::uint32_t at = 0; at < kPartBytes; at += kCacheLineBytes)
      __builtin_prefetch(run + phase * runsApart + at, 1);
  }
}

// One part of every run from the line's bytes that belong to it. What the line lacks is blank.
void StorePart(const RowLayout& layout, std::uint8_t* run, std::uint8_t* marks, std::uint32_t part,
               const std::uint8_t* line, std::uint32_t bytes) {
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
    inked = TheKernel().sort(layout.phases, line, partBytes / kVectorBytes, run, runsApart);
  }
  for (std::uint32_t phase = 0; phase < layout.phases; ++phase) {
    if (!ink) std::memset(run + phase * runsApart, 0, partBytes);
    marks[phase * layout.parts + part] = Low8(inked >> phase & 1u);
  }
}

// The marks of rows [first, first + count) of a plane, which lie in one or two pieces.
template <class Act>
bool ForMarks(const Job& job, std::uint32_t plane, std::uint32_t first, std::uint32_t count,
              Act act) {
  const RowLayout& layout = job.Mem.layout;
  const std::uint32_t begin = RingIndex(job, first);
  const std::uint32_t upTo = std::min(count, layout.rows - begin);
  return act(RowMarks(job, plane, begin), std::size_t{upTo} * layout.marks) &&
         act(RowMarks(job, plane, 0), std::size_t{count - upTo} * layout.marks);
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
    layout.sortedBytes = groups * mode->groupBytes;
    layout.phases = mode->columnPixels;
    layout.columns = layout.sortedBytes * kPixelsPerByte / layout.phases;
    layout.runBytes = DivUp(layout.columns, kPixelsPerByte * kVectorBytes) * kVectorBytes;
    layout.parts = DivUp(layout.runBytes, kPartBytes);
  }
  layout.restBytes = layout.lineBytes - layout.sortedBytes;
  layout.marks = layout.phases * layout.parts + 1;
  return layout;
}

std::uint64_t PassBufferBytes(const RowLayout& layout) {
  const std::uint64_t rowBytes = std::uint64_t{layout.phases} * layout.runBytes + layout.restBytes;
  return layout.rows * (rowBytes + layout.marks) + layout.lineBytes;
}

void StoreRow(Job& job, std::uint32_t plane, std::uint32_t row, const std::uint8_t* line,
              std::uint32_t bytes) {
  const RowLayout& layout = job.Mem.layout;
  const std::uint32_t index = RingIndex(job, row);
  std::uint8_t* const marks = RowMarks(job, plane, index);
  if (bytes < layout.lineBytes && HasInk(marks, layout.marks)) {
    // A short line over one that came before: what lies behind it stays.
    std::uint8_t* const whole = RestAt(job, plane, layout.rows);
    LoadRow(job, plane, row, whole);
    std::memcpy(whole, line, bytes);
    line = whole;
    bytes = layout.lineBytes;
  }
  const std::uint32_t sortedBytes = std::min(bytes, layout.sortedBytes);
  if (!HasInk(line, bytes)) {
    std::memset(marks, 0, layout.marks);
    return;
  }
  std::uint8_t* const firstRun = RunAt(job, plane, 0, index);
  const std::uint32_t partLineBytes = kPartBytes * layout.phases;
  for (std::uint32_t part = 0; part < layout.parts; ++part) {
    const std::uint32_t from = std::min(part * partLineBytes, sortedBytes);
    StorePart(layout, firstRun, marks, part, line + from,
              std::min(partLineBytes, sortedBytes - from));
  }
  std::uint8_t* const rest = RestAt(job, plane, index);
  const std::uint32_t filled = bytes - sortedBytes;
  std::memcpy(rest, line + sortedBytes, filled);
  std::memset(rest + filled, 0, layout.restBytes - filled);
  marks[layout.marks - 1] = HasInk(rest, layout.restBytes) ? 1 : 0;
}

void LoadRow(const Job& job, std::uint32_t plane, std::uint32_t row, std::uint8_t* line) {
  const RowLayout& layout = job.Mem.layout;
  const std::uint32_t index = RingIndex(job, row);
  const std::uint8_t* const marks = RowMarks(job, plane, index);
  std::memset(line, 0, layout.lineBytes);
  for (std::uint32_t phase = 0; phase < layout.phases; ++phase) {
    const std::uint8_t* const run = RunAt(job, plane, phase, index);
    if (!HasInk(marks + phase * layout.parts, layout.parts)) continue;
    std::uint32_t pixel = phase;
    for (std::uint32_t column = 0; column < layout.columns; ++column, pixel += layout.phases) {
      const unsigned level = run[column / kPixelsPerByte] >> (2 * (column % kPixelsPerByte)) & 3u;
      std::uint8_t& target = line[pixel / kPixelsPerByte];
      target = Low8(target | level << (6 - 2 * (pixel % kPixelsPerByte)));
    }
  }
  if (marks[layout.marks - 1] != 0) {
    std::memcpy(line + layout.sortedBytes, RestAt(job, plane, index), layout.restBytes);
  }
}

void MarkRun(const RowLayout& layout, const std::uint8_t* run, std::uint8_t* marks) {
  for (std::uint32_t part = 0; part < layout.parts; ++part) {
    if (marks[part] != 0)
      marks[part] = HasInk(run + part * kPartBytes, PartBytesOf(layout, part)) ? 1 : 0;
  }
}

bool AreRowsBlank(const Job& job, std::uint32_t first, std::uint32_t count) {
  for (std::uint32_t plane = 0; plane < kColors; ++plane) {
    const auto blank = [](const std::uint8_t* marks, std::size_t bytes) {
      return !HasInk(marks, bytes);
    };
    if (!ForMarks(job, plane, first, count, blank)) return false;
  }
  return true;
}

void ClearRows(Job& job, std::uint32_t first, std::uint32_t count) {
  for (std::uint32_t plane = 0; plane < kColors; ++plane) {
    (void)ForMarks(job, plane, first, count, [](std::uint8_t* marks, std::size_t bytes) {
      std::memset(marks, 0, bytes);
      return true;
    });
  }
}

}  // namespace qrn
