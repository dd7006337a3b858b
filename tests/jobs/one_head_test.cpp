// One-head jobs on paper: every pixel once and nothing else, but for what the machine cannot reach.
#include <gtest/gtest.h>

#include "jobs/job_runner.h"
#include "support/test_seed.h"

namespace {

using qrn::sim::Heads;
using qrn::sim::Machine;

constexpr std::array<std::array<std::uint8_t, 8>, 4> kOneRowEach = {
    {{5, 1, 2, 3, 4, 0, 6, 7}, {7, 6, 5, 4, 3, 2, 1, 0}, {}, {0, 1, 2, 3, 4, 5, 6, 7}}};
// Two rows, one row and none, in one head; an entry above 7 is no ink.
constexpr std::array<std::array<std::uint8_t, 8>, 4> kMixedRows = {
    {{3, 3, 0, 0, 1, 9, 2, 6}, {1, 4, 1, 5, 5, 0, 0, 7}, {}, {}}};

// How the passes lie: whether the step is odd and how many lines of a band feathering leaves
// behind, worked out by hand from the nozzles and the pass counts.
struct Lie {
  std::uint32_t resolution;
  std::uint8_t feather;
  bool oddStep;
  bool losesFeathered;  // some lines come under feathered nozzles only
};
constexpr Lie kLies[] = {
    {1080, 0, true, false},  {1080, 10, false, true}, {1080, 50, false, true},
    {1440, 0, false, false}, {1440, 10, true, true},  {1440, 50, false, true},
    {1620, 0, true, false},  {1620, 10, true, true},  {1620, 50, true, true},
    {2160, 0, true, false},  {2160, 10, false, true}, {2160, 50, true, true},
};

struct Drive {
  bool bidirectional;
  std::uint8_t fixedDir;
};
constexpr Drive kDrives[] = {{true, 0}, {false, 0}, {false, 1}};

JobOutcome Print(const Machine& machine, const Lie& lie, std::uint64_t seed) {
  JobPlan plan;
  plan.machine = machine;
  plan.machine.featherPercent = lie.feather;
  plan.resolution = lie.resolution;
  plan.lines = static_cast<std::uint32_t>(700 + seed % 300);
  plan.lineApi = seed % 2 == 0;
  plan.seed = seed;
  SCOPED_TRACE(Describe(plan));
  const JobOutcome outcome = RunJob(plan);
  EXPECT_TRUE(outcome.started);
  EXPECT_EQ("", outcome.violation);
  EXPECT_EQ(1u, outcome.stats.jobsEnded);
  EXPECT_GT(outcome.comparison.cells, 1000u);
  EXPECT_EQ(0u, outcome.comparison.differingCells) << outcome.comparison.firstDifference;
  return outcome;
}

class OneHeadPrint : public testing::TestWithParam<Lie> {};

TEST_P(OneHeadPrint, LaysEveryPixelOnceWhereItCan) {
  const Lie& lie = GetParam();
  std::uint64_t seed = TestSeed();
  for (const Drive& drive : kDrives) {
    for (const auto& [heads, twoHeadCarriage, mirrored] : {std::tuple{Heads::kPha, false, true},
                                                           {Heads::kPha, true, false},
                                                           {Heads::kPhb, false, false},
                                                           {Heads::kPhb, true, true}}) {
      Machine machine;
      machine.heads = heads;
      machine.twoHeadCarriage = twoHeadCarriage;
      machine.mirroredHeads = mirrored;
      machine.inkOrder = kOneRowEach;
      machine.bidirectional = drive.bidirectional;
      machine.fixedDir = drive.fixedDir;
      machine.headGapX.fill(static_cast<std::uint8_t>(++seed));
      const JobOutcome outcome = Print(machine, lie, seed);
      // Half of the lines, or a few cells at the seams, or none.
      const auto& found = outcome.comparison;
      const bool forwardOnly = !drive.bidirectional && drive.fixedDir == 0;
      const bool halfLost = !lie.oddStep && forwardOnly;
      const bool seamsLost = lie.losesFeathered && !halfLost;
      EXPECT_TRUE(halfLost || seamsLost || found.unreachedCells == 0);
      EXPECT_EQ(halfLost, found.unreachedCells > found.cells / 2);
      EXPECT_TRUE(halfLost || found.unreachedCells < found.cells / 20);
      EXPECT_EQ(!lie.oddStep && !forwardOnly, found.displacedCells > 0);
      EXPECT_EQ(!lie.oddStep || lie.losesFeathered, !found.reason.empty());
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Lies, OneHeadPrint, testing::ValuesIn(kLies), [](const auto& lie) {
  return std::to_string(lie.param.resolution) + "f" + std::to_string(lie.param.feather);
});

TEST(OneHeadInks, OfTwoRowsPrintOnceAndOfNoneNotAtAll) {
  for (const Heads heads : {Heads::kPha, Heads::kPhb}) {
    Machine machine;
    machine.heads = heads;
    machine.inkOrder = kMixedRows;
    const JobOutcome mixed = Print(machine, kLies[0], TestSeed());
    EXPECT_GT(mixed.comparison.unreachedCells, 0u);
    EXPECT_NE(std::string::npos, mixed.comparison.reason.find("no nozzle row for planes"));
  }
}

TEST(OneHeadInks, OfNoReportedHeadAreSentAndTheReasonIsNamed) {
  JobPlan plan;
  plan.machine.heads = Heads::kNone;
  plan.machine.twoHeadCarriage = false;
  plan.machine.inkOrder = kOneRowEach;
  plan.resolution = 1620;
  plan.lines = 700;
  const JobOutcome outcome = RunJob(plan);
  EXPECT_EQ("", outcome.violation);
  EXPECT_EQ(1u, outcome.stats.jobsEnded);
  EXPECT_GT(outcome.comparison.differingCells, 0u);
  EXPECT_NE(std::string::npos, outcome.comparison.reason.find("last two nozzles"));
}

}  // namespace
