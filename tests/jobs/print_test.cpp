// Whole jobs on paper: every cell carries the ink that was asked for, in every mode that two heads
// print.
#include <gtest/gtest.h>

#include <cstdio>

#include "jobs/job_runner.h"
#include "support/test_seed.h"

namespace {

JobOutcome ExpectPrintedRight(const JobPlan& plan, std::uint64_t cellsMin = 1000) {
  SCOPED_TRACE(Describe(plan));
  JobOutcome outcome = RunJob(plan);
  EXPECT_TRUE(outcome.started);
  EXPECT_EQ("", outcome.violation);
  EXPECT_TRUE(outcome.boxes.empty());
  EXPECT_EQ(1u, outcome.stats.jobsEnded);
  EXPECT_GE(outcome.comparison.cells, cellsMin);
  EXPECT_EQ(0u, outcome.comparison.differingCells) << outcome.comparison.firstDifference;
  return outcome;
}

struct Direction {
  bool bidirectional;
  std::uint8_t fixedDir;
};

class EveryMode : public testing::TestWithParam<std::uint32_t> {};

TEST_P(EveryMode, PrintsEveryCellInEachDirectionAndHeadForm) {
  std::uint64_t seed = TestSeed();
  for (const Direction direction : {Direction{true, 0}, Direction{false, 0}, Direction{false, 1}}) {
    for (const bool mirrored : {false, true}) {
      JobPlan plan;
      plan.resolution = GetParam();
      plan.seed = ++seed;
      plan.lineApi = seed % 2 == 0;
      plan.lines = static_cast<std::uint32_t>(300 + seed % 5 * 97);
      plan.machine.bidirectional = direction.bidirectional;
      plan.machine.fixedDir = direction.fixedDir;
      plan.machine.mirroredHeads = mirrored;
      ExpectPrintedRight(plan);
    }
  }
}

TEST_P(EveryMode, PrintsEveryCellWithHeadGapsFeatheringAndOtherInkOrders) {
  std::uint64_t seed = TestSeed();
  for (const int featherPercent : {0, 10, 50, 98}) {
    JobPlan plan;
    plan.resolution = GetParam();
    plan.seed = ++seed;
    plan.machine.featherPercent = static_cast<std::uint8_t>(featherPercent);
    plan.machine.headGapX.fill(static_cast<std::uint8_t>(seed % 256));
    plan.machine.headGapY.fill(static_cast<std::uint8_t>(seed % 61));
    plan.machine.biDirShift.fill(static_cast<std::uint8_t>(20 + seed % 30));
    plan.machine.flashEvery = 2;
    if (featherPercent == 10)
      plan.machine.inkOrder = {{{7, 3, 2, 1, 7, 2, 3, 1}, {0, 4, 0, 5, 6, 6, 5, 4}}};
    ExpectPrintedRight(plan);
  }
}

TEST_P(EveryMode, PrintsEveryCellWithHeadsFarFromTheirNominalPlace) {
  std::uint64_t seed = TestSeed();
  for (const int gapY : {128, 255}) {
    for (const bool mirrored : {false, true}) {
      JobPlan plan;
      plan.resolution = GetParam();
      plan.seed = ++seed;
      plan.machine.mirroredHeads = mirrored;
      plan.machine.featherPercent = mirrored ? 70 : 0;
      plan.machine.headGapX.fill(mirrored ? 255 : 0);
      plan.machine.headGapY.fill(static_cast<std::uint8_t>(gapY));
      ExpectPrintedRight(plan);
    }
  }
}

TEST_P(EveryMode, PrintsShortJobsThroughTheFinalFlushAlone) {
  for (const std::uint32_t lines : {1u, 2u, 45u, 359u, 360u, 361u}) {
    for (const bool mirrored : {false, true}) {
      JobPlan plan;
      plan.resolution = GetParam();
      plan.lines = lines;
      plan.widthPixels = 96;
      plan.seed = 3;  // line 0 is inked
      plan.machine.mirroredHeads = mirrored;
      plan.machine.featherPercent = mirrored ? 90 : 0;
      ExpectPrintedRight(plan, 1);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(TwoHeads, EveryMode, testing::Values(1080u, 1440u, 1620u, 2160u));

// Virtual time runs one thread at a time and cannot show a race; the thread sanitizer sees one
// here.
TEST(RealThreads, PrintEveryCell) {
  JobPlan plan;
  plan.realTime = true;
  plan.lines = 700;  // more passes than the queue has slots
  plan.machine.flashEvery = 2;
  plan.seed = TestSeed();
  ExpectPrintedRight(plan);
}

TEST(InkOrder, ColorsWithOneRowOnEachHeadAreNamedAsTheReason) {
  JobPlan plan;
  plan.machine.inkOrder = {{{0, 1, 2, 3, 4, 5, 6, 7}, {0, 1, 2, 3, 4, 5, 6, 7}}};
  const JobOutcome outcome = RunJob(plan);
  EXPECT_EQ("", outcome.violation);
  EXPECT_GT(outcome.comparison.differingCells, 0u);
  EXPECT_NE("", outcome.comparison.reason);
}

TEST(Families, StreamAndLineGiveTheSameBytes) {
  JobPlan plan;
  plan.seed = TestSeed();
  const JobOutcome stream = RunJob(plan);
  plan.lineApi = true;
  const JobOutcome line = RunJob(plan);
  EXPECT_GT(stream.stats.swaths, 4u);
  const auto streamBytes = Unnumbered(stream.transfers), lineBytes = Unnumbered(line.transfers);
  ASSERT_EQ(streamBytes.size(), lineBytes.size());
  for (std::size_t i = 0; i < lineBytes.size(); ++i)
    ASSERT_TRUE(streamBytes[i] == lineBytes[i]) << "transfer " << i;
}

// Pass n looks at lines 90 n - 720 to 90 n - 1. It is blank between the last one that sees the ink
// in front of a gap and the first one that sees the ink behind it: 7 passes, n = 21..27, and 8,
// n = 37..44. Paper in front of the first ink and behind the last is not fed.
TEST(Blanks, BetweenInkAreFedInOneSwathEach) {
  JobPlan plan;
  plan.widthPixels = 512;
  plan.lines = 5000;
  plan.solid = {{1000, 1100}, {2500, 2600}, {4000, 4100}};
  const JobOutcome outcome = ExpectPrintedRight(plan);
  EXPECT_EQ((std::vector<std::uint32_t>{7 * 1800, 8 * 1800}), FeedOnlySteps(outcome));
  EXPECT_EQ(2u, outcome.stats.feedOnlySwaths);
}

// The last cycle of the flush meets phase 0 of the lines from 164 on of an unfinished band in
// feathered nozzles only, when a band is 176 lines.
TEST(StrongFeathering, LosesPixelsAtTheEndOfAnAlmostFullBandAt2160DpiOnly) {
  struct Case {
    std::uint32_t resolution;
    int featherPercent;
    std::uint32_t lines, lossFrom;  // UINT32_MAX: none lost
  };
  for (const Case& expected : {
           Case{2160, 100, 175, 164},
           Case{2160, 99, 176 + 175, 176 + 164},
           Case{2160, 100, 164, UINT32_MAX},
           Case{2160, 100, 176, UINT32_MAX},
           Case{2160, 98, 183, UINT32_MAX},
           Case{1620, 100, 179, UINT32_MAX},
           Case{1440, 100, 179, UINT32_MAX},
           Case{1080, 100, 179, UINT32_MAX},
       }) {
    JobPlan plan;
    plan.resolution = expected.resolution;
    plan.widthPixels = 1032;  // the first whole groups as wide as a mask
    plan.lines = expected.lines;
    plan.solid = {{0, expected.lines}};
    plan.machine.featherPercent = static_cast<std::uint8_t>(expected.featherPercent);
    if (expected.lossFrom == UINT32_MAX) {
      ExpectPrintedRight(plan);
      continue;
    }
    SCOPED_TRACE(Describe(plan));
    const qrn::sim::Comparison comparison = RunJob(plan).comparison;
    int plane = 0;
    std::uint32_t line = 0;
    ASSERT_EQ(2,
              std::sscanf(comparison.firstDifference.c_str(), "plane %d, line %u", &plane, &line));
    EXPECT_GE(line, expected.lossFrom);
    EXPECT_LT(comparison.differingCells, comparison.cells / 1000);
  }
}

}  // namespace
