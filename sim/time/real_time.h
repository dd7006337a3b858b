// The real-time platform of this system with a set of virtual devices plugged in.
#ifndef QRN_SIM_TIME_REAL_TIME_H_
#define QRN_SIM_TIME_REAL_TIME_H_

#include <functional>
#include <string>

#include "platform/platform.h"
#include "platform/usb_port.h"

namespace qrn::sim {

// Called for every message box, on the thread that raised it.
using BoxHandler = std::function<void(const std::string& text)>;

// One instance, as the system is one. Real threads, real time; no devices until some are plugged
// in.
Platform& RealTimePlatform();
// Only between jobs. A null port takes the devices, and the handler, out again.
void PlugIntoRealTime(UsbPort* port, BoxHandler onBox);

}  // namespace qrn::sim

#endif  // QRN_SIM_TIME_REAL_TIME_H_
