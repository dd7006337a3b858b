// The two tests on which every loop of a job ends. Either thread.
#ifndef QRN_JOB_STOP_REQUEST_H_
#define QRN_JOB_STOP_REQUEST_H_

#include "base/shared.h"
#include "job/error_codes.h"
#include "job/job.h"

namespace qrn {

// The job takes no further lines and swaths: the printer cancelled, an error is recorded, or the
// transmit thread ended.
inline bool IsStopRequested(Job& job) {
  return LoadShared(job.bPrnCancel) == 1 || LoadShared(job.nErrCode) != 0 ||
         LoadShared(job.bTxEnd) == 1;
}

// There is no printer to talk to any more: it cancelled, or the link was given up. Ends command
// waits, too; implies IsStopRequested.
inline bool IsAbortRequested(Job& job) {
  return LoadShared(job.bPrnCancel) == 1 || LoadShared(job.nErrCode) == kErrorLinkGivenUp;
}

}  // namespace qrn

#endif  // QRN_JOB_STOP_REQUEST_H_
