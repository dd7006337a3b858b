// Faults that the whole-job simulation has found, each as the smallest plan that shows it, and
// cases that it seldom draws.
#include <gtest/gtest.h>

#include "jobs/sim_invariants.h"
#include "jobs/sim_plan.h"
#include "jobs/sim_run.h"

namespace {

SimPlan SmallPlan(std::vector<std::string> quirks) {
  SimPlan plan;
  plan.widthPixels = 240;
  plan.lines = plan.linesHanded = 4;
  plan.quirks = std::move(quirks);
  return plan;
}

Outcome ExpectGood(const SimPlan& plan) {
  SCOPED_TRACE(plan.Text());
  const SimRun run = RunPlan(plan);
  for (const std::string& fault : CheckRun(plan, run)) ADD_FAILURE() << fault;
  return OutcomeOf(plan, run.planned);
}

// Seed 400. A packet without a reply made the driver send a swath again; its second reply then
// settled the next swath, and so on, until the reply to one that was refused fell out at the end.
TEST(Regression, APacketWithoutAReplyLeavesNoReplyTooMany) {
  for (const char* form : {"empty", "kind", "words"}) {
    const std::string garbage = std::string("garbage:at=2,count=20,form=") + form;
    EXPECT_EQ(Outcome::kPrinted, ExpectGood(SmallPlan({garbage, "refuse:on=swath,status=0,at=8"})));
    EXPECT_EQ(Outcome::kPrinted, ExpectGood(SmallPlan({garbage, "refuse:on=swath,status=7,at=8"})));
  }
}

// Seed 18081. The only head hangs so low that it has not met the last lines when the job has been
// flushed; a call behind the last line flushes again, and prints more of them.
TEST(Regression, ACallBehindTheLastLineMayPrintWhatALowHeadHasLeft) {
  SimPlan plan = SmallPlan({});
  plan.machine.heads = qrn::sim::Heads::kPhb;
  plan.machine.inkOrder.fill({1, 3, 2, 6, 2, 7, 1, 2});
  plan.machine.headGapY.fill(250);
  plan.resolution = 2160;
  plan.seed = 18081;  // of the image
  plan.widthPixels = 1440;
  plan.lineApi = true;
  plan.lines = plan.linesHanded = 436;
  plan.mistakes = kLinesBehind;
  EXPECT_EQ(Outcome::kPrinted, ExpectGood(plan));
}

// What a seed seldom draws: the thread hangs in a read, and the host does not wait for it.
TEST(SilentPrinter, IsLeftByForceWhenTheNextJobStarts) {
  SimPlan plan = SmallPlan({"silence:msg=4"});
  plan.machine.heads = qrn::sim::Heads::kPha;
  plan.machine.inkOrder.fill({0, 1, 2, 3, 4, 5, 6, 7});
  plan.resolution = 1080;
  // One band, whose six swaths fit the queue, and a rest in which the first of them is sent.
  plan.lines = plan.linesHanded = plan.restEveryLines = 400;
  plan.restMs = 1000;
  plan.mistakes = kNoEnd;
  EXPECT_EQ(Outcome::kForced, ExpectGood(plan));
}

TEST(SilentPrinter, HoldsAJobUntilSomebodyPullsThePlug) {
  EXPECT_EQ(Outcome::kLinkGivenUp, ExpectGood(SmallPlan({"silence:msg=4"})));
}

}  // namespace
