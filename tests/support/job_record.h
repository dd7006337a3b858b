#ifndef QRN_TESTS_SUPPORT_JOB_RECORD_H_
#define QRN_TESTS_SUPPORT_JOB_RECORD_H_

#include "host/job.h"

// The record of the library under test; null where that is a file of its own, which shows none.
const qrn::Job* JobRecord();

#endif  // QRN_TESTS_SUPPORT_JOB_RECORD_H_
