#include "sim/paper/paper.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace qrn::sim {

InkRow& Paper::Prepare(int color, int direction, std::int32_t line, std::int32_t firstColumn,
                       std::int32_t lastColumn) {
  InkRow& row = rows_[static_cast<std::size_t>(color)][static_cast<std::size_t>(direction)][line];
  if (row.ink.empty()) row.firstColumn = firstColumn;
  if (firstColumn < row.firstColumn) {
    row.ink.insert(row.ink.begin(), static_cast<std::size_t>(row.firstColumn - firstColumn), 0);
    row.firstColumn = firstColumn;
  }
  if (lastColumn >= row.EndColumn())
    row.ink.resize(static_cast<std::size_t>(lastColumn - row.firstColumn) + 1);
  return row;
}

const InkRow* Paper::Row(int color, int direction, std::int32_t line) const {
  const auto& rows = rows_[static_cast<std::size_t>(color)][static_cast<std::size_t>(direction)];
  const auto found = rows.find(line);
  return found != rows.end() ? &found->second : nullptr;
}

std::uint8_t Paper::Ink(int color, int direction, std::int32_t line, std::int32_t column) const {
  const InkRow* row = Row(color, direction, line);
  return row != nullptr ? row->At(column) : 0;
}

std::int32_t Paper::FirstLine() const {
  std::int32_t first = std::numeric_limits<std::int32_t>::max();
  for (const auto& color : rows_) {
    for (const auto& rows : color) {
      if (!rows.empty()) first = std::min(first, rows.begin()->first);
    }
  }
  return first;
}

std::int32_t Paper::LastLine() const {
  std::int32_t last = std::numeric_limits<std::int32_t>::min();
  for (const auto& color : rows_) {
    for (const auto& rows : color) {
      if (!rows.empty()) last = std::max(last, rows.rbegin()->first);
    }
  }
  return last;
}

std::uint64_t Paper::InkOf(int color) const {
  std::uint64_t ink = 0;
  for (const auto& rows : rows_[static_cast<std::size_t>(color)]) {
    for (const auto& [line, row] : rows) ink = std::accumulate(row.ink.begin(), row.ink.end(), ink);
  }
  return ink;
}

void Paper::Clear() { rows_ = {}; }

}  // namespace qrn::sim
