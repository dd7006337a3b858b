// The library as a host gets it: the DLL beside the program, its calls by name.
#ifndef QRN_TESTS_WINDOWS_LOADED_DLL_H_
#define QRN_TESTS_WINDOWS_LOADED_DLL_H_

#include <windows.h>

#include <string>

class LoadedDll {
 public:
  LoadedDll();  // fails the process when there is none
  ~LoadedDll() { FreeLibrary(handle_); }
  LoadedDll(const LoadedDll&) = delete;
  LoadedDll& operator=(const LoadedDll&) = delete;

  // One that is as before its first job, whatever is loaded already.
  static LoadedDll Fresh();

  HMODULE Handle() const { return handle_; }
  // Null when no export has the name.
  FARPROC Find(const char* name) const { return GetProcAddress(handle_, name); }

 private:
  explicit LoadedDll(const std::string& file);

  HMODULE handle_;
};

// Puts a fresh DLL behind the exports of this program. Not while a job runs.
void RenewDll();

#endif  // QRN_TESTS_WINDOWS_LOADED_DLL_H_
