// Finds the printer among the present USB device interfaces and opens it. Called from the host's
// thread at link start and stop, and from the transmit thread while reconnecting, never from both
// at once.
#ifndef QRN_LINK_USB_DEVICE_H_
#define QRN_LINK_USB_DEVICE_H_

#include "job/job.h"

namespace qrn {

// Puts the product and vendor substrings that a printer's device path contains into the job.
void SetUsbIds(Job& job);
// Closes what is open, then opens the first printer that can be opened; 1 and its handle in
// hDevice, or 0 and hDevice 0.
[[nodiscard]] int UsbOpen(Job& job);
// Opens one enumerated path when it is the printer's; 0 when it is not or cannot be opened.
[[nodiscard]] DeviceHandle UsbTryInterface(Job& job, const char* path);
// Safe at any time.
void UsbClose(Job& job);

}  // namespace qrn

#endif  // QRN_LINK_USB_DEVICE_H_
