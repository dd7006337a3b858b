// What a job with one head in use cannot print, reported in the job log at job start.
// docs/one-head.md explains each case. Transmit thread, within the connect processing.
#ifndef QRN_RASTER_ONE_HEAD_H_
#define QRN_RASTER_ONE_HEAD_H_

#include "job/job.h"

namespace qrn {

// Lines that the passes do not reach, or reach with feathered nozzles only. Requires: the band
// geometry of a vertical resolution that is accepted.
void WarnOfUnprintedLines(const Job& job);
// Colours without a nozzle row on the head. Needs the ink order.
void WarnOfUnprintedColors(const Job& job);

}  // namespace qrn

#endif  // QRN_RASTER_ONE_HEAD_H_
