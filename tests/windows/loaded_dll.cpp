#include "windows/loaded_dll.h"

#include <cstdio>
#include <cstdlib>

LoadedDll::LoadedDll() : handle_(LoadLibraryA("QRN_DriverT62804.dll")) {
  if (handle_ != nullptr) return;
  std::fprintf(stderr, "QRN_DriverT62804.dll cannot be loaded: error %lu\n", GetLastError());
  std::_Exit(3);
}
