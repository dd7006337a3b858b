// What the parameter block says about the machine: heads, carriage, boards, alignment. Transmit
// thread, within the connect processing.
#ifndef QRN_PARAMS_MACHINE_H_
#define QRN_PARAMS_MACHINE_H_

#include "job/job.h"

namespace qrn {

// Takes and logs everything that must be known before the image can be checked; false when the
// resolution cannot be printed.
[[nodiscard]] bool TakeMachine(Job& job);

}  // namespace qrn

#endif  // QRN_PARAMS_MACHINE_H_
