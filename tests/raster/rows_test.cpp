// Which nozzle rows carry a colour, and where they fire.
#include <gtest/gtest.h>

#include <cstring>

#include "raster/convert.h"

namespace qrn {
namespace {

constexpr std::uint8_t kDefaultOrder[2][8] = {{3, 3, 0, 0, 4, 4, 7, 7}, {1, 1, 5, 5, 2, 2, 6, 6}};
constexpr std::uint16_t kOffsets[8] = {40, 35, 30, 25, 20, 15, 10, 5};

struct Case {
  const char* name;
  std::uint8_t color, dir, mirror;
  std::uint32_t head;
  std::uint8_t bitA, bitB;
  std::uint16_t colA, colB;
};

class Rows : public testing::Test {
 protected:
  Rows() {
    std::memcpy(job.inkOrder, kDefaultOrder, sizeof kDefaultOrder);
    std::memcpy(job.rowOffset, kOffsets, sizeof kOffsets);
    job.headGapX = 5;
  }
  void Expect(const Case& expected) {
    job.curColor = expected.color;
    job.passDir = expected.dir;
    job.headMirror = expected.mirror;
    SCOPED_TRACE(expected.name);
    EXPECT_EQ(expected.head, LocateRowsDual(job));
    EXPECT_EQ(expected.bitA, job.rowBitA);
    EXPECT_EQ(expected.bitB, job.rowBitB);
    EXPECT_EQ(expected.colA, job.rowColA);
    EXPECT_EQ(expected.colB, job.rowColB);
  }
  Job job{};
};

TEST_F(Rows, AreFoundByInkDirectionAndHeadForm) {
  for (const Case& expected : {
           Case{"colour 3 forward: PHA, no gap", 3, 0, 0, 0, 2, 1, 35, 40},
           Case{"colour 1 forward: PHB behind the gap", 1, 0, 0, 1, 2, 1, 40, 45},
           Case{"colour 3 reverse: PHA behind the gap", 3, 1, 0, 0, 2, 1, 10, 5},
           Case{"colour 1 reverse", 1, 1, 0, 1, 2, 1, 5, 0},
           Case{"colour 7 forward, last rows", 7, 0, 0, 0, 0x80, 0x40, 5, 10},
           Case{"mirrored forward is reverse", 3, 0, 1, 0, 2, 1, 5, 0},
           Case{"mirrored reverse is forward, with the gap", 3, 1, 1, 0, 2, 1, 40, 45},
       }) {
    Expect(expected);
  }
}

TEST_F(Rows, OfBothHeadsFireThroughTheSecond) {
  job.inkOrder[0][2] = 5;
  job.inkOrder[1][2] = 0;
  job.inkOrder[1][3] = 0;
  job.inkOrder[1][5] = 5;
  Expect({"slot 2 of PHA, slot 5 of PHB", 5, 0, 0, 1, 0x20, 0x04, 20, 35});
}

struct OneHeadCase {
  const char* name;
  std::uint8_t color, dir;
  std::uint32_t head;
  std::uint8_t bitA, bitB;
  std::uint16_t colA, colB;
};

TEST_F(Rows, OfOneHeadAreItsFirstTwoWithoutAGap) {
  const std::uint8_t phb[8] = {1, 5, 1, 5, 1, 2, 9, 9}, fourth[8] = {6, 0, 0, 0, 0, 0, 0, 6};
  std::memcpy(job.inkOrder[1], phb, sizeof phb);
  std::memcpy(job.inkOrder[3], fourth, sizeof fourth);
  for (const OneHeadCase& expected : {
           OneHeadCase{"first row A, second row B, a third ignored", 1, 0, 1, 1, 4, 40, 30},
           OneHeadCase{"reverse", 1, 1, 1, 1, 4, 0, 10},
           OneHeadCase{"one row", 2, 0, 1, 0x20, 0, 15, 0},
           OneHeadCase{"none", 3, 0, 1, 0, 0, 0, 0},
           OneHeadCase{"PHA", 3, 1, 0, 1, 2, 0, 5},
           OneHeadCase{"no head in use: the fourth's order, two nozzles on", 6, 0, 4, 1, 0x80, 40,
                       5},
       }) {
    SCOPED_TRACE(expected.name);
    job.curColor = expected.color;
    job.passDir = expected.dir;
    LocateRowsSingle(expected.head, job);
    EXPECT_EQ(expected.bitA, job.rowBitA);
    EXPECT_EQ(expected.bitB, job.rowBitB);
    EXPECT_EQ(expected.colA, job.rowColA);
    EXPECT_EQ(expected.colB, job.rowColB);
  }
}

}  // namespace
}  // namespace qrn
