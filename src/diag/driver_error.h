// Errors that the user must act on. Raising one records its code, which stops the job, and shows
// its text in a modal box in Chinese or English. Callable from both threads; the box blocks only
// the thread that raised the error.
#ifndef QRN_DIAG_DRIVER_ERROR_H_
#define QRN_DIAG_DRIVER_ERROR_H_

#include <cstdint>

#include "job/error_codes.h"  // IWYU pragma: export

namespace qrn {

// Records the code (its low 8 bits, unless 17 is recorded already) and shows its text.
void RaiseError(std::uint32_t code);
// Logs and shows the text of a code; nothing is recorded.
void ShowError(std::uint32_t code);
// True for every Chinese locale of the system.
bool IsChineseSystem();

}  // namespace qrn

#endif  // QRN_DIAG_DRIVER_ERROR_H_
