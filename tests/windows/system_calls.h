// Leads the system calls that a loaded DLL imports to this program's platform: so the library meets
// virtual devices, and what else the platform has, through its own, unmodified calls. Each call is
// checked to the argument; what no real system would take is reported by TakeWrongCall.
#ifndef QRN_TESTS_WINDOWS_SYSTEM_CALLS_H_
#define QRN_TESTS_WINDOWS_SYSTEM_CALLS_H_

#include <windows.h>

#include <string>

enum class SystemCalls {
  kAll,
  kDevices,  // and the clock; threads, their ends, boxes and files are the system's own
};

// Fails the process when the DLL does not import all of the calls.
void ReplaceSystemCalls(HMODULE dll, SystemCalls which);

// The first call with wrong arguments, with its place; "" = none. Forgets it.
std::string TakeWrongCall();

#endif  // QRN_TESTS_WINDOWS_SYSTEM_CALLS_H_
