// The opening and the closing sequence of a job, whichever export family started it. Host's thread.
#ifndef QRN_HOST_JOB_LIFECYCLE_H_
#define QRN_HOST_JOB_LIFECYCLE_H_

#include "job/job.h"

namespace qrn {

// Links up with the printer and announces the job. False when any step failed; the cause is logged.
[[nodiscard]] bool JobStart(Job& job);
// Sends what is queued, ends the job and releases everything. Safe after a failed start.
void JobEnd(Job& job);
// Ends a job whose end call the host skipped, so that its transmit thread is gone before the record
// is cleared or the library unloaded; `what` the host did in its place goes into the log. Does
// nothing when no job is open.
void EndSkippedJob(Job& job, const char* what);

}  // namespace qrn

#endif  // QRN_HOST_JOB_LIFECYCLE_H_
