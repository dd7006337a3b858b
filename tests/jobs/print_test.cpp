// Whole jobs on paper: every cell carries the ink that was asked for, in every mode that two heads
// print.
#include <gtest/gtest.h>

#include "jobs/job_runner.h"
#include "support/test_seed.h"

namespace {

using qrn::sim::Machine;

void ExpectPrintedRight(const JobPlan& plan) {
  SCOPED_TRACE(Describe(plan));
  const JobOutcome outcome = RunJob(plan);
  EXPECT_TRUE(outcome.started);
  EXPECT_EQ("", outcome.violation);
  EXPECT_TRUE(outcome.boxes.empty());
  EXPECT_EQ(1u, outcome.stats.jobsEnded);
  EXPECT_GT(outcome.comparison.cells, 1000u);
  EXPECT_EQ(0u, outcome.comparison.differingCells) << outcome.comparison.firstDifference;
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

INSTANTIATE_TEST_SUITE_P(TwoHeads, EveryMode, testing::Values(1080u, 1440u, 1620u, 2160u));

TEST(ShortJobs, PrintEveryCellThroughTheFinalFlushAlone) {
  for (const std::uint32_t lines : {1u, 2u, 45u, 359u, 360u, 361u}) {
    JobPlan plan;
    plan.lines = lines;
    plan.widthPixels = 96;
    plan.seed = 3;  // line 0 is inked
    SCOPED_TRACE(Describe(plan));
    const JobOutcome outcome = RunJob(plan);
    EXPECT_EQ("", outcome.violation);
    EXPECT_GT(outcome.comparison.cells, 0u);
    EXPECT_EQ(0u, outcome.comparison.differingCells) << outcome.comparison.firstDifference;
  }
}

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
  ASSERT_EQ(stream.stats.bytesReceived, line.stats.bytesReceived);
  EXPECT_EQ(stream.stats.swaths, line.stats.swaths);
  EXPECT_EQ(stream.stats.inkLaid, line.stats.inkLaid);
}

}  // namespace
