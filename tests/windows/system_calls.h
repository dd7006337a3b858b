// Replaces the system calls that a loaded DLL imports by this program's platform: so the library
// meets virtual devices, virtual time and scripted boxes behind its own, unmodified calls. Each
// call is checked to the argument; what no real system would take is told by WrongCall.
#ifndef QRN_TESTS_WINDOWS_SYSTEM_CALLS_H_
#define QRN_TESTS_WINDOWS_SYSTEM_CALLS_H_

#include <windows.h>

#include <string>

// Fails the process when the DLL does not import all of the calls.
void ReplaceSystemCalls(HMODULE dll);

// The first call with wrong arguments, with its place; "" = none. Forgets it.
std::string TakeWrongCall();

#endif  // QRN_TESTS_WINDOWS_SYSTEM_CALLS_H_
