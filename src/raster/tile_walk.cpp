#include "raster/tile_walk.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>

#include "raster/feather_runs.h"
#include "raster/pass_rows.h"

namespace qrn {
namespace {

static_assert(kStripReadBytes <= kPartBytes + 1, "a strip reads two parts of a run at most");

std::uint32_t NozzlesOf(std::uint32_t group) {
  return std::min(kGroupNozzles, kNozzles - group * kGroupNozzles);
}

// What a strip reads of the runs of one nozzle row.
struct StripRead {
  std::int32_t byte;        // of the run, the first that the strip reads; may lie before the run
  unsigned shift;           // bits of that byte that lie before the strip
  std::int32_t begin, end;  // the bytes that the run has of it; none when begin >= end
  bool whole;               // it has them all
};

StripRead StripReadAt(const RowLayout& layout, std::int32_t column) {
  constexpr std::int32_t kRead = kStripReadBytes;
  StripRead read{};
  // Rounded down, before the run as well.
  read.byte = column >> std::countr_zero(kPixelsPerByte);
  read.shift = 2 * (static_cast<unsigned>(column) % kPixelsPerByte);
  read.begin = std::max(read.byte, 0);
  read.end = std::min(read.byte + kRead, static_cast<std::int32_t>(layout.runBytes));
  read.whole = read.end - read.begin == kRead;
  return read;
}

// Aligns the runs of a strip: afterwards byte i of every row of the jet groups has the dots of
// columns 4i to 4i + 3 of the strip, whatever the column offset of the nozzle row is.
class StripAligner {
 public:
  StripAligner(const Job& job, const ConvertParams& params, const ColumnWalk& walk,
               JetGroup (&groups)[kJetGroups])
      : job_(job), layout_(job.Mem.layout), params_(params), walk_(walk), groups_(groups) {
    std::uint8_t taken[2] = {};  // slots of either head
    for (std::uint32_t i = 0; i < params.nozzleRowCount; ++i) {
      const NozzleRow& row = params.nozzleRows[i];
      isSecond_[i] = (taken[row.head] >> row.slot & 1u) != 0;
      taken[row.head] = Low8(taken[row.head] | 1u << row.slot);
    }
  }

  // The strip that begins at that column of the walk.
  void Align(std::uint32_t column) {
    SetReads(column);
    FindRuns(0);
    for (std::uint32_t group = 0; group < kJetGroups; ++group) {
      // The next group's runs are prefetched while this one's are aligned.
      if (group + 1 < kJetGroups) FindRuns(group + 1);
      SetOccupancy(group);
      for (std::uint32_t i = 0; i < params_.nozzleRowCount; ++i) AlignRuns(group, i);
    }
  }

 private:
  void SetReads(std::uint32_t column) {
    for (std::uint32_t i = 0; i < params_.nozzleRowCount; ++i) {
      const std::int32_t rowColumn = params_.nozzleRows[i].column;
      const std::int32_t lead =
          walk_.reverse ? walk_.firstRowColumn - rowColumn : rowColumn - walk_.firstRowColumn;
      reads_[i] = StripReadAt(layout_, static_cast<std::int32_t>(column) - lead);
    }
  }

  // Finds the runs that the strip reads for a group, and has them brought into the cache.
  void FindRuns(std::uint32_t group) {
    const std::uint32_t firstNozzle = group * kGroupNozzles;
    const std::uint32_t nozzles = NozzlesOf(group);
    for (std::uint32_t i = 0; i < params_.nozzleRowCount; ++i) {
      const NozzleRow& row = params_.nozzleRows[i];
      auto& runs = runs_[group % 2][i];
      std::fill(std::begin(runs), std::end(runs), nullptr);
      const StripRead& read = reads_[i];
      if (read.begin >= read.end) continue;
      const std::uint32_t firstPart = static_cast<std::uint32_t>(read.begin) / kPartBytes;
      const std::uint32_t lastPart = static_cast<std::uint32_t>(read.end - 1) / kPartBytes;
      for (std::uint32_t n = 0; n < nozzles; ++n) {
        const std::uint32_t index = RingIndex(job_, row.firstLine + 2 * (firstNozzle + n));
        const std::uint8_t* const occupancy =
            OccupancyAt(job_, row.color, index) + walk_.phase * layout_.parts;
        if ((occupancy[firstPart] | occupancy[lastPart]) == 0) continue;
        runs[n] = RunAt(job_, row.color, walk_.phase, index);
        for (std::int32_t at = read.begin; at < read.end; at += std::int32_t{kCacheLineBytes})
          __builtin_prefetch(runs[n] + at);
      }
    }
  }

  // Which rows have dots now. Those that had some before and get none become zeros.
  void SetOccupancy(std::uint32_t group) {
    JetGroup& jets = groups_[group];
    std::uint8_t occupancy[kGroupJets] = {}, written[kGroupJets] = {};
    for (std::uint32_t i = 0; i < params_.nozzleRowCount; ++i) {
      const NozzleRow& row = params_.nozzleRows[i];
      for (std::uint32_t n = 0; n < kGroupNozzles; ++n) {
        if (runs_[group % 2][i][n] == nullptr) continue;
        const std::uint32_t jet = 2 * n + row.head;
        occupancy[jet] = Low8(occupancy[jet] | 1u << row.slot);
        if (!isSecond_[i]) written[jet] = Low8(written[jet] | 1u << row.slot);
      }
    }
    for (std::uint32_t jet = 0; jet < kGroupJets; ++jet) {
      const unsigned stale = jets.occupancy[jet] & ~written[jet];
      for (std::uint32_t slot = 0; slot < kNozzleRows; ++slot) {
        if ((stale >> slot & 1u) != 0) std::memset(jets.rows[jet][slot], 0, kStripBytes);
      }
      jets.occupancy[jet] = occupancy[jet];
    }
  }

  void AlignRuns(std::uint32_t group, std::uint32_t i) {
    const NozzleRow& row = params_.nozzleRows[i];
    const StripRead& read = reads_[i];
    const std::uint32_t firstNozzle = group * kGroupNozzles;
    const bool direct = read.whole && firstNozzle + kGroupNozzles <= params_.nozzleCount;
    const std::uint8_t* sources[kGroupNozzles];
    std::uint8_t staging[kGroupNozzles][kStripReadBytes];
    for (std::uint32_t n = 0; n < kGroupNozzles; ++n) {
      const std::uint8_t* const run = runs_[group % 2][i][n];
      sources[n] = run == nullptr ? nullptr
                   : direct       ? run + read.byte
                                  : Stage(firstNozzle + n, run, read, staging[n]);
    }
    TheKernel().align(sources, read.shift, groups_[group].rows[row.head][row.slot], isSecond_[i]);
  }

  // Assembles what is read of a run that does not fill the strip, or that is in a group with
  // feathered or missing nozzles.
  const std::uint8_t* Stage(std::uint32_t nozzle, const std::uint8_t* run, const StripRead& read,
                            std::uint8_t (&staging)[kStripReadBytes]) const {
    const auto before = static_cast<std::size_t>(read.begin - read.byte);
    const auto bytes = static_cast<std::size_t>(read.end - read.begin);
    std::memset(staging, 0, before);
    std::memcpy(staging + before, run + read.begin, bytes);
    std::memset(staging + before + bytes, 0, sizeof staging - before - bytes);
    if (nozzle >= params_.nozzleCount) {
      const std::uint8_t* mask = FeatherRun(job_, walk_.phase, nozzle - params_.nozzleCount) +
                                 static_cast<std::uint32_t>(read.byte) % kFeatherPeriodBytes;
      for (std::uint32_t i = 0; i < kStripReadBytes; ++i) staging[i] = Low8(staging[i] & mask[i]);
    }
    return staging;
  }

  const Job& job_;
  const RowLayout& layout_;
  const ConvertParams& params_;
  const ColumnWalk& walk_;
  JetGroup (&groups_)[kJetGroups];
  // Another colour prints through the same nozzle row: the dots of this one are added to its dots.
  bool isSecond_[kBothHeadsNozzleRows] = {};
  StripRead reads_[kBothHeadsNozzleRows] = {};
  // Of two groups, by turns; null: no ink.
  const std::uint8_t* runs_[2][kBothHeadsNozzleRows][kGroupNozzles];
};

// Packs `columns` columns of a group, from byte firstByte of its rows on, into the tile.
void PackGroup(ConvertScratch& scratch, std::uint32_t group, std::uint32_t firstByte,
               std::uint32_t columns, bool reverse) {
  constexpr std::ptrdiff_t kStep = kColumnBytes;
  const JetGroup& jets = scratch.groups[group];
  const std::uint32_t nozzles = NozzlesOf(group);
  std::uint8_t* out = scratch.tile + kGroupJets * group;
  if (std::all_of(std::begin(jets.occupancy), std::end(jets.occupancy),
                  [](auto rows) { return rows == 0; })) {
    for (; columns > 0; --columns, out += kStep) {
      std::memset(out, 0, 2 * nozzles);
      std::memset(out + kPlaneBytes, 0, 2 * nozzles);
    }
    return;
  }
  TheKernel().pack(jets, firstByte, nozzles, columns, reverse ? out + kStep * (columns - 1) : out,
                   reverse ? -kStep : kStep);
}

// Packs an aligned strip tile by tile, and streams each tile to its columns.
void PackStrip(Job& job, const ConvertParams& params, const ColumnWalk& walk,
               ConvertScratch& scratch, std::uint32_t firstColumn) {
  const std::uint32_t end = std::min(firstColumn + kStripColumns, walk.columns);
  for (std::uint32_t column = firstColumn; column < end; column += kTileColumns) {
    const std::uint32_t columns = std::min(kTileColumns, end - column);
    for (std::uint32_t group = 0; group < kJetGroups; ++group)
      PackGroup(scratch, group, (column - firstColumn) / kPixelsPerByte, columns, walk.reverse);
    const std::size_t lowest = walk.LowestColumn(column, columns);
    TheKernel().stream(job.PrintOutBuf + lowest * kColumnBytes + params.firstJet, scratch.tile,
                       std::size_t{columns} * kColumnBytes);
  }
}

}  // namespace

ConvertScratch& ScratchOf(Job& job) {
  std::uint8_t* const bytes = job.Mem.pConvertScratch;
  const std::size_t skipped =
      (0 - reinterpret_cast<std::uintptr_t>(bytes)) % alignof(ConvertScratch);
  return *reinterpret_cast<ConvertScratch*>(bytes + skipped);
}

void PackColumns(Job& job, const ConvertParams& params, const ColumnWalk& walk) {
  ConvertScratch& scratch = ScratchOf(job);
  StripAligner aligner(job, params, walk, scratch.groups);
  for (std::uint32_t column = 0; column < walk.columns; column += kStripColumns) {
    aligner.Align(column);
    PackStrip(job, params, walk, scratch, column);
  }
}

}  // namespace qrn
