// Brings the link up and down. Host's thread.
#ifndef QRN_LINK_LINK_CONTROL_H_
#define QRN_LINK_LINK_CONTROL_H_

#include "job/job.h"

namespace qrn {

// Opens the device and starts the transmit thread; 1 on success. Failures are logged; a device that
// cannot be opened is DriverError 31.
[[nodiscard]] int LinkStart(Job& job);
// Ends the transmit thread, by force after about 20 s, and closes the device.
void LinkStop(Job& job);

}  // namespace qrn

#endif  // QRN_LINK_LINK_CONTROL_H_
