#include "platform/port_platform.h"

#include "platform/posix/posix_platform.h"

namespace qrn {

Platform& PortPlatform() { return ThePosixPlatform(); }

void PlugPort(UsbPort* port, PortBoxHandler onBox, void* context) {
  ThePosixPlatform().Plug(port);
  ThePosixPlatform().HandleBoxes(onBox, context);
}

}  // namespace qrn
