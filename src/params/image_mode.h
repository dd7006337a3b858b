// Decides whether the host's image and the machine form a printable job, and derives the geometry
// that depends on the print mode. Transmit thread, within the connect processing.
#ifndef QRN_PARAMS_IMAGE_MODE_H_
#define QRN_PARAMS_IMAGE_MODE_H_

#include "host/job.h"

namespace qrn {

// Sets passCount (3, 4, 6 or 8), resParamA, resParamB and resCode for nResX; false when nResX
// cannot be printed.
[[nodiscard]] bool CheckResolutionX(Job& job);

// Sets marginDots, headGapX, rowGapMin, rowGapMax and rowOffset. Needs the base passCount and
// resIdx.
void CalcHeadGeometry(Job& job);

// Checks head type, colours and bit depth; builds the feather masks and the band geometry. From
// here on passCount is final. False when the job cannot be printed.
[[nodiscard]] bool CheckImageMode(Job& job);

}  // namespace qrn

#endif  // QRN_PARAMS_IMAGE_MODE_H_
