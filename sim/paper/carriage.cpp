#include "sim/paper/carriage.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace qrn::sim {
namespace {

constexpr std::size_t kColumnBytes = 720, kPlaneBytes = 360;
constexpr std::int32_t kNozzles = 180;
constexpr std::int64_t kPosPerInch = 150;  // the wire's scale
constexpr double kShortGapInch = 53.0 / 600, kLongGapInch = 180.0 / 600;
constexpr std::array<std::uint32_t, 4> kResolutions = {1080, 1440, 1620, 2160};
constexpr std::array<std::uint32_t, 4> kPassCounts = {3, 4, 6, 8};
constexpr std::array<std::int32_t, 4> kHeadDistanceColumns = {1984, 1984, 1488, 1488};  // 140 mm
constexpr std::array<std::array<std::uint8_t, 8>, 2> kFactoryInkOrder = {
    {{3, 3, 0, 0, 4, 4, 7, 7}, {1, 1, 5, 5, 2, 2, 6, 6}}};
using InkRows = std::array<std::uint8_t, 8>;

std::int64_t FloorDiv(std::int64_t value, std::int64_t divisor) {
  const std::int64_t quotient = value / divisor;
  return value % divisor < 0 ? quotient - 1 : quotient;
}

// The print origin is 64 mm from the edge.
constexpr std::int64_t OriginDots(std::uint32_t resolution) { return resolution * 640 / 254; }

// The last whole 1/150 inch before a place.
constexpr std::int64_t PositionBefore(std::int64_t dots, std::uint32_t resolution) {
  return (dots * kPosPerInch - 1) / resolution;
}

// The distance by which a row trails its head's reference, to the nearest column. Whole columns
// count from row 7, in a head that is built the other way round too.
std::int32_t StaggerColumns(std::size_t row, bool mirrored, double columnsPerInch) {
  const auto standard = [columnsPerInch](std::size_t r) {
    const std::size_t shortGaps = (8 - r) / 2, longGaps = (7 - r) / 2;
    const double inch = static_cast<double>(shortGaps) * kShortGapInch +
                        static_cast<double>(longGaps) * kLongGapInch;
    return static_cast<std::int32_t>(std::lround(inch * columnsPerInch));
  };
  return mirrored ? standard(0) - standard(row) : standard(row);
}

bool IsBlank(const std::uint8_t* bytes, std::size_t count) {
  return bytes[0] == 0 && std::memcmp(bytes, bytes + 1, count - 1) == 0;
}

}  // namespace

int ResolutionIndexOf(std::uint32_t resolution) {
  const auto* found = std::find(kResolutions.begin(), kResolutions.end(), resolution);
  return found != kResolutions.end() ? static_cast<int>(found - kResolutions.begin()) : -1;
}

std::uint32_t BasePassCountOf(std::uint32_t resolution) {
  const int index = ResolutionIndexOf(resolution);
  return index >= 0 ? kPassCounts[static_cast<std::size_t>(index)] : 0;
}

std::uint32_t ColumnPixelsOf(const Machine& machine, std::uint32_t resolution) {
  return machine.heads == Heads::kBoth ? BasePassCountOf(resolution) : kOneHeadColumnPixels;
}

Carriage::Carriage(const Machine& machine, std::uint32_t resolution)
    : resolution_(resolution),
      passCount_(BasePassCountOf(resolution)),
      originPos_(PositionBefore(OriginDots(resolution), resolution)) {
  const auto index = static_cast<std::size_t>(ResolutionIndexOf(resolution));
  const double columnsPerInch = static_cast<double>(resolution) / passCount_;
  if (machine.heads == Heads::kBoth) {
    MountBoth(machine, index, columnsPerInch);
  } else {
    MountOne(machine, index, columnsPerInch);
  }
}

void Carriage::MountBoth(const Machine& machine, std::size_t index, double columnsPerInch) {
  // No driver prints with an order that is blank on one head alone.
  const bool unset = machine.inkOrder[0] == InkRows{};
  std::array<int, kInks> rowsSeen{};
  // The second row of an ink is half a nozzle pitch above the first, so going backwards the first
  // one met is the upper one.
  for (std::size_t i = 16; i-- > 0;) {
    const std::size_t head = i / 8, slot = i % 8;
    NozzleRow& row = rows_[head][slot];
    row.color = (unset ? kFactoryInkOrder[head] : machine.inkOrder[head])[slot] & 7;
    row.column = StaggerColumns(slot, machine.mirroredHeads, columnsPerInch);
    if (head == 1) row.column += kHeadDistanceColumns[index] + machine.headGapX[index];
    row.line = rowsSeen[static_cast<std::size_t>(row.color)]++ == 0 ? 0 : 1;
    if (head == 0) row.line += static_cast<std::int32_t>(kHeadLines) - machine.headGapY[index];
  }
}

// One head alone is the reference along the paper, and on its own carriage along the carriage too.
// An ink is fired by one row; where a second row with that ink is does not matter. PHB alone on a
// carriage for two heads starts its passes a head distance further on.
void Carriage::MountOne(const Machine& machine, std::size_t index, double columnsPerInch) {
  const std::size_t head = machine.heads == Heads::kPhb ? 1 : 0;
  inUse_[1 - head] = false;
  if (head == 1 && machine.twoHeadCarriage) {
    const std::int64_t distance = kHeadDistanceColumns[index] + machine.headGapX[index];
    originPos_ = PositionBefore(OriginDots(resolution_) + distance * passCount_, resolution_);
  }
  const InkRows& order = machine.inkOrder[FiringOrderOf(machine.heads)];
  for (std::size_t slot = 0; slot < 8; ++slot) {
    NozzleRow& row = rows_[head][slot];
    row.color = order[slot];
    row.column = StaggerColumns(slot, machine.mirroredHeads, columnsPerInch);
  }
}

std::uint64_t Carriage::PrintPass(const PassCommand& pass, const std::vector<std::uint8_t>& columns,
                                  Paper& paper) {
  // The grid is the encoder's: a pass starts on the grid column at or before its start position.
  const std::int64_t start =
      FloorDiv((pass.startPos - originPos_) * resolution_, kPosPerInch * passCount_);
  std::uint64_t ink = 0;
  for (std::size_t head = 0; head < rows_.size(); ++head) {
    ink += PrintHead(head, static_cast<std::int32_t>(start), pass.direction, columns, paper);
  }
  stepsFed_ += pass.feedSteps;
  return ink;
}

std::uint64_t Carriage::PrintHead(std::size_t head, std::int32_t gridStart, int direction,
                                  const std::vector<std::uint8_t>& columns, Paper& paper) {
  const auto columnCount =
      static_cast<std::int32_t>((columns.size() + kColumnBytes - 1) / kColumnBytes);
  const std::int32_t step = direction == 0 ? 1 : -1;
  const std::int32_t gridEnd = gridStart + step * (columnCount - 1);
  const auto line = static_cast<std::int32_t>((stepsFed_ + kStepsPerLine / 2) / kStepsPerLine);
  std::array<std::array<InkRow*, kNozzles>, 8> targets{};
  std::uint64_t ink = 0;

  const auto fire = [&](std::size_t nozzle, unsigned rowBits, std::int32_t grid,
                        std::uint8_t amount) {
    for (; rowBits != 0; rowBits &= rowBits - 1) {
      const auto slot = static_cast<std::size_t>(std::countr_zero(rowBits));
      const NozzleRow& row = rows_[head][slot];
      if (row.color >= kInks) continue;  // no ink in it
      InkRow*& target = targets[slot][nozzle];
      if (target == nullptr) {
        target = &paper.Prepare(
            row.color, direction, line + row.line + 2 * static_cast<std::int32_t>(nozzle),
            std::min(gridStart, gridEnd) - row.column, std::max(gridStart, gridEnd) - row.column);
      }
      AddInk(*target, grid - row.column, amount);
      ink += amount;
    }
  };
  for (std::int32_t column = 0; column < columnCount; ++column) {
    const std::size_t begin = static_cast<std::size_t>(column) * kColumnBytes;
    const std::size_t end = std::min(begin + kColumnBytes, columns.size());
    if (IsBlank(&columns[begin], end - begin)) continue;
    const std::int32_t grid = gridStart + step * column;
    for (std::size_t at = begin + head; at < end; at += 2) {
      if (columns[at] == 0) continue;
      if (!inUse_[head]) {
        ++strayBytes_;
        continue;
      }
      const std::size_t inColumn = at - begin;
      const bool plane0 = inColumn < kPlaneBytes;
      fire(inColumn % kPlaneBytes / 2, columns[at], grid, plane0 ? 2 : 1);
    }
  }
  return ink;
}

}  // namespace qrn::sim
