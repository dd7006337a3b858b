#include "sim/proof/reach.h"

#include <algorithm>

namespace qrn::sim {
namespace {

constexpr std::uint32_t kBandStart = 360;  // lines above the band that a pass may still print
constexpr std::uint32_t kMasks = 90;

// How the passes of a one-head job are placed in a band.
struct Passes {
  std::uint32_t wholeLines;  // of a pass, before the feathered ones
  std::uint32_t step;        // lines from one pass to the next
  std::uint32_t count;       // of a band

  std::uint32_t BandLines() const { return step * count; }
};

Passes PassesOf(const Machine& machine, std::uint32_t base) {
  const std::uint32_t percent = machine.featherPercent > 100 ? 0 : machine.featherPercent;
  Passes passes{};
  passes.count = 2 * base;
  passes.wholeLines = kHeadLines - 2 * (percent * kMasks / 100);
  passes.step = passes.wholeLines / passes.count + 1;
  if (passes.BandLines() > kHeadLines) passes.step -= passes.count;
  return passes;
}

// First line of pass `index` that its nozzle 0 prints, counted from the pass buffer's first row.
std::uint32_t FirstRow(const Machine& machine, const Passes& passes, std::uint32_t index) {
  const bool reverse = machine.bidirectional ? index % 2 == 0 : machine.fixedDir == 1;
  const bool oddLines = reverse && passes.step % 2 == 0 && index % 2 == 0;
  return passes.step * index + (oddLines ? 1 : 0);
}

enum class PhaseReach { kWhole, kPart, kNone };

// How well the two passes of a phase print a line, given in lines below the pass buffer's first
// row.
PhaseReach ReachOfPhase(const Machine& machine, const Passes& passes, std::uint32_t phase,
                        std::uint32_t row, bool* above) {
  PhaseReach best = PhaseReach::kNone;
  for (const std::uint32_t index : {2 * phase, 2 * phase + 1}) {
    const std::uint32_t first = FirstRow(machine, passes, index);
    if ((row + first) % 2 != 0) continue;  // the line is between two nozzles
    // How far down the pass the line is when the pass comes by for the last time.
    const std::uint32_t last =
        (row + passes.BandLines() * passes.count - first) % passes.BandLines();
    best = std::min(best, last < passes.wholeLines ? PhaseReach::kWhole : PhaseReach::kPart);
    *above |= first % 2 != 0 && passes.step % 2 == 0;
  }
  return best;
}

void Append(std::string* text, const std::string& more) {
  if (!text->empty()) *text += "; ";
  *text += more;
}

}  // namespace

unsigned PrintedColors(const Machine& machine) {
  if (machine.heads == Heads::kBoth) return (1u << kInks) - 1;
  unsigned colors = 0;
  for (const std::uint8_t color : machine.inkOrder[FiringOrderOf(machine.heads)])
    colors |= color < kInks ? 1u << color : 0u;
  return colors;
}

Reach::Reach(const Machine& machine, std::uint32_t resolution) {
  if (machine.heads == Heads::kBoth) return;
  colors_ = PrintedColors(machine);
  FindMissingColors();
  FindLines(machine, BasePassCountOf(resolution));
  if (machine.heads == Heads::kNone)
    Append(&reason_, "no head in use: the last two nozzles of every row print wrong");
}

void Reach::FindMissingColors() {
  std::string missing;
  for (int color = 0; color < kInks; ++color) {
    if (((colors_ >> color) & 1u) == 0) missing += " " + std::to_string(color);
  }
  if (!missing.empty()) Append(&reason_, "no nozzle row for colors" + missing);
}

void Reach::FindLines(const Machine& machine, std::uint32_t base) {
  const Passes passes = PassesOf(machine, base);
  band_.resize(passes.BandLines());
  std::uint32_t parts = 0;
  bool none = false, above = false;
  for (std::uint32_t line = 0; line < band_.size(); ++line) {
    LineReach& reach = band_[line];
    for (std::uint32_t phase = 0; phase < kPhases; ++phase) {
      switch (ReachOfPhase(machine, passes, phase, kBandStart + line, &reach.above)) {
        case PhaseReach::kWhole:
          break;
        case PhaseReach::kPart:
          reach.partPhases |= 1u << phase;
          break;
        case PhaseReach::kNone:
          reach.none = true;
          break;
      }
    }
    parts += reach.partPhases != 0 ? 1 : 0;
    none |= reach.none;
    above |= reach.above;
  }
  if (none) Append(&reason_, "odd lines are out of reach of forward passes");
  if (above) Append(&reason_, "odd lines lie on the line above");
  if (parts != 0) {
    Append(&reason_, "feathered nozzles alone print a part of " + std::to_string(parts) +
                         " of every " + std::to_string(band_.size()) + " lines");
  }
}

LineReach Reach::OfLine(int color, std::uint32_t line) const {
  if (band_.empty()) return {};
  LineReach reach = band_[line % band_.size()];
  reach.none |= ((colors_ >> color) & 1u) == 0;
  return reach;
}

}  // namespace qrn::sim
