// The pictures of the feather masks: how much they keep, and how evenly.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "job/job.h"
#include "params/feather_masks.h"

namespace qrn {
namespace {

constexpr int kCells = 1024;

std::vector<bool> Cells(std::uint32_t k) {
  std::uint8_t mask[kFeatherMaskBytes];
  FillFeatherMask(k, mask);
  std::vector<bool> cells(kCells);
  for (std::size_t cell = 0; cell < cells.size(); ++cell) {
    const int bits = (mask[cell / 4] >> (6 - 2 * (cell % 4))) & 3;
    EXPECT_TRUE(bits == 0 || bits == 3);
    cells[cell] = bits == 3;
  }
  return cells;
}

// Of a fixed period no phase is full while another is empty.
bool HasStripes(const std::vector<bool>& cells, int period) {
  std::vector<int> kept(static_cast<std::size_t>(period));
  for (std::size_t cell = 0; cell < cells.size(); ++cell) kept[cell % kept.size()] += cells[cell];
  const auto [emptiest, fullest] = std::minmax_element(kept.begin(), kept.end());
  return *fullest - *emptiest >= kCells / period / 2;
}

// The counts are constants of the machine: a sum and a weighted sum find any one that is mistyped.
TEST(FeatherMasks, KeepTheMachinesCountsEvenlyScattered) {
  std::uint32_t sum = 0, weighted = 0;
  std::vector<bool> before;
  for (std::uint32_t k = 0; k < kFeatherMasks; ++k) {
    SCOPED_TRACE(k);
    const std::vector<bool> cells = Cells(k);
    const int kept = static_cast<int>(std::count(cells.begin(), cells.end(), true));
    EXPECT_EQ(kFeatherKept[k], kept);
    sum += kFeatherKept[k];
    weighted += (k + 1) * kFeatherKept[k];
    // Every stretch holds its share to within a cell: what is rare is never in blocks.
    for (const int cellsHere : {4, 8, 64}) {
      for (int first = 0; first < kCells; first += cellsHere) {
        const auto here =
            std::count(cells.begin() + first, cells.begin() + first + cellsHere, true);
        EXPECT_LE(std::abs(static_cast<int>(here) * kCells - kept * cellsHere), kCells);
      }
    }
    for (const int period : {2, 4, 8, 16}) EXPECT_FALSE(HasStripes(cells, period)) << period;
    // No subset of the mask before: a cell is kept that it does not keep.
    bool outside = k == 0;
    for (std::size_t i = 0; i < before.size(); ++i) outside |= cells[i] && !before[i];
    EXPECT_TRUE(outside);
    before = cells;
  }
  EXPECT_EQ(56698u, sum);
  EXPECT_EQ(1901156u, weighted);
}

}  // namespace
}  // namespace qrn
