#include "platform/posix/posix_platform.h"
#include "sim/real_time.h"

namespace qrn::sim {
namespace {

BoxHandler g_onBox;

void OnBox(void*, const char* text, const char*) {
  if (g_onBox) g_onBox(text);
}

}  // namespace

Platform& RealTimePlatform() { return ThePosixPlatform(); }

void PlugIntoRealTime(UsbPort* port, BoxHandler onBox) {
  g_onBox = std::move(onBox);
  ThePosixPlatform().Plug(port);
  ThePosixPlatform().HandleBoxes(port != nullptr ? OnBox : nullptr, nullptr);
}

}  // namespace qrn::sim
