// The twelve exports for programs that are written against the library: here they go to the DLL,
// whose system calls lead to this program's platform.
#include <gtest/gtest.h>

#include <memory>

#include "qrn_driver.h"
#include "windows/loaded_dll.h"
#include "windows/system_calls.h"

namespace {

std::unique_ptr<const LoadedDll> g_dll;

const LoadedDll& TheDll() {
  if (!g_dll) RenewDll();
  return *g_dll;
}

// Calls the export of this name and type, and sees that it has called the system as it must.
template <class Function, class... Arguments>
auto Call(Function*, const char* name, Arguments... arguments) {
  // Through void*: the compiler warns of direct casts between types of functions.
  const auto function = reinterpret_cast<Function*>(reinterpret_cast<void*>(TheDll().Find(name)));
  const auto result = function(arguments...);
  const std::string wrong = TakeWrongCall();
  EXPECT_EQ("", wrong) << "in " << name;
  return result;
}

}  // namespace

void RenewDll() {
  g_dll.reset();
  g_dll.reset(new LoadedDll(LoadedDll::Fresh()));
  ReplaceSystemCalls(g_dll->Handle());
}

int32_t QRN_STDCALL InitPrinter(uint32_t ignored) { return Call(InitPrinter, __func__, ignored); }

int32_t QRN_STDCALL StartPrint(const HostJobDesc* desc, uint32_t ignored) {
  return Call(StartPrint, __func__, desc, ignored);
}

uint32_t QRN_STDCALL WriteRipData(const uint8_t* line, uint32_t bytes) {
  return Call(WriteRipData, __func__, line, bytes);
}

int32_t QRN_CDECL EndRipData(void) { return Call(EndRipData, __func__); }

int32_t QRN_CDECL AbortPrint(void) { return Call(AbortPrint, __func__); }

int32_t QRN_CDECL ExitPrinter(void) { return Call(ExitPrinter, __func__); }

int32_t QRN_STDCALL PP_Init(const HostJobDesc* desc) { return Call(PP_Init, __func__, desc); }

int32_t QRN_CDECL PP_Uninit(void) { return Call(PP_Uninit, __func__); }

int32_t QRN_STDCALL PP_SendALineAColorData(uint32_t color, uint32_t bytes, const uint8_t* line,
                                           uint32_t ignored) {
  return Call(PP_SendALineAColorData, __func__, color, bytes, line, ignored);
}

int32_t QRN_STDCALL PP_GetErrorMsg(char* text) { return Call(PP_GetErrorMsg, __func__, text); }

uint32_t QRN_STDCALL PP_GetResolutionX(uint32_t index) {
  return Call(PP_GetResolutionX, __func__, index);
}

uint32_t QRN_STDCALL PP_GetResolutionY(uint32_t ignored) {
  return Call(PP_GetResolutionY, __func__, ignored);
}
