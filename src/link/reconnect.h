// Link loss: finds, opens and tests the printer again, with growing pauses. Transmit thread.
#ifndef QRN_LINK_RECONNECT_H_
#define QRN_LINK_RECONNECT_H_

#include "job/job.h"

namespace qrn {

// 1 when the printer is open again and answers; 0 when the link was given up after six attempts
// (DriverError 17 is then raised). Runs to its end whatever the job does meanwhile.
[[nodiscard]] int LinkReconnect(Job& job);
// Sends the answer test to the open device and reads until a reply comes that is not empty.
[[nodiscard]] bool UsbLinkCheck(Job& job);

}  // namespace qrn

#endif  // QRN_LINK_RECONNECT_H_
