// What must hold of a job's log: each line as often as it should stand, and each error with its
// line, its box and its effect.
#ifndef QRN_TESTS_JOBS_SIM_LOG_CHECKS_H_
#define QRN_TESTS_JOBS_SIM_LOG_CHECKS_H_

#include <functional>
#include <string>

#include "jobs/sim_plan.h"
#include "jobs/sim_run.h"

using Complain = std::function<void(const std::string& what)>;

std::size_t CountOf(const std::string& log, const std::string& text);

// Of the job itself; `printed`: it went through to its end.
void CheckLogLines(const SimPlan& plan, const SimJobRun& run, bool printed,
                   const Complain& complain);
// Boxes against log lines and the recorded code.
void CheckErrors(const SimPlan& plan, const SimJobRun& run, const Complain& complain);

#endif  // QRN_TESTS_JOBS_SIM_LOG_CHECKS_H_
