// The comparison sees one wrong cell wherever it is, whatever an operator would calibrate.
#include "sim/proof/compare.h"

#include <gtest/gtest.h>

#include <random>

#include "support/test_seed.h"

namespace qrn::sim {
namespace {

constexpr std::uint32_t kLines = 60, kLineBytes = 24, kPassCount = 4, kResolution = 1440;

// Ink in one plane.
class Source : public RasterSource {
 public:
  explicit Source(std::uint64_t seed) : bytes_(kLines * kLineBytes) {
    std::mt19937_64 random(seed);
    for (auto& byte : bytes_) byte = static_cast<std::uint8_t>(random() & random());
  }
  std::uint32_t Lines() const override { return kLines; }
  std::uint32_t LineBytes() const override { return kLineBytes; }
  const std::uint8_t* Line(int plane, std::uint32_t line) const override {
    return plane == 2 ? &bytes_[line * kLineBytes] : nullptr;
  }

 private:
  std::vector<std::uint8_t> bytes_;
};

void Lay(int plane, int direction, std::int32_t line, std::int32_t column, int amount,
         Paper* paper) {
  AddInk(paper->Prepare(plane, direction, line, column, column), column,
         static_cast<std::uint8_t>(amount));
}

// Prints every pixel, even phases in reverse passes, with a calibration that is off.
Paper Printed(const Source& source, std::int32_t origin, std::int32_t shift) {
  Paper paper;
  for (std::uint32_t line = 0; line < kLines; ++line) {
    for (std::uint32_t pixel = 0; pixel < 4 * kLineBytes; ++pixel) {
      const int level = (source.Line(2, line)[pixel / 4] >> (6 - 2 * (pixel % 4))) & 3;
      const int reverse = pixel % 2 == 0;
      const auto column = static_cast<std::int32_t>(pixel / kPassCount) + reverse * shift;
      if (level != 0)
        Lay(2, reverse, static_cast<std::int32_t>(line) + origin, column, level, &paper);
    }
  }
  return paper;
}

TEST(Compare, ReportsOneWrongCellWhereverItIs) {
  const Source source(TestSeed());
  struct Case {
    int plane, direction;
    std::int32_t line, column;
  };
  for (const auto& [origin, shift] :
       {std::pair{0, 0}, std::pair{630, -2}, std::pair{-1440, 17}, std::pair{5, -300}}) {
    Paper paper = Printed(source, origin, shift);
    Comparison result = Compare(source, paper, Machine{}, kResolution);
    EXPECT_EQ(0u, result.differingCells) << result.firstDifference;
    EXPECT_EQ(origin, result.lineOrigin);
    EXPECT_EQ(shift, result.reverseShift);
    EXPECT_GT(result.cells, 500u);
    for (const Case& extra :
         {Case{2, 0, 30, 7}, Case{2, 1, 30, 7 + shift}, Case{5, 0, 30, 7}, Case{2, 0, 70, 3},
          Case{2, 0, 20, -4}, Case{2, 0, 20, 900}, Case{2, 0, kLines - 1, 23}}) {
      paper = Printed(source, origin, shift);
      Lay(extra.plane, extra.direction, extra.line + origin, extra.column, 1, &paper);
      result = Compare(source, paper, Machine{}, kResolution);
      EXPECT_EQ(1u, result.differingCells);
      EXPECT_EQ(1u, result.overInkedCells);
      EXPECT_EQ(0u, result.firstDifference.find("plane " + std::to_string(extra.plane) + ", line " +
                                                std::to_string(extra.line)))
          << result.firstDifference;
    }
  }
  const Comparison nothing = Compare(source, Paper{}, Machine{}, kResolution);
  EXPECT_EQ(nothing.cells, nothing.differingCells);
  EXPECT_GT(nothing.cells, 500u);
}

}  // namespace
}  // namespace qrn::sim
