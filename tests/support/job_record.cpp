#include "support/job_record.h"

const qrn::Job* JobRecord() { return &qrn::GetJob(); }
