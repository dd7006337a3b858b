// Which ink each nozzle row carries: taken from the printer, checked when both heads print.
// Transmit thread at connect; read by the converters afterwards.
#ifndef QRN_PARAMS_INK_ORDER_H_
#define QRN_PARAMS_INK_ORDER_H_

#include <cstdint>

#include "host/job.h"

namespace qrn {

// Takes the 32 bytes of the parameter block; false when two heads print and some colour is not on
// exactly two rows.
[[nodiscard]] bool SetInkOrder(Job& job, const std::uint8_t* order);
// The check for two heads; puts the default order in place of one that is all zero.
[[nodiscard]] bool CheckInkOrderDual(Job& job);
// Colour plane of a nozzle row (0..7); a head of 4 or more counts as 3.
std::uint8_t GetInkColor(const Job& job, std::uint32_t head, std::uint32_t row);

}  // namespace qrn

#endif  // QRN_PARAMS_INK_ORDER_H_
