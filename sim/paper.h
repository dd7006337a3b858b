// The paper: ink by cell and plane, for the two carriage directions apart. A cell is one output
// column x one line of 1/360 inch. Lines and columns count from the print origin and may be
// negative.
#ifndef QRN_SIM_PAPER_H_
#define QRN_SIM_PAPER_H_

#include <array>
#include <cstdint>
#include <map>
#include <vector>

namespace qrn::sim {

constexpr int kInks = 8;

// One inked row of one plane: ink sums from `firstColumn` on.
struct InkRow {
  std::int32_t firstColumn = 0;
  std::vector<std::uint8_t> ink;
};

class Paper {
 public:
  // Adds `amount` (1..3) of an ink to a cell; a cell holds at most 255.
  void Add(int plane, int direction, std::int32_t line, std::int32_t column, std::uint8_t amount);
  // Null when nothing was laid there.
  const InkRow* Row(int plane, int direction, std::int32_t line) const;
  std::uint8_t Ink(int plane, int direction, std::int32_t line, std::int32_t column) const;

  bool Empty() const;
  // First and last line that carry ink; Requires: not empty.
  std::int32_t FirstLine() const;
  std::int32_t LastLine() const;
  std::uint64_t TotalInk() const;
  void Clear();

 private:
  std::array<std::array<std::map<std::int32_t, InkRow>, 2>, kInks> rows_;
  std::uint64_t total_ = 0;
};

}  // namespace qrn::sim

#endif  // QRN_SIM_PAPER_H_
