// Where the heads and their nozzle rows are, in pass columns. Transmit thread, within the connect
// processing.
#ifndef QRN_PARAMS_HEAD_GEOMETRY_H_
#define QRN_PARAMS_HEAD_GEOMETRY_H_

#include "job/job.h"

namespace qrn {

// Sets marginDots, headGapX, rowGapMin, rowGapMax and rowOffset. Needs heads, base passCount
// and resIdx.
void CalcHeadGeometry(Job& job);

}  // namespace qrn

#endif  // QRN_PARAMS_HEAD_GEOMETRY_H_
