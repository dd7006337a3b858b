// Lines that a one-head machine cannot print, worked out by hand from its nozzles.
#include "sim/reach.h"

#include <gtest/gtest.h>

#include <set>

namespace qrn::sim {
namespace {

Machine OneHead(std::uint8_t feather, bool bidirectional, std::uint8_t direction) {
  Machine machine;
  machine.heads = Heads::kPha;
  machine.inkOrder[0] = {0, 1, 2, 3, 4, 5, 5, 5};
  machine.featherPercent = feather;
  machine.bidirectional = bidirectional;
  machine.fixedDir = direction;
  return machine;
}

// Bands of 8 passes of 43 lines. The last two of a band's 344 lines lie behind the 342 that a pass
// prints whole: for pass i these are the lines L with 360 + L - 43 i = 342 or 343, modulo 344, and
// of the two the one that lies under a nozzle. Of phase i / 2 that line is in part.
TEST(Reach, FeatheredNozzlesAlonePrintTheLinesBehindTheWholeOnes) {
  const Reach reach(OneHead(10, true, 0), 1440);
  const std::set<std::uint32_t> wanted = {326, 25, 68, 111, 154, 197};
  for (std::uint32_t line = 0; line < 2 * 344; ++line) {
    const LineReach found = reach.OfLine(1, line);
    EXPECT_EQ(wanted.count(line % 344) == 1, found.partPhases != 0) << line;
    EXPECT_FALSE(found.none || found.above) << line;
  }
  EXPECT_EQ(1u, reach.OfLine(1, 25).partPhases);
  EXPECT_EQ(4u, reach.OfLine(1, 197).partPhases);
  // Forward passes of an even step (58 lines) meet each of their lines twice.
  const Reach twice(OneHead(10, false, 0), 1080);
  for (std::uint32_t line = 0; line < 348; ++line)
    EXPECT_EQ(0u, twice.OfLine(1, line).partPhases) << line;
}

TEST(Reach, EvenStepsLeaveOddLinesToReversePasses) {
  for (std::uint32_t line = 0; line < 700; ++line) {
    const bool odd = line % 2 == 1;
    // 8 passes of 38 lines; colour 7 has no row.
    const Reach forward(OneHead(0, false, 0), 1440), reverse(OneHead(0, false, 1), 1440),
        inTurns(OneHead(0, true, 0), 1440);
    EXPECT_EQ(odd, forward.OfLine(0, line).none);
    for (const Reach* reach : {&reverse, &inTurns}) {
      EXPECT_EQ(odd, reach->OfLine(0, line).above);
      EXPECT_FALSE(reach->OfLine(0, line).none);
      EXPECT_TRUE(reach->OfLine(7, line).none);
    }
    // Odd steps, and two heads, reach everything.
    const Reach oddSteps(OneHead(0, false, 0), 1620), twoHeads(Machine{}, 1440);
    for (const Reach* reach : {&oddSteps, &twoHeads}) {
      EXPECT_FALSE(reach->OfLine(0, line).none || reach->OfLine(0, line).partPhases != 0 ||
                   reach->OfLine(0, line).above);
    }
  }
}

}  // namespace
}  // namespace qrn::sim
