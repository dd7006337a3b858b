// The library as a host gets it: the DLL beside the program. The exports that qrn_driver.h declares
// lead to it, and its calls of the system to this program's platform.
#ifndef QRN_TESTS_WINDOWS_LOADED_DLL_H_
#define QRN_TESTS_WINDOWS_LOADED_DLL_H_

#include <windows.h>

#include "windows/system_calls.h"

// Loads one that is as before its first job, in place of the one before. Fails the process when
// there is none. Not while a job runs.
void RenewDll(SystemCalls replaced = SystemCalls::kAll);
// The one in use, loaded where none is.
HMODULE TheDll();
// True when it is gone.
[[nodiscard]] bool UnloadDll();

#endif  // QRN_TESTS_WINDOWS_LOADED_DLL_H_
