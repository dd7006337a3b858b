// The DLL as a file, what it shows and needs, and what it leaves behind when it goes.
#include <windows.h>

#include <gtest/gtest.h>
#include <malloc.h>

#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "jobs/holdings.h"
#include "sim/session.h"
#include "support/log_folder.h"
#include "windows/image_tables.h"
#include "windows/loaded_dll.h"

// main of examples/minimal_host.c.
extern "C" int MinimalHost(void);

namespace {

TEST(Dll, ExportsTheTwelveNamesAndNothingElse) {
  const std::vector<std::string> names = {
      "AbortPrint",        "EndRipData",     "ExitPrinter",
      "InitPrinter",       "PP_GetErrorMsg", "PP_GetResolutionX",
      "PP_GetResolutionY", "PP_Init",        "PP_SendALineAColorData",
      "PP_Uninit",         "StartPrint",     "WriteRipData"};
  EXPECT_EQ(names, ExportNamesOf(TheDll()));
}

TEST(Dll, NeedsNothingButTheSystemsLibraries) {
  std::set<std::string> libraries;
  for (const Import& import : ImportsOf(TheDll())) libraries.insert(import.library);
  EXPECT_EQ((std::set<std::string>{"KERNEL32.dll", "SETUPAPI.dll", "SHLWAPI.dll", "USER32.dll",
                                   "msvcrt.dll"}),
            libraries);
}

TEST(Dll, TellsItsVersion) {
  const HRSRC found = FindResourceA(TheDll(), MAKEINTRESOURCEA(1), MAKEINTRESOURCEA(16));
  ASSERT_NE(nullptr, found);
  // Key "VS_VERSION_INFO" and its padding precede the fixed part.
  const auto* bytes = static_cast<const char*>(LockResource(LoadResource(TheDll(), found)));
  VS_FIXEDFILEINFO version;
  std::memcpy(&version, bytes + 40, sizeof version);
  EXPECT_EQ(0xFEEF04BDu, version.dwSignature);
  EXPECT_EQ((2u << 16) | 7u, version.dwFileVersionMS);
  EXPECT_EQ(18u << 16, version.dwFileVersionLS);
}

// Bytes in use of the C runtime's heap, which this program and the library share.
std::size_t HeapBytes() {
  _HEAPINFO entry{};
  std::size_t bytes = 0;
  while (_heapwalk(&entry) == _HEAPOK) {
    if (entry._useflag == _USEDENTRY) bytes += entry._size;
  }
  return bytes;
}

void LoadPrintAndUnload(int times) {
  qrn::sim::SessionOptions options;
  options.virtualTime = true;
  for (int i = 0; i < times; ++i) {
    RenewDll();
    qrn::sim::VirtualPrinter printer{qrn::sim::Machine{}};
    const qrn::sim::Session session(printer, options);
    ASSERT_EQ(0, MinimalHost());
    ASSERT_EQ("", printer.Violation());
    ASSERT_EQ(1u, printer.Stats().jobsEnded);
    ASSERT_EQ(480u * 360 * 3, printer.Stats().inkLaid);  // each pixel in one color, at level 3
    ASSERT_TRUE(UnloadDll());
  }
}

TEST(Dll, PrintsTheExamplesBarsAHundredTimesAndLeavesNothing) {
  const LogFolder folder;
  LoadPrintAndUnload(3);  // the system's own libraries take what they need for good
  const Holdings before;
  const std::size_t bytes = HeapBytes();
  LoadPrintAndUnload(100);
  before.ExpectTheSame();
  EXPECT_LT(HeapBytes(), bytes + 1'000);
}

}  // namespace
