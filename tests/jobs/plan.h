// A plan: a whole job that goes wrong somehow, drawn from a seed as the text of a scenario, and
// what may come of it.
#ifndef QRN_TESTS_JOBS_PLAN_H_
#define QRN_TESTS_JOBS_PLAN_H_

#include <cstdint>
#include <string>

#include "scenarios/scenario.h"

// Draws the text of that name: "plan", or "small plan", a job of a few swaths that lasts no longer
// than it must where time is real. The same seed is the same plan on every system.
scenarios::Scenario DrawPlan(const std::string& name, std::uint64_t seed);

// How it is written in a file of scenarios.
std::string TextOf(const scenarios::Scenario& plan);

// What may come of a job with everything that happens to it.
struct Fate {
  bool mayFail = false;      // it may end without having printed
  bool mayCancel = false;    // the operator may have ended it
  bool mayLose = false;      // the link may have been given up
  bool altersPage = false;   // the driver may print with other parameters than the machine's
  std::uint64_t costMs = 0;  // more than a job takes without it, at most
};
Fate FateOf(const scenarios::Scenario& plan);

#endif  // QRN_TESTS_JOBS_PLAN_H_
