// The system's own threads, clock and files, with virtual devices in place of its USB. For
// programs: the Windows library has none of it.
#ifndef QRN_PLATFORM_PORT_PLATFORM_H_
#define QRN_PLATFORM_PORT_PLATFORM_H_

#include "platform/platform.h"
#include "platform/usb_port.h"

namespace qrn {

// One instance, as the system is one. No devices until a port is plugged in.
Platform& PortPlatform();

// Called for every message box, on the thread that raised it; the text is as the driver has it on
// Windows, in UTF-8 elsewhere.
using PortBoxHandler = void (*)(void* context, const char* text, const char* caption);
// Only between jobs. A null port takes the devices out again. Without a handler boxes are what they
// are without a port.
void PlugPort(UsbPort* port, PortBoxHandler onBox, void* context);

}  // namespace qrn

#endif  // QRN_PLATFORM_PORT_PLATFORM_H_
