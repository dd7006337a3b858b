// The texts of the 36 DriverErrors, Chinese and English, as they are shown.
#ifndef QRN_DIAG_ERROR_TEXTS_H_
#define QRN_DIAG_ERROR_TEXTS_H_

#include <cstddef>
#include <cstdint>

namespace qrn {

constexpr std::size_t kErrorCodes = 36;
constexpr std::size_t kErrorSlotBytes = 256;  // text, terminating zero, zero fill

// Copies the text of a code, in code page 936, to `slot`; codes from 36 on give an empty text.
void CopyErrorText(std::uint32_t code, bool chinese, char (&slot)[kErrorSlotBytes]);

}  // namespace qrn

#endif  // QRN_DIAG_ERROR_TEXTS_H_
