#include "windows/loaded_dll.h"

#include <cstdio>
#include <cstdlib>

namespace {

const std::string kFile = "QRN_DriverT62804.dll";

}  // namespace

LoadedDll::LoadedDll() : LoadedDll(kFile) {}

LoadedDll::LoadedDll(const std::string& file) : handle_(LoadLibraryA(file.c_str())) {
  if (handle_ != nullptr) return;
  std::fprintf(stderr, "%s cannot be loaded: error %lu\n", file.c_str(), GetLastError());
  std::_Exit(3);
}

// One that a thread ended by force has left loaded stays so. A copy under another name is a library
// of its own.
LoadedDll LoadedDll::Fresh() {
  std::string file = kFile;
  for (int copy = 1; GetModuleHandleA(file.c_str()) != nullptr; ++copy)
    file = "copy-" + std::to_string(copy) + "-of-" + kFile;
  if (file != kFile) CopyFileA(kFile.c_str(), file.c_str(), FALSE);
  return LoadedDll(file);
}
