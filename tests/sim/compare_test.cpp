// The comparison finds what an operator would calibrate, and nothing else is forgiven.
#include "sim/compare.h"

#include <gtest/gtest.h>

#include <random>

#include "support/test_seed.h"

namespace qrn::sim {
namespace {

constexpr std::uint32_t kLines = 60, kLineBytes = 24, kPassCount = 4, kResolution = 1440;

class Source : public RasterSource {
 public:
  explicit Source(std::uint64_t seed) : bytes(kLines * kLineBytes) {
    std::mt19937_64 random(seed);
    for (auto& byte : bytes) byte = static_cast<std::uint8_t>(random() & random());
  }
  std::uint32_t Lines() const override { return kLines; }
  std::uint32_t LineBytes() const override { return kLineBytes; }
  const std::uint8_t* Line(int plane, std::uint32_t line) const override {
    return plane == 2 ? &bytes[line * kLineBytes] : nullptr;
  }
  std::vector<std::uint8_t> bytes;
};

// Prints every pixel, even phases in reverse passes, with a calibration that is off.
void Print(const Source& source, std::int32_t origin, std::int32_t shift, Paper* paper) {
  for (std::uint32_t line = 0; line < kLines; ++line) {
    for (std::uint32_t pixel = 0; pixel < 4 * kLineBytes; ++pixel) {
      const int level = (source.bytes[line * kLineBytes + pixel / 4] >> (6 - 2 * (pixel % 4))) & 3;
      if (level == 0) continue;
      const int reverse = pixel % 2 == 0;
      const auto column = static_cast<std::int32_t>(pixel / kPassCount) + reverse * shift;
      const auto paperLine = static_cast<std::int32_t>(line) + origin;
      AddInk(paper->Prepare(2, reverse, paperLine, column, column), column,
             static_cast<std::uint8_t>(level));
    }
  }
}

TEST(Compare, FindsOriginAndShiftAndNothingElse) {
  const Source source(TestSeed());
  for (const auto& [origin, shift] :
       std::vector<std::pair<int, int>>{{0, 0}, {630, -2}, {-1440, 17}, {5, -300}}) {
    Paper paper;
    Print(source, origin, shift, &paper);
    const Comparison result = Compare(source, paper, Machine{}, kResolution);
    EXPECT_EQ(0u, result.differingCells) << result.firstDifference;
    EXPECT_EQ(origin, result.lineOrigin);
    EXPECT_EQ(shift, result.reverseShift);
    EXPECT_TRUE(result.reverseFound);
    EXPECT_GT(result.cells, 500u);
  }
}

TEST(Compare, ReportsOneWrongCellWhereverItIs) {
  const Source source(TestSeed());
  struct Case {
    int plane, direction;
    std::int32_t line, column;
  };
  for (const Case& extra :
       {Case{2, 0, 30, 7}, Case{2, 1, 30, 7}, Case{5, 0, 30, 7}, Case{2, 0, 70, 3},
        Case{2, 0, 20, -4}, Case{2, 0, 20, 900}, Case{2, 0, kLines - 1, 23}}) {
    Paper paper;
    Print(source, 100, 3, &paper);
    AddInk(
        paper.Prepare(extra.plane, extra.direction, extra.line + 100, extra.column, extra.column),
        extra.column, 1);
    const Comparison result = Compare(source, paper, Machine{}, kResolution);
    EXPECT_EQ(1u, result.differingCells);
    EXPECT_EQ(0u, result.firstDifference.find("plane " + std::to_string(extra.plane) + ", line " +
                                              std::to_string(extra.line)))
        << result.firstDifference;
  }
  Paper blank;
  const Comparison nothing = Compare(source, blank, Machine{}, kResolution);
  EXPECT_EQ(nothing.cells, nothing.differingCells);
  EXPECT_GT(nothing.cells, 500u);
}

}  // namespace
}  // namespace qrn::sim
