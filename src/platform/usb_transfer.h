// A bulk transfer on a USB port, carried out: every platform that has a port in place of a device
// waits in its own way, and calls the port in this one.
#ifndef QRN_PLATFORM_USB_TRANSFER_H_
#define QRN_PLATFORM_USB_TRANSFER_H_

#include <algorithm>
#include <cstdint>

#include "platform/usb_port.h"

namespace qrn {

// Calls `step`, a transfer at a given tick, until it no longer waits; true when the transfer is
// complete. `waiting` is the thread's side of it:
//   LeaveIfAsked()   does not return on a thread that is to end
//   TickMs()         the clock of the port
//   WaitMs(ms)       lets at most this much time pass, 1 or more
//   SetError(code)   what LastError() is to say; 0 after a transfer that is complete
template <class Waiting, class Step>
bool CompleteTransfer(Waiting waiting, Step step) {
  for (;;) {
    waiting.LeaveIfAsked();  // each time: a device that is always ready never lets the thread wait
    const std::uint32_t now = waiting.TickMs();
    const UsbStep result = step(now);
    if (result.state != UsbStep::kWait) {
      waiting.SetError(result.state == UsbStep::kFailed ? result.value : 0);
      return result.state == UsbStep::kDone;
    }
    // A time in the past has come.
    const auto aheadMs = static_cast<std::int32_t>(result.value - now);
    waiting.WaitMs(static_cast<std::uint32_t>(std::max(aheadMs, 1)));
  }
}

}  // namespace qrn

#endif  // QRN_PLATFORM_USB_TRANSFER_H_
