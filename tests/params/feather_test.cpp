// The feather masks: counts, scatter, and which of them a strength picks.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "params/feather_masks.h"

namespace qrn {
namespace {

constexpr int kCells = 1024;

std::vector<bool> Cells(std::uint32_t k) {
  std::uint8_t mask[kFeatherMaskBytes];
  FillFeatherMask(k, mask);
  std::vector<bool> cells;
  for (const std::uint8_t byte : mask) {
    for (int shift = 6; shift >= 0; shift -= 2) {
      const int cell = (byte >> shift) & 3;
      EXPECT_TRUE(cell == 0 || cell == 3);
      cells.push_back(cell == 3);
    }
  }
  return cells;
}

int LongestRun(const std::vector<bool>& cells, bool value) {
  int longest = 0, run = 0;
  for (const bool cell : cells) {
    run = cell == value ? run + 1 : 0;
    longest = std::max(longest, run);
  }
  return longest;
}

// The counts are constants of the machine: a sum and a weighted sum find any one that is mistyped.
TEST(FeatherMasks, HaveTheMachinesCounts) {
  std::uint32_t sum = 0, weighted = 0;
  for (std::uint32_t k = 0; k < kFeatherMasks; ++k) {
    sum += kFeatherKept[k];
    weighted += (k + 1) * kFeatherKept[k];
  }
  EXPECT_EQ(56698u, sum);
  EXPECT_EQ(1901156u, weighted);
}

TEST(FeatherMasks, KeepTheirCountEvenlyScattered) {
  for (std::uint32_t k = 0; k < kFeatherMasks; ++k) {
    SCOPED_TRACE(k);
    const std::vector<bool> cells = Cells(k);
    const int kept = static_cast<int>(std::count(cells.begin(), cells.end(), true));
    EXPECT_EQ(kFeatherKept[k], kept);
    // Every stretch of 64 cells holds its share to within a cell at either end of it.
    for (int first = 0; first < kCells; first += 64) {
      const auto here = std::count(cells.begin() + first, cells.begin() + first + 64, true);
      EXPECT_LE(std::abs(static_cast<int>(here) * 16 - kept), 16);
    }
    // No runs: what is rarer never stands in blocks, what is commoner not much longer than its
    // share asks for.
    const double rare = std::min(kept, kCells - kept);
    EXPECT_LE(LongestRun(cells, kept <= kCells / 2), 4);
    EXPECT_LE(LongestRun(cells, kept > kCells / 2), 4 * kCells / rare);
    // No stripes: of a fixed period of 2, 4, 8 or 16 no phase is full while another is empty.
    for (int period = 2; period <= 16; period *= 2) {
      int fullest = 0, emptiest = kCells;
      for (int phase = 0; phase < period; ++phase) {
        int here = 0;
        for (int cell = phase; cell < kCells; cell += period)
          here += cells[static_cast<std::size_t>(cell)];
        fullest = std::max(fullest, here);
        emptiest = std::min(emptiest, here);
      }
      EXPECT_LT(fullest - emptiest, kCells / period / 2);
    }
  }
}

TEST(FeatherMasks, AreNotSubsetsOfTheOneBefore) {
  for (std::uint32_t k = 1; k < kFeatherMasks; ++k) {
    const std::vector<bool> before = Cells(k - 1), cells = Cells(k);
    bool outside = false;
    for (std::size_t i = 0; i < cells.size(); ++i) outside |= cells[i] && !before[i];
    EXPECT_TRUE(outside) << k;
  }
}

TEST(FeatherMasks, AreSpreadOverTheStrength) {
  struct Case {
    std::uint8_t percent, rows;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> picks;  // job's mask, mask of the 90
  };
  for (const Case& expected :
       {Case{0, 0, {}}, Case{1, 0, {}}, Case{2, 1, {{0, 0}}},
        Case{10, 9, {{0, 0}, {1, 10}, {8, 80}}}, Case{50, 45, {{1, 2}, {44, 88}}},
        Case{100, 90, {{0, 0}, {89, 89}}}, Case{101, 0, {}}}) {
    Job job{};
    job.featherPercent = expected.percent;
    BuildFeatherMasks(job);
    EXPECT_EQ(expected.rows, job.featherRows);
    ASSERT_NE(nullptr, job.pFeatherMask);
    for (const auto& [i, k] : expected.picks) {
      std::uint8_t mask[kFeatherMaskBytes];
      FillFeatherMask(k, mask);
      EXPECT_EQ(0, std::memcmp(mask, job.pFeatherMask + 256 * i, sizeof mask)) << i;
    }
  }
}

}  // namespace
}  // namespace qrn
