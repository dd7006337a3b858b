// Which ink each nozzle row carries: taken from the printer, checked when both heads print.
// Transmit thread at connect; the conversion reads it afterwards.
#ifndef QRN_PARAMS_INK_ORDER_H_
#define QRN_PARAMS_INK_ORDER_H_

#include <cstdint>

#include "job/job.h"

namespace qrn {

// Takes the 32 bytes of the parameter block; false when two heads print and some colour is not on
// exactly two rows.
[[nodiscard]] bool SetInkOrder(Job& job, const std::uint8_t* order);
// The check for two heads; puts the default order in place of one that is all zero.
[[nodiscard]] bool CheckInkOrderDual(Job& job);

}  // namespace qrn

#endif  // QRN_PARAMS_INK_ORDER_H_
