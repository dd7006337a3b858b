#include "raster/tile_walk.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "base/bytes.h"
#include "job/print_out.h"
#include "raster/feather_runs.h"
#include "raster/kernels.h"
#include "raster/pass_rows.h"

namespace qrn {
namespace {

constexpr std::uint32_t kGroups = DivUp(kNozzles, kGroupNozzles);
constexpr std::uint32_t kStripColumns = 4 * kStripBytes;
// The columns of a tile, 32 KiB of cache lines, stay in the first cache while its 16 bytes of each
// are laid group by group.
constexpr std::uint32_t kTileColumns = 256;
static_assert(kStripReadBytes <= kPartBytes + 1, "a strip reads two parts of a run at most");

JetRows g_groups[kGroups];  // what the pass before has left in them is noted in their ink
alignas(64) std::uint8_t g_tile[kTileColumns * kColumnBytes];

// What a strip reads of the runs of one nozzle row.
struct Window {
  std::int32_t byte;        // of the run, the strip's first; may lie in front of the run
  unsigned shift;           // bits of that byte in front of the strip
  std::int32_t begin, end;  // what the run has of it; nothing when begin >= end
  bool whole;
};

Window WindowAt(const RowLayout& layout, std::int32_t column) {
  constexpr std::int32_t kRead = kStripReadBytes;
  Window window{};
  window.byte = column >> 2;
  window.shift = 2 * (static_cast<unsigned>(column) % 4);
  window.begin = std::max(window.byte, 0);
  window.end = std::min(window.byte + kRead, static_cast<std::int32_t>(layout.runBytes));
  window.whole = window.end - window.begin == kRead;
  return window;
}

class Walk {
 public:
  Walk(const Job& job, const ConvertParams& params, const ColumnWalk& columns)
      : job_(job), layout_(job.Mem.layout), params_(params), columns_(columns) {
    std::uint8_t taken[2] = {};  // nozzle rows of either head
    for (std::uint32_t i = 0; i < params.rowCount; ++i) {
      const PassRow& row = params.rows[i];
      isSecond_[i] = (taken[row.head] >> row.slot & 1u) != 0;
      taken[row.head] = Low8(taken[row.head] | 1u << row.slot);
    }
  }

  void Run() {
    for (std::uint32_t column = 0; column < columns_.columns; column += kStripColumns) {
      SetWindows(column);
      FindRuns(0);
      for (std::uint32_t group = 0; group < kGroups; ++group) {
        // The next group's runs are on their way while this one's are aligned.
        if (group + 1 < kGroups) FindRuns(group + 1);
        FillGroup(group);
      }
      LayStrip(column);
    }
  }

 private:
  void SetWindows(std::uint32_t column) {
    for (std::uint32_t i = 0; i < params_.rowCount; ++i) {
      const std::int32_t lead = columns_.reverse ? columns_.firstRowColumn - params_.rows[i].column
                                                 : params_.rows[i].column - columns_.firstRowColumn;
      windows_[i] = WindowAt(layout_, static_cast<std::int32_t>(column) - lead);
    }
  }

  // Finds what the strip reads for a group, and has it brought into the cache.
  void FindRuns(std::uint32_t group) {
    const std::uint32_t firstNozzle = group * kGroupNozzles;
    const std::uint32_t nozzles = std::min(kGroupNozzles, kNozzles - firstNozzle);
    for (std::uint32_t i = 0; i < params_.rowCount; ++i) {
      const PassRow& row = params_.rows[i];
      auto& runs = runs_[group % 2][i];
      std::fill(std::begin(runs), std::end(runs), nullptr);
      const Window& window = windows_[i];
      if (window.begin >= window.end) continue;
      const std::uint32_t firstPart = static_cast<std::uint32_t>(window.begin) / kPartBytes;
      const std::uint32_t lastPart = static_cast<std::uint32_t>(window.end - 1) / kPartBytes;
      for (std::uint32_t n = 0; n < nozzles; ++n) {
        const std::uint32_t index = RingIndex(job_, row.firstRow + 2 * (firstNozzle + n));
        const std::uint8_t* const marks =
            RowMarks(job_, row.plane, index) + columns_.phase * layout_.parts;
        if ((marks[firstPart] | marks[lastPart]) == 0) continue;
        runs[n] = RunAt(job_, row.plane, columns_.phase, index);
        for (std::int32_t at = window.begin; at < window.end; at += std::int32_t{kCacheLineBytes})
          __builtin_prefetch(runs[n] + at);
      }
    }
  }

  void FillGroup(std::uint32_t group) {
    SetInk(group, g_groups[group]);
    for (std::uint32_t i = 0; i < params_.rowCount; ++i) AlignRuns(group, i);
  }

  // Which rows have dots now. What others had before becomes zeros.
  void SetInk(std::uint32_t group, JetRows& jets) const {
    std::uint8_t ink[kGroupJets] = {}, written[kGroupJets] = {};
    for (std::uint32_t i = 0; i < params_.rowCount; ++i) {
      const PassRow& row = params_.rows[i];
      for (std::uint32_t n = 0; n < kGroupNozzles; ++n) {
        if (runs_[group % 2][i][n] == nullptr) continue;
        const std::uint32_t jet = 2 * n + row.head;
        ink[jet] = Low8(ink[jet] | 1u << row.slot);
        if (!isSecond_[i]) written[jet] = Low8(written[jet] | 1u << row.slot);
      }
    }
    for (std::uint32_t jet = 0; jet < kGroupJets; ++jet) {
      const unsigned stale = jets.ink[jet] & ~written[jet];
      for (std::uint32_t row = 0; row < kJetRows; ++row) {
        if ((stale >> row & 1u) != 0) std::memset(jets.rows[jet][row], 0, kStripBytes);
      }
      jets.ink[jet] = ink[jet];
    }
  }

  void AlignRuns(std::uint32_t group, std::uint32_t i) const {
    const PassRow& row = params_.rows[i];
    const Window& window = windows_[i];
    const std::uint32_t firstNozzle = group * kGroupNozzles;
    const bool plain = window.whole && firstNozzle + kGroupNozzles <= params_.nozzleCount;
    const std::uint8_t* sources[kGroupNozzles];
    std::uint8_t patches[kGroupNozzles][kStripReadBytes];
    for (std::uint32_t n = 0; n < kGroupNozzles; ++n) {
      const std::uint8_t* const run = runs_[group % 2][i][n];
      sources[n] = run == nullptr ? nullptr
                   : plain        ? run + window.byte
                                  : Patch(firstNozzle + n, run, window, patches[n]);
    }
    TheKernel().align(sources, window.shift, g_groups[group].rows[row.head][row.slot],
                      isSecond_[i]);
  }

  // What is read of a run that ends in the strip or is feathered, put together aside.
  const std::uint8_t* Patch(std::uint32_t nozzle, const std::uint8_t* run, const Window& window,
                            std::uint8_t (&patch)[kStripReadBytes]) const {
    const auto before = static_cast<std::size_t>(window.begin - window.byte);
    const auto bytes = static_cast<std::size_t>(window.end - window.begin);
    std::memset(patch, 0, before);
    std::memcpy(patch + before, run + window.begin, bytes);
    std::memset(patch + before + bytes, 0, sizeof patch - before - bytes);
    if (nozzle >= params_.nozzleCount) {
      const std::uint8_t* mask = FeatherRun(job_, columns_.phase, nozzle - params_.nozzleCount) +
                                 static_cast<std::uint32_t>(window.byte) % kFeatherPeriodBytes;
      for (std::uint32_t i = 0; i < kStripReadBytes; ++i) patch[i] = Low8(patch[i] & mask[i]);
    }
    return patch;
  }

  void LayStrip(std::uint32_t firstColumn) {
    const std::uint32_t end = std::min(firstColumn + kStripColumns, columns_.columns);
    for (std::uint32_t column = firstColumn; column < end; column += kTileColumns) {
      const std::uint32_t columns = std::min(kTileColumns, end - column);
      for (std::uint32_t group = 0; group < kGroups; ++group)
        LayGroup(group, (column - firstColumn) / 4, columns);
      const std::uint32_t lowest = columns_.reverse ? columns_.firstColumn + 1 - column - columns
                                                    : columns_.firstColumn + column;
      TheKernel().stream(job_.PrintOutBuf + std::size_t{lowest} * kColumnBytes + params_.firstJet,
                         g_tile, std::size_t{columns} * kColumnBytes);
    }
  }

  void LayGroup(std::uint32_t group, std::uint32_t firstByte, std::uint32_t columns) const {
    constexpr std::ptrdiff_t kStep = kColumnBytes;
    const JetRows& jets = g_groups[group];
    const std::uint32_t nozzles = std::min(kGroupNozzles, kNozzles - group * kGroupNozzles);
    std::uint8_t* out = g_tile + kGroupJets * group;
    if (std::all_of(std::begin(jets.ink), std::end(jets.ink), [](auto ink) { return ink == 0; })) {
      for (; columns > 0; --columns, out += kStep) {
        std::memset(out, 0, 2 * nozzles);
        std::memset(out + kPlaneBytes, 0, 2 * nozzles);
      }
      return;
    }
    TheKernel().lay(jets, firstByte, nozzles, columns,
                    columns_.reverse ? out + kStep * (columns - 1) : out,
                    columns_.reverse ? -kStep : kStep);
  }

  const Job& job_;
  const RowLayout& layout_;
  const ConvertParams& params_;
  const ColumnWalk& columns_;
  bool isSecond_[kPassRows] = {};  // another colour fires through the same nozzle row
  Window windows_[kPassRows] = {};
  const std::uint8_t* runs_[2][kPassRows][kGroupNozzles];  // of two groups; null: no ink
};

// Leaves in a run what the mask of a feathered nozzle holds back.
void KeepHeldBack(const RowLayout& layout, const std::uint8_t* mask, std::uint8_t* run,
                  std::uint8_t* marks) {
  for (std::uint32_t part = 0; part < layout.parts; ++part) {
    if (marks[part] == 0) continue;
    const std::uint32_t begin = part * kPartBytes;
    const std::uint32_t end = std::min(begin + kPartBytes, layout.runBytes);
    const std::uint8_t* const cells = mask + begin % kFeatherPeriodBytes;
    for (std::uint32_t byte = begin; byte < end; ++byte)
      run[byte] = Low8(run[byte] & ~cells[byte - begin]);
  }
  MarkRun(layout, run, marks);
}

}  // namespace

void LayColumns(const Job& job, const ConvertParams& params, const ColumnWalk& walk) {
  Walk(job, params, walk).Run();
}

void TakeOutPixels(const Job& job, const ConvertParams& params, std::uint32_t phase) {
  const RowLayout& layout = job.Mem.layout;
  for (std::uint32_t i = 0; i < params.rowCount; ++i) {
    const PassRow& row = params.rows[i];
    for (std::uint32_t nozzle = 0; nozzle < kNozzles; ++nozzle) {
      const std::uint32_t index = RingIndex(job, row.firstRow + 2 * nozzle);
      std::uint8_t* const marks = RowMarks(job, row.plane, index) + phase * layout.parts;
      if (nozzle < params.nozzleCount) {
        std::memset(marks, 0, layout.parts);
        continue;
      }
      KeepHeldBack(layout, FeatherRun(job, phase, nozzle - params.nozzleCount),
                   RunAt(job, row.plane, phase, index), marks);
    }
  }
}

}  // namespace qrn
