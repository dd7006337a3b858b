// The library as a host gets it: the DLL beside the program, its calls by name.
#ifndef QRN_TESTS_WINDOWS_LOADED_DLL_H_
#define QRN_TESTS_WINDOWS_LOADED_DLL_H_

#include <windows.h>

class LoadedDll {
 public:
  LoadedDll();  // fails the process when there is none
  ~LoadedDll() { FreeLibrary(handle_); }
  LoadedDll(const LoadedDll&) = delete;
  LoadedDll& operator=(const LoadedDll&) = delete;

  HMODULE Handle() const { return handle_; }
  // Null when no export has the name.
  FARPROC Find(const char* name) const { return GetProcAddress(handle_, name); }

 private:
  HMODULE handle_;
};

// Loads the DLL behind the exports anew, as it is before its first job. Not while a job runs.
void RenewDll();

#endif  // QRN_TESTS_WINDOWS_LOADED_DLL_H_
