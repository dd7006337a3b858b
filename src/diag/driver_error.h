// Errors that the user must act on. Raising one records its code, which stops the job, and shows
// its text in a modal box in Chinese or English. Callable from both threads; the box blocks only
// the thread that raised the error.
#ifndef QRN_DIAG_DRIVER_ERROR_H_
#define QRN_DIAG_DRIVER_ERROR_H_

#include <cstdint>

namespace qrn {

// The codes that the library records; the text tables hold all 36.
enum DriverError : std::uint32_t {
  kErrorBadParameters = 3,  // parameter block not recognised
  kErrorTooWide = 4,        // image wider than the printer
  kErrorHostCancel = 9,     // recorded only: the host went on without ending its job
  kErrorNoMemory = 13,      // a job buffer could not be obtained
  kErrorLinkGivenUp = 17,   // reconnection given up; never overwritten in a job
  kErrorPrinterGone = 26,   // swath ready, transmit thread ended
  kErrorFeedValue = 29,     // paper-feed calibration refused
  kErrorNoDevice = 31,      // device cannot be opened
  kErrorBadMode = 32,       // image or print mode refused
  kErrorInkOrder = 35,      // ink order refused
};

// Records the code (its low 8 bits, unless 17 is recorded already) and shows its text.
void RaiseError(std::uint32_t code);
// Logs and shows the text of a code; nothing is recorded.
void ShowError(std::uint32_t code);
// True for every Chinese locale of the system.
bool IsChineseSystem();

}  // namespace qrn

#endif  // QRN_DIAG_DRIVER_ERROR_H_
