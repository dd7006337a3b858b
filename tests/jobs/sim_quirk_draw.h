// Draws one quirk of the printer, of any kind and at any moment that a small job may reach.
#ifndef QRN_TESTS_JOBS_SIM_QUIRK_DRAW_H_
#define QRN_TESTS_JOBS_SIM_QUIRK_DRAW_H_

#include <string>

#include "jobs/sim_plan.h"

std::string DrawQuirk(SeedStream& random);

#endif  // QRN_TESTS_JOBS_SIM_QUIRK_DRAW_H_
