// How wide the machine prints. Transmit thread, within the connect processing.
#ifndef QRN_PARAMS_PRINT_WIDTH_H_
#define QRN_PARAMS_PRINT_WIDTH_H_

#include "job/job.h"

namespace qrn {

// Sets maxPrintMm; false when the image is wider. Clears the side margin of the parameter block
// where that asks for it. Requires: a bit depth and a resolution.
[[nodiscard]] bool CheckPrintWidth(Job& job);

}  // namespace qrn

#endif  // QRN_PARAMS_PRINT_WIDTH_H_
