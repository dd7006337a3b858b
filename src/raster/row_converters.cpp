#include "raster/row_converters.h"

#include <algorithm>
#include <initializer_list>

#include "job/print_out.h"
#include "raster/column_modes.h"
#include "raster/feather_runs.h"
#include "raster/pass_rows.h"
#include "raster/tile_walk.h"

namespace qrn {
namespace {

constexpr std::uint32_t MaskByteByByte(std::uint32_t i, std::uint32_t x, std::uint32_t) {
  return (i + x) % 256;
}

constexpr ColumnMode kDual3 = {
    .phases = 3,
    .passesPerPhase = 1,
    .groupBytes = 3,
    .needBytes = 3,
    .reverseStart = [](std::uint32_t bytes) { return 4 * ((bytes + 2) / 3) + 3; },
    .maskByte = [](std::uint32_t i, std::uint32_t x,
                   std::uint32_t byte) { return 4 * ((i + x) % 64) + byte; },
    .forward = Dual3Forward,
    .reverse = Dual3Reverse,
};

constexpr ColumnMode kDual4 = {
    .phases = 4,
    .passesPerPhase = 1,
    .groupBytes = 1,
    .needBytes = 1,
    .reverseStart = [](std::uint32_t bytes) { return bytes; },
    .maskByte = MaskByteByByte,
    .forward = Dual4Forward,
    .reverse = Dual4Reverse,
};

constexpr ColumnMode kDual6 = {
    .phases = 6,
    .passesPerPhase = 1,
    .groupBytes = 3,
    .needBytes = 3,
    .reverseStart = [](std::uint32_t bytes) { return 2 * (bytes / 3); },
    .maskByte = MaskByteByByte,
    .forward = Dual6Forward,
    .reverse = Dual6Reverse,
};

// The last group of a line of an odd number of bytes reads one byte more, which is within the
// line's stride.
constexpr ColumnMode kDual8 = {
    .phases = 8,
    .passesPerPhase = 1,
    .groupBytes = 2,
    .needBytes = 1,
    .reverseStart = [](std::uint32_t bytes) { return bytes / 2; },
    .maskByte = MaskByteByByte,
    .forward = Dual8Forward,
    .reverse = Dual8Reverse,
};

// At more than six passes the later ones have phases above 2, which print nothing.
constexpr ColumnMode kSingle = {
    .phases = kSinglePhases,
    .passesPerPhase = 2,
    .groupBytes = 3,
    .needBytes = 3,
    .reverseStart = [](std::uint32_t bytes) { return 4 * ((bytes + 2) / 3) - 1; },
    .maskByte = [](std::uint32_t i, std::uint32_t x, std::uint32_t) { return (x / 3 + i) % 256; },
    .forward = SingleForward,
    .reverse = SingleReverse,
};

std::uint32_t PhaseOf(const Job& job, const ColumnMode& mode) {
  return job.passIndex / mode.passesPerPhase;
}

// Forward, pixel j of a run lands in column j, in reverse in column reverseStart - j; the nozzle
// row's own offset is added in both. Requires: a run.
ColumnWalk WalkOf(const Job& job, const ConvertParams& params, const ColumnMode& mode,
                  bool reverse) {
  const auto [least, most] = std::minmax_element(
      params.nozzleRows, params.nozzleRows + params.nozzleRowCount,
      [](const NozzleRow& a, const NozzleRow& b) { return a.column < b.column; });
  ColumnWalk walk{};
  walk.phase = PhaseOf(job, mode);
  walk.reverse = reverse;
  walk.columns = job.Mem.layout.columns + most->column - least->column;
  walk.firstRowColumn = (reverse ? most : least)->column;
  walk.firstColumn = walk.firstRowColumn + (reverse ? mode.reverseStart(job.passRightByte) : 0);
  return walk;
}

// Takes what has been printed out of the pass buffers.
void TakeOutPrinted(Job& job, const ConvertParams& params, std::uint32_t phase) {
  for (std::uint32_t i = 0; i < params.nozzleRowCount; ++i) {
    const NozzleRow& row = params.nozzleRows[i];
    TakeOutPixels(job, row.color, phase, row.firstLine, params.nozzleCount);
    for (std::uint32_t mask = 0; mask < job.featherRows; ++mask) {
      const std::uint32_t line = row.firstLine + 2 * (params.nozzleCount + mask);
      TakeOutFeathered(job, row.color, phase, line, FeatherRun(job, phase, mask));
    }
  }
}

WrittenBytes ConvertRows(Job& job, const ConvertParams& params, const ColumnMode& mode,
                         bool reverse) {
  if (PhaseOf(job, mode) >= job.Mem.layout.phases || params.nozzleRowCount == 0) return {};
  const ColumnWalk walk = WalkOf(job, params, mode, reverse);
  PackColumns(job, params, walk);
  TakeOutPrinted(job, params, walk.phase);
  const std::size_t begin =
      std::size_t{walk.LowestColumn(0, walk.columns)} * kColumnBytes + params.firstJet;
  return {begin, begin + std::size_t{walk.columns} * kColumnBytes};
}

}  // namespace

WrittenBytes Dual3Forward(Job& job, const ConvertParams& params) {
  return ConvertRows(job, params, kDual3, false);
}
WrittenBytes Dual3Reverse(Job& job, const ConvertParams& params) {
  return ConvertRows(job, params, kDual3, true);
}
WrittenBytes Dual4Forward(Job& job, const ConvertParams& params) {
  return ConvertRows(job, params, kDual4, false);
}
WrittenBytes Dual4Reverse(Job& job, const ConvertParams& params) {
  return ConvertRows(job, params, kDual4, true);
}
WrittenBytes Dual6Forward(Job& job, const ConvertParams& params) {
  return ConvertRows(job, params, kDual6, false);
}
WrittenBytes Dual6Reverse(Job& job, const ConvertParams& params) {
  return ConvertRows(job, params, kDual6, true);
}
WrittenBytes Dual8Forward(Job& job, const ConvertParams& params) {
  return ConvertRows(job, params, kDual8, false);
}
WrittenBytes Dual8Reverse(Job& job, const ConvertParams& params) {
  return ConvertRows(job, params, kDual8, true);
}
WrittenBytes SingleForward(Job& job, const ConvertParams& params) {
  return ConvertRows(job, params, kSingle, false);
}
WrittenBytes SingleReverse(Job& job, const ConvertParams& params) {
  return ConvertRows(job, params, kSingle, true);
}

const ColumnMode* ModeOf(const Job& job) {
  if (job.dualHead != 1) return &kSingle;
  for (const ColumnMode* mode : {&kDual3, &kDual4, &kDual6, &kDual8}) {
    if (mode->phases == job.passCount) return mode;
  }
  return nullptr;
}

}  // namespace qrn
