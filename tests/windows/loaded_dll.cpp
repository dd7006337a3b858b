#include "windows/loaded_dll.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "qrn_driver.h"
#include "windows/skewed_call.h"

namespace {

const std::string kFile = "QRN_DriverT62804.dll";
const std::string kFolder = std::filesystem::current_path().string() + "/";  // tests leave it

HMODULE g_dll = nullptr;
std::string g_file;  // of it

// Calls the export of this name, and sees that it has left the stack as its convention says and
// called the system as it must. Those that leave their arguments to the caller have none.
template <class... Arguments>
std::uint32_t Call(const char* name, Arguments... arguments) {
  void* const address = reinterpret_cast<void*>(GetProcAddress(TheDll(), name));
  const CallResult result = CallSkewed(address, {arguments...});
  EXPECT_EQ(4 * sizeof...(arguments), result.poppedBytes) << name;
  EXPECT_EQ("", TakeWrongCall()) << "in " << name;
  return result.value;
}

}  // namespace

// One that a thread ended by force has left loaded stays so. A copy under another name is a library
// of its own.
void RenewDll(SystemCalls replaced) {
  (void)UnloadDll();
  g_file = kFile;
  for (int copy = 1; GetModuleHandleA(g_file.c_str()) != nullptr; ++copy)
    g_file = "copy-" + std::to_string(copy) + "-of-" + kFile;
  if (g_file != kFile) CopyFileA((kFolder + kFile).c_str(), (kFolder + g_file).c_str(), FALSE);
  g_dll = LoadLibraryA(g_file.c_str());
  if (g_dll == nullptr) {
    std::fprintf(stderr, "%s cannot be loaded: error %lu\n", g_file.c_str(), GetLastError());
    std::_Exit(3);
  }
  ReplaceSystemCalls(g_dll, replaced);
}

HMODULE TheDll() {
  if (g_dll == nullptr) RenewDll();
  return g_dll;
}

bool UnloadDll() {
  if (g_dll != nullptr) FreeLibrary(g_dll);
  g_dll = nullptr;
  return GetModuleHandleA(g_file.c_str()) == nullptr;
}

int32_t QRN_STDCALL InitPrinter(uint32_t ignored) { return Call(__func__, ignored); }

int32_t QRN_STDCALL StartPrint(const HostJobDesc* desc, uint32_t ignored) {
  return Call(__func__, desc, ignored);
}

uint32_t QRN_STDCALL WriteRipData(const uint8_t* line, uint32_t bytes) {
  return Call(__func__, line, bytes);
}

int32_t QRN_CDECL EndRipData(void) { return Call(__func__); }

int32_t QRN_CDECL AbortPrint(void) { return Call(__func__); }

int32_t QRN_CDECL ExitPrinter(void) { return Call(__func__); }

int32_t QRN_STDCALL PP_Init(const HostJobDesc* desc) { return Call(__func__, desc); }

int32_t QRN_CDECL PP_Uninit(void) { return Call(__func__); }

int32_t QRN_STDCALL PP_SendALineAColorData(uint32_t color, uint32_t bytes, const uint8_t* line,
                                           uint32_t ignored) {
  return Call(__func__, color, bytes, line, ignored);
}

int32_t QRN_STDCALL PP_GetErrorMsg(char* text) { return Call(__func__, text); }

uint32_t QRN_STDCALL PP_GetResolutionX(uint32_t index) { return Call(__func__, index); }

uint32_t QRN_STDCALL PP_GetResolutionY(uint32_t ignored) { return Call(__func__, ignored); }
