// The paper: ink by cell and color, for the two carriage directions apart. A cell is one output
// column x one line of 1/360 inch. Lines and columns count from the print origin and may be
// negative.
#ifndef QRN_SIM_PAPER_PAPER_H_
#define QRN_SIM_PAPER_PAPER_H_

#include <array>
#include <cstdint>
#include <map>
#include <vector>

namespace qrn::sim {

constexpr int kInks = 8;

// One row of one color: ink sums from `firstColumn` on.
struct InkRow {
  std::int32_t firstColumn = 0;
  std::vector<std::uint8_t> ink;

  std::int32_t EndColumn() const { return firstColumn + static_cast<std::int32_t>(ink.size()); }
  std::uint8_t At(std::int32_t column) const {
    return column >= firstColumn && column < EndColumn()
               ? ink[static_cast<std::size_t>(column - firstColumn)]
               : 0;
  }
};

class Paper {
 public:
  // The row, made to reach from firstColumn to lastColumn at least. Valid until the row is prepared
  // again.
  InkRow& Prepare(int color, int direction, std::int32_t line, std::int32_t firstColumn,
                  std::int32_t lastColumn);
  // Null when the row was never prepared.
  const InkRow* Row(int color, int direction, std::int32_t line) const;
  std::uint8_t Ink(int color, int direction, std::int32_t line, std::int32_t column) const;

  // All lines with a row, smallest and largest; first > last when there is none.
  std::int32_t FirstLine() const;
  std::int32_t LastLine() const;
  // The sum of drop levels.
  std::uint64_t InkOf(int color) const;
  void Clear();

 private:
  std::array<std::array<std::map<std::int32_t, InkRow>, 2>, kInks> rows_;
};

// Adds ink to a cell of a prepared row; a cell holds at most 255.
inline void AddInk(InkRow& row, std::int32_t column, std::uint8_t amount) {
  std::uint8_t& cell = row.ink[static_cast<std::size_t>(column - row.firstColumn)];
  cell = cell > 255 - amount ? std::uint8_t{255} : static_cast<std::uint8_t>(cell + amount);
}

}  // namespace qrn::sim

#endif  // QRN_SIM_PAPER_PAPER_H_
