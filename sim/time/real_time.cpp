#include "sim/time/real_time.h"

#include <utility>

#include "platform/port_platform.h"

namespace qrn::sim {
namespace {

BoxHandler g_onBox;

void OnBox(void*, const char* text, const char*) {
  if (g_onBox) g_onBox(text);
}

}  // namespace

Platform& RealTimePlatform() { return PortPlatform(); }

void PlugIntoRealTime(UsbPort* port, BoxHandler onBox) {
  g_onBox = std::move(onBox);
  PlugPort(port, port != nullptr ? OnBox : nullptr, nullptr);
}

}  // namespace qrn::sim
