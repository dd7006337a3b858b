// Decides whether the host's image and the machine form a printable job, and derives the geometry
// that depends on the print mode. Transmit thread, within the connect processing.
#ifndef QRN_PARAMS_IMAGE_MODE_H_
#define QRN_PARAMS_IMAGE_MODE_H_

#include "job/job.h"

namespace qrn {

// Checks head type, colours and bit depth; builds the feather masks and the band geometry. From
// here on passCount is final. False when the job cannot be printed.
[[nodiscard]] bool CheckImageMode(Job& job);

}  // namespace qrn

#endif  // QRN_PARAMS_IMAGE_MODE_H_
