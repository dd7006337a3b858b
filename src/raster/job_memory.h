// The job's large buffers, obtained once at connect and released at job end.
#ifndef QRN_RASTER_JOB_MEMORY_H_
#define QRN_RASTER_JOB_MEMORY_H_

#include "job/job.h"

namespace qrn {

// Obtains all buffers for the derived geometry and resets the swath queue. When one cannot be had,
// what was obtained is released and DriverError 13 is raised, so that the job winds down. Buffers
// of a repeated connect are reused when their size is right. Transmit thread, as the last step of
// the connect.
void AllocJobMem(Job& job);

// Releases every buffer that is present. Host's thread, after the transmit thread has ended.
void FreeJobMem(Job& job);

}  // namespace qrn

#endif  // QRN_RASTER_JOB_MEMORY_H_
