// Each scenario meets the library as it was loaded: what outlives a job is no scenario's affair but
// where it has several jobs.
#ifndef QRN_TESTS_SCENARIOS_APART_H_
#define QRN_TESTS_SCENARIOS_APART_H_

#include "scenarios/play.h"

namespace scenarios {

// Plays it with a fresh library. A run that ends the process, or takes more virtual time than it
// may, ends in a result that says so.
Run PlayApart(const Scenario& scenario);

}  // namespace scenarios

#endif  // QRN_TESTS_SCENARIOS_APART_H_
