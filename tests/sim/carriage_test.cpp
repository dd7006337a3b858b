// Single dots, placed by hand.
#include "sim/paper/carriage.h"

#include <gtest/gtest.h>

namespace qrn::sim {
namespace {

// Default inks: PHA 3,3,0,0,4,4,7,7, PHB 1,1,5,5,2,2,6,6. Of a pair the higher row prints the upper
// line.
Machine Two(bool mirrored = false, std::uint8_t headGapX = 0, std::uint8_t headGapY = 0) {
  Machine machine;
  machine.mirroredHeads = mirrored;
  machine.headGapX.fill(headGapX);
  machine.headGapY.fill(headGapY);
  return machine;
}

// Inks 0,0,1..6 on PHA, 7..0 on PHB, 5 on every row of the fourth.
Machine One(Heads heads, bool twoHeadCarriage, std::uint8_t headGapX) {
  Machine machine;
  machine.heads = heads;
  machine.twoHeadCarriage = twoHeadCarriage;
  machine.headGapX.fill(headGapX);
  machine.inkOrder = {
      {{0, 0, 1, 2, 3, 4, 5, 6}, {7, 6, 5, 4, 3, 2, 1, 0}, {}, {5, 5, 5, 5, 5, 5, 5, 5}}};
  return machine;
}

struct LaidDot {
  const char* name;
  Machine machine;
  std::uint32_t resolution;
  PassCommand pass;  // direction, start position
  struct {
    std::size_t column, head, row, nozzle, color;
  } fired;  // in the swath data
  struct {
    int ink, line, column;
  } laid;  // on paper
};

const LaidDot kCases[] = {
    // Row 7 is at the reference; PHA is 360 lines below PHB.
    {"PHA row 7", Two(), 1440, {0, 377}, {10, 0, 7, 0, 0}, {7, 360, 10}},
    {"plane 1", Two(), 1440, {0, 377}, {10, 0, 7, 0, 1}, {7, 360, 10}},
    {"second line, 31.8 behind", Two(), 1440, {0, 377}, {42, 0, 6, 3, 0}, {7, 367, 10}},
    {"row 0, 451.2 behind", Two(), 1440, {0, 377}, {461, 0, 0, 179, 0}, {3, 719, 10}},
    {"PHB, 1984 behind PHA", Two(), 1440, {0, 377}, {1994, 1, 7, 0, 0}, {6, 0, 10}},
    {"mirrored: row 7 is last", Two(true), 1440, {0, 377}, {461, 0, 7, 0, 0}, {7, 360, 10}},
    {"row 6 is 23.85 behind", Two(), 2160, {0, 377}, {34, 0, 6, 0, 0}, {7, 361, 10}},
    // 1412 - 377 = 1035 units of 1/150 inch = 2484 columns
    {"reverse counts down", Two(), 1440, {1, 1412}, {4, 0, 7, 0, 0}, {7, 360, 2480}},
    {"reverse, cut to the grid", Two(), 1440, {1, 1413}, {4, 0, 7, 0, 0}, {7, 360, 2482}},
    {"before the origin", Two(), 1440, {0, 376}, {0, 0, 7, 0, 0}, {7, 360, -3}},
    {"a column's last byte", Two(), 1440, {0, 377}, {1984, 1, 7, 179, 1}, {6, 358, 0}},
    {"gaps: PHA is 9 higher", Two(false, 5, 9), 1440, {0, 377}, {10, 0, 7, 0, 0}, {7, 351, 10}},
    {"gaps: PHB 5 behind", Two(false, 5, 9), 1440, {0, 377}, {1999, 1, 7, 0, 0}, {6, 0, 10}},
    // The carriage grid stays that of two heads.
    {"PHA alone", One(Heads::kPha, false, 5), 1440, {0, 377}, {451, 0, 0, 0, 0}, {0, 0, 0}},
    {"PHB alone", One(Heads::kPhb, false, 5), 1440, {0, 377}, {3, 1, 7, 0, 0}, {0, 0, 3}},
    {"PHA, room for two", One(Heads::kPha, true, 5), 1440, {0, 377}, {3, 0, 7, 0, 0}, {6, 0, 3}},
    // (3628 + 4 x 1989) x 150 / 1440 = 1206.6, cut; from there on as above
    {"PHB, room for two", One(Heads::kPhb, true, 5), 1440, {0, 1206}, {3, 1, 7, 0, 0}, {0, 0, 3}},
    // (3628 + 4 x 1985) x 150 / 1440 = 1205: the last one before that
    {"to the very place", One(Heads::kPhb, true, 1), 1440, {0, 1204}, {3, 1, 7, 0, 0}, {0, 0, 3}},
    {"no head: PHA's", One(Heads::kNone, false, 5), 1440, {0, 377}, {3, 0, 7, 0, 0}, {5, 0, 3}},
};

TEST(Carriage, LaysEachDotWhereItsNozzleIs) {
  for (const auto& [name, machine, resolution, pass, fired, laid] : kCases) {
    SCOPED_TRACE(name);
    Carriage carriage(machine, resolution);
    Paper paper;
    std::vector<std::uint8_t> data(720 * (fired.column + 1));
    data[720 * fired.column + 360 * fired.color + 2 * fired.nozzle + fired.head] =
        static_cast<std::uint8_t>(1u << fired.row);
    const std::uint64_t amount = fired.color == 0 ? 2 : 1;
    EXPECT_EQ(amount, carriage.PrintPass(pass, data, paper));
    EXPECT_EQ(amount, paper.Ink(laid.ink, pass.direction, laid.line, laid.column));
    EXPECT_EQ(amount, paper.InkOf(laid.ink));
    // The nozzle has passed over as many columns as were fired, and over no other.
    const InkRow& passedOver = *paper.Row(laid.ink, pass.direction, laid.line);
    EXPECT_EQ(fired.column + 1, passedOver.ink.size());
  }
}

}  // namespace
}  // namespace qrn::sim
