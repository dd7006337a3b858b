// Single dots, placed by hand.
#include "sim/paper/carriage.h"

#include <gtest/gtest.h>

namespace qrn::sim {
namespace {

struct Dot {
  const char* name;
  std::uint32_t resolution;
  bool mirrored;
  int direction;
  std::uint16_t startPos;
  int column, head, slot, nozzle, plane;  // in the swath data
  int ink, line, paperColumn, amount;     // on paper
};

TEST(Carriage, LaysEachDotWhereItsNozzleIs) {
  // Default inks: PHA 3,3,0,0,4,4,7,7, PHB 1,1,5,5,2,2,6,6. Of a pair the higher row prints the
  // upper line.
  for (const Dot& dot : {
           // Row 7 stands at the reference; PHA hangs 360 lines below PHB.
           Dot{"PHA row 7", 1440, false, 0, 377, 10, 0, 7, 0, 0, 7, 360, 10, 2},
           Dot{"plane 1 adds one", 1440, false, 0, 377, 10, 0, 7, 0, 1, 7, 360, 10, 1},
           Dot{"PHA row 6, second line, 31.8 columns behind", 1440, false, 0, 377, 42, 0, 6, 3, 0,
               7, 367, 10, 2},
           Dot{"PHA row 0, 451.2 columns behind", 1440, false, 0, 377, 461, 0, 0, 179, 0, 3, 719,
               10, 2},
           Dot{"PHB row 7, 1984 columns behind PHA", 1440, false, 0, 377, 1994, 1, 7, 0, 0, 6, 0,
               10, 2},
           Dot{"mirrored: row 7 stands last", 1440, true, 0, 377, 461, 0, 7, 0, 0, 7, 360, 10, 2},
           Dot{"270 columns an inch: row 6 is 23.85 behind", 2160, false, 0, 377, 34, 0, 6, 0, 0, 7,
               361, 10, 2},
           // 1412 - 377 = 1035 units of 1/150 inch = 2484 columns
           Dot{"reverse counts down", 1440, false, 1, 1412, 4, 0, 7, 0, 0, 7, 360, 2480, 2},
           Dot{"reverse, cut to the grid", 1440, false, 1, 1413, 4, 0, 7, 0, 0, 7, 360, 2482, 2},
           Dot{"in front of the origin", 1440, false, 0, 376, 0, 0, 7, 0, 0, 7, 360, -3, 2},
           Dot{"the last byte of a column", 1440, false, 0, 377, 1984, 1, 7, 179, 1, 6, 358, 0, 1},
       }) {
    SCOPED_TRACE(dot.name);
    Machine machine;
    machine.mirroredHeads = dot.mirrored;
    Carriage carriage(machine, dot.resolution);
    Paper paper;
    std::vector<std::uint8_t> columns(720 * (static_cast<std::size_t>(dot.column) + 1));
    columns[static_cast<std::size_t>(720 * dot.column + 360 * dot.plane + 2 * dot.nozzle +
                                     dot.head)] = static_cast<std::uint8_t>(1 << dot.slot);
    EXPECT_EQ(static_cast<std::uint64_t>(dot.amount),
              carriage.Print({dot.direction, dot.startPos, 0}, columns, paper));
    EXPECT_EQ(dot.amount, paper.Ink(dot.ink, dot.direction, dot.line, dot.paperColumn));
    EXPECT_EQ(static_cast<std::uint64_t>(dot.amount), paper.TotalInk());
    // The nozzle has passed over as many columns as were fired, and over no other.
    EXPECT_EQ(static_cast<std::size_t>(dot.column) + 1,
              paper.Row(dot.ink, dot.direction, dot.line)->ink.size());
  }
}

// Only where both heads' orders are blank are they the usual ones.
TEST(Carriage, TakesAnOrderThatIsBlankOnOneHeadAsItIs) {
  Machine machine;
  machine.inkOrder[1].fill(1);
  Carriage carriage(machine, 1440);
  Paper paper;
  std::vector<std::uint8_t> columns(720);
  columns[0] = 0x80;
  carriage.Print({0, 377, 0}, columns, paper);
  EXPECT_EQ(2u, paper.InkOf(0));
}

struct OneHeadDot {
  const char* name;
  Heads heads;
  bool twoHeadCarriage;
  std::uint8_t headGapX;
  std::uint16_t startPos;
  int column, head, slot;
  int ink, line, paperColumn;  // ink -1: nothing is laid
};

// Inks 0,0,1..6 on PHA, 7..0 on PHB, 5 on every row of the fourth. The carriage grid stays that of
// two heads.
TEST(Carriage, OfOneHeadLaysOnlyThatHeadsDots) {
  for (const OneHeadDot& dot : {
           OneHeadDot{"row 0", Heads::kPha, false, 5, 377, 451, 0, 0, 0, 0, 0},
           OneHeadDot{"PHB on a carriage of its own", Heads::kPhb, false, 5, 377, 3, 1, 7, 0, 0, 3},
           // (3628 + 4 x 1989) x 150 / 1440 = 1206.6, cut; from there on as above
           OneHeadDot{"PHB on a carriage for two", Heads::kPhb, true, 5, 1206, 3, 1, 7, 0, 0, 3},
           // (3628 + 4 x 1985) x 150 / 1440 = 1205: the last one in front of that
           OneHeadDot{"to the very place", Heads::kPhb, true, 1, 1204, 3, 1, 7, 0, 0, 3},
           OneHeadDot{"PHA on a carriage for two", Heads::kPha, true, 5, 377, 3, 0, 7, 6, 0, 3},
           OneHeadDot{"a dot for the other head", Heads::kPha, true, 5, 377, 3, 1, 7, -1, 0, 0},
           OneHeadDot{"none in use: PHA's nozzles", Heads::kNone, false, 5, 377, 3, 0, 7, 5, 0, 3},
       }) {
    SCOPED_TRACE(dot.name);
    Machine machine;
    machine.heads = dot.heads;
    machine.twoHeadCarriage = dot.twoHeadCarriage;
    machine.headGapX.fill(dot.headGapX);
    machine.inkOrder = {
        {{0, 0, 1, 2, 3, 4, 5, 6}, {7, 6, 5, 4, 3, 2, 1, 0}, {}, {5, 5, 5, 5, 5, 5, 5, 5}}};
    Carriage carriage(machine, 1440);
    Paper paper;
    std::vector<std::uint8_t> columns(720 * (static_cast<std::size_t>(dot.column) + 1));
    columns[static_cast<std::size_t>(720 * dot.column + dot.head)] =
        static_cast<std::uint8_t>(1 << dot.slot);
    carriage.Print({0, dot.startPos, 0}, columns, paper);
    EXPECT_EQ(dot.ink < 0 ? 0u : 2u, paper.TotalInk());
    EXPECT_EQ(dot.ink < 0 ? 1u : 0u, carriage.StrayBytes());
    if (dot.ink < 0) continue;
    EXPECT_EQ(2, paper.Ink(dot.ink, 0, dot.line, dot.paperColumn));
  }
}

TEST(Carriage, FeedsAfterThePassAndCountsSteps) {
  Machine machine;
  machine.headGapY.fill(9);
  machine.headGapX.fill(5);
  Carriage carriage(machine, 1440);
  Paper paper;
  std::vector<std::uint8_t> phaDot(720), phbDot(720);
  phaDot[0] = 0x80;
  phbDot[1] = 0x80;
  carriage.Print({0, 377, 1800}, phaDot, paper);
  carriage.Print({0, 377, 9}, {}, paper);  // 1809 steps: 90.45 lines
  carriage.Print({0, 377, 2}, phbDot, paper);
  carriage.Print({0, 377, 0}, phbDot, paper);  // 1811 steps: 90.55 lines
  EXPECT_EQ(2, paper.Ink(7, 0, 351, 0));
  EXPECT_EQ(2, paper.Ink(6, 0, 90, -1989));
  EXPECT_EQ(2, paper.Ink(6, 0, 91, -1989));
}

}  // namespace
}  // namespace qrn::sim
