// What must hold of every planned job, whatever was drawn, and of the clean job behind it.
#ifndef QRN_TESTS_JOBS_SIM_INVARIANTS_H_
#define QRN_TESTS_JOBS_SIM_INVARIANTS_H_

#include <string>
#include <vector>

#include "jobs/sim_plan.h"
#include "jobs/sim_run.h"

enum class Outcome {
  kPrinted,    // to the end, without cancel and error
  kCancelled,  // at the printer
  kLinkGivenUp,
  kRefused,  // by the printer, at the start
  kError,    // another one that was shown
  kNoThread,
  kSkipped,  // ended by the next start
  kForced,   // with a thread that had to be ended by force
  kCount,
};
Outcome OutcomeOf(const SimPlan& plan, const SimJobRun& run);
const char* NameOf(Outcome outcome);

// One line for each thing that is wrong; empty when all is well.
std::vector<std::string> CheckRun(const SimPlan& plan, const SimRun& run);

#endif  // QRN_TESTS_JOBS_SIM_INVARIANTS_H_
