// The comparison sees one wrong cell wherever it is, whatever an operator would calibrate.
#include "sim/proof/compare.h"

#include <gtest/gtest.h>

#include "scenarios/host.h"
#include "support/test_seed.h"

namespace qrn::sim {
namespace {

using scenarios::Page;

constexpr std::uint32_t kLines = 60, kWidth = 96, kPassCount = 4, kResolution = 1440;

void Lay(int color, int direction, std::int32_t line, std::int32_t column, int amount,
         Paper* paper) {
  AddInk(paper->Prepare(color, direction, line, column, column), column,
         static_cast<std::uint8_t>(amount));
}

// Prints every pixel, even phases in reverse passes, with a calibration that is off.
Paper Printed(const Page& page, std::int32_t origin, std::int32_t shift) {
  Paper paper;
  for (int color = 0; color < kInks; ++color) {
    for (std::uint32_t at = 0; at < kLines * kWidth; ++at) {
      const std::uint32_t line = at / kWidth, pixel = at % kWidth;
      const int level = (page.Line(color, line)[pixel / 4] >> (6 - 2 * (pixel % 4))) & 3;
      const int reverse = pixel % 2 == 0;
      const auto column = static_cast<std::int32_t>(pixel / kPassCount) + reverse * shift;
      if (level != 0)
        Lay(color, reverse, static_cast<std::int32_t>(line) + origin, column, level, &paper);
    }
  }
  return paper;
}

TEST(Compare, ReportsOneWrongCellWhereverItIs) {
  scenarios::Job job;
  job.width = kWidth, job.height = kLines;
  job.image.random = true, job.image.seed = TestSeed();
  const Page page = Page::Drawn(job);
  struct Case {
    int color, direction;
    std::int32_t line, column;
  };
  for (const auto& [origin, shift] :
       {std::pair{0, 0}, std::pair{630, -2}, std::pair{-1440, 17}, std::pair{5, -300}}) {
    Paper paper = Printed(page, origin, shift);
    const Comparison right = Compare(page, paper, Machine{}, kResolution);
    EXPECT_EQ(0u, right.differingCells) << right.firstDifference;
    EXPECT_EQ(origin, right.lineOrigin);
    EXPECT_EQ(shift, right.reverseShift);
    EXPECT_GT(right.cells, 500u);
    for (const Case& extra :
         {Case{2, 0, 30, 7}, Case{2, 1, 30, 7 + shift}, Case{5, 0, 30, 7}, Case{2, 0, 70, 3},
          Case{2, 0, 20, -4}, Case{2, 0, 20, 900}, Case{2, 0, kLines - 1, 23}}) {
      paper = Printed(page, origin, shift);
      Lay(extra.color, extra.direction, extra.line + origin, extra.column, 1, &paper);
      const Comparison result = Compare(page, paper, Machine{}, kResolution);
      EXPECT_EQ(1u, result.differingCells);
      EXPECT_EQ(1u, result.overInkedCells);
      EXPECT_EQ(0u, result.firstDifference.find("color " + std::to_string(extra.color) + ", line " +
                                                std::to_string(extra.line)))
          << result.firstDifference;
    }
    Lay(2, 0, origin - 3, 5, 1, &paper);  // the first ink of all would be taken for the page's
    EXPECT_EQ(2u, CompareCalibrated(page, paper, Machine{}, kResolution, right).differingCells);
  }
  const Comparison nothing = Compare(page, Paper{}, Machine{}, kResolution);
  EXPECT_EQ(nothing.cells, nothing.differingCells);
  EXPECT_GT(nothing.cells, 500u);
}

}  // namespace
}  // namespace qrn::sim
