#include "platform/platform.h"

namespace qrn {
namespace {

// Set before a job starts and read by both threads of it; starting the transmit thread orders the
// two.
Platform* g_replacement = nullptr;

}  // namespace

Platform& ThePlatform() { return g_replacement != nullptr ? *g_replacement : SystemPlatform(); }

void UsePlatform(Platform* platform) { g_replacement = platform; }

}  // namespace qrn
