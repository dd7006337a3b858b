// Flash jetting: after some passes the heads fire at the flash station to keep their nozzles open.
// The requests travel in swath headers. Transmit thread.
#ifndef QRN_PROTOCOL_SPIT_PLAN_H_
#define QRN_PROTOCOL_SPIT_PLAN_H_

#include "job/job.h"

namespace qrn {

// Fills spitMode and spitAmount of a swath that is about to be sent. Heads take turns on a two-head
// carriage, and go on doing so across jobs.
void SpitPlan(Job& job, Swath& swath);

}  // namespace qrn

#endif  // QRN_PROTOCOL_SPIT_PLAN_H_
