// The DLL as a file and as a callee: what it shows and needs, what it does to a caller's stack, and
// what it leaves behind when it goes.
#include <windows.h>

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "jobs/holdings.h"
#include "qrn_driver.h"
#include "sim/session.h"
#include "support/log_folder.h"
#include "windows/image_tables.h"
#include "windows/loaded_dll.h"
#include "windows/system_calls.h"

namespace {

struct Export {
  const char* name;
  std::uint32_t argumentBytes;  // taken off the stack by the callee; none: cdecl
};
constexpr Export kExports[] = {
    {"AbortPrint", 0},        {"EndRipData", 0},     {"ExitPrinter", 0},
    {"InitPrinter", 4},       {"PP_GetErrorMsg", 4}, {"PP_GetResolutionX", 4},
    {"PP_GetResolutionY", 4}, {"PP_Init", 4},        {"PP_SendALineAColorData", 16},
    {"PP_Uninit", 0},         {"StartPrint", 8},     {"WriteRipData", 8},
};

TEST(Dll, ExportsTheTwelveNamesAndNothingElse) {
  const LoadedDll dll;
  std::vector<std::string> names;
  for (const Export& entry : kExports) names.emplace_back(entry.name);
  EXPECT_EQ(names, ExportNamesOf(dll.Handle()));
  EXPECT_EQ(names.size(), ExportCountOf(dll.Handle()));
  for (const Export& entry : kExports) EXPECT_NE(nullptr, dll.Find(entry.name)) << entry.name;
}

TEST(Dll, NeedsNothingButTheSystemsLibraries) {
  const LoadedDll dll;
  std::set<std::string> libraries;
  for (const Import& import : ImportsOf(dll.Handle())) libraries.insert(import.library);
  EXPECT_EQ((std::set<std::string>{"KERNEL32.dll", "SETUPAPI.dll", "SHLWAPI.dll", "USER32.dll",
                                   "msvcrt.dll"}),
            libraries);
}

TEST(Dll, TellsItsVersion) {
  const LoadedDll dll;
  const HRSRC found = FindResourceA(dll.Handle(), MAKEINTRESOURCEA(1), MAKEINTRESOURCEA(16));
  ASSERT_NE(nullptr, found);
  // Key "VS_VERSION_INFO" and its padding stand in front of the fixed part.
  const auto* bytes =
      static_cast<const std::uint8_t*>(LockResource(LoadResource(dll.Handle(), found)));
  VS_FIXEDFILEINFO version;
  std::memcpy(&version, bytes + 40, sizeof version);
  EXPECT_EQ(0xFEEF04BDu, version.dwSignature);
  EXPECT_EQ((2u << 16) | 7u, version.dwFileVersionMS);
  EXPECT_EQ(18u << 16, version.dwFileVersionLS);
}

struct CallResult {
  std::uint32_t value;
  std::uint32_t poppedBytes;  // what the callee took off the stack
};

// Calls with four words on the stack and the stack pointer `skew` bytes below a multiple of 16.
__attribute__((noinline)) CallResult CallSkewed(FARPROC procedure, const std::uint32_t* words,
                                                std::uint32_t skew) {
  CallResult result;
  asm volatile(
      "movl %%esp, %%esi\n\t"
      "andl $-16, %%esp\n\t"
      "subl %%edx, %%esp\n\t"
      "pushl 12(%%edi)\n\t"
      "pushl 8(%%edi)\n\t"
      "pushl 4(%%edi)\n\t"
      "pushl (%%edi)\n\t"
      "movl %%esp, %%edi\n\t"
      "call *%%ebx\n\t"
      "movl %%esp, %%ecx\n\t"
      "subl %%edi, %%ecx\n\t"
      "movl %%esi, %%esp"
      : "=a"(result.value), "=c"(result.poppedBytes), "+D"(words), "+d"(skew)
      : "b"(procedure)
      : "esi", "memory", "cc");
  return result;
}

// Calls exports by name and holds each against its convention.
class SkewedHost {
 public:
  SkewedHost(const LoadedDll& dll, std::uint32_t skew) : dll_(dll), skew_(skew) {}

  template <class... Words>
  std::uint32_t Call(const char* name, Words... arguments) {
    const std::uint32_t words[4] = {Word(arguments)...};
    const Export* entry = std::find_if(std::begin(kExports), std::end(kExports),
                                       [name](auto& e) { return std::strcmp(e.name, name) == 0; });
    const CallResult result = CallSkewed(dll_.Find(name), words, skew_);
    EXPECT_EQ(entry->argumentBytes, result.poppedBytes) << name;
    EXPECT_EQ(entry->argumentBytes, 4 * sizeof...(arguments)) << name;
    return result.value;
  }

 private:
  static std::uint32_t Word(std::uint32_t value) { return value; }
  static std::uint32_t Word(const void* pointer) {
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(pointer));
  }

  const LoadedDll& dll_;
  std::uint32_t skew_;
};

constexpr std::uint32_t kWidth = 240, kLines = 20;

HostJobDesc SmallPage() {
  HostJobDesc desc{};
  desc.resX = 1440;
  desc.resY = 360;
  desc.height = kLines;
  desc.width = kWidth;
  desc.colors = 8;
  desc.bitsPerPixel = 2;
  return desc;
}

// Prints a page full of ink through both families, each call with the stack askew.
void PrintBoth(const LoadedDll& dll, std::uint32_t skew) {
  qrn::sim::VirtualPrinter printer{qrn::sim::Machine{}};
  qrn::sim::SessionOptions options;
  options.virtualTime = true;
  const qrn::sim::Session session(printer, options);
  SkewedHost host(dll, skew);
  const HostJobDesc desc = SmallPage();
  const std::vector<std::uint8_t> line(kWidth / 4, 0xFF);
  const auto bytes = static_cast<std::uint32_t>(line.size());
  char error[] = "0123456789ABCDEF#";

  EXPECT_EQ(1u, host.Call("InitPrinter", 7u));
  EXPECT_EQ(1u, host.Call("StartPrint", &desc, 7u));
  for (std::uint32_t i = 0; i < 8 * kLines; ++i)
    EXPECT_EQ(bytes, host.Call("WriteRipData", line.data(), bytes));
  EXPECT_EQ(1u, host.Call("AbortPrint"));
  EXPECT_EQ(1u, host.Call("EndRipData"));
  EXPECT_EQ(1u, host.Call("ExitPrinter"));

  EXPECT_EQ(1u, host.Call("PP_Init", &desc));
  EXPECT_EQ(1620u, host.Call("PP_GetResolutionX", 0x102u));
  EXPECT_EQ(360u, host.Call("PP_GetResolutionY", 7u));
  EXPECT_EQ(1u, host.Call("PP_GetErrorMsg", error));
  EXPECT_STREQ("Undefine error!", error);
  EXPECT_STREQ("#", error + 16);  // sixteen bytes and no more
  for (std::uint32_t i = 0; i < 8 * kLines; ++i)
    EXPECT_EQ(1u, host.Call("PP_SendALineAColorData", i % 8, bytes, line.data(), 7u));
  EXPECT_EQ(1u, host.Call("PP_Uninit"));

  EXPECT_EQ("", printer.Violation());
  EXPECT_EQ("", TakeWrongCall());
  EXPECT_EQ(2u, printer.Stats().jobsEnded);
  EXPECT_EQ(2ull * 8 * kLines * kWidth * 3, printer.Stats().inkLaid);
}

TEST(Dll, LeavesTheStackOfACallerAsItsConventionSays) {
  const LogFolder folder;
  const LoadedDll dll;
  ReplaceSystemCalls(dll.Handle());
  for (const std::uint32_t skew : {0u, 4u, 8u, 12u}) {
    SCOPED_TRACE(skew);
    PrintBoth(dll, skew);
  }
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

TEST(Dll, IsLoadedAndUnloadedAHundredTimesAndLeavesNothing) {
  const LogFolder folder;
  const auto jobs = [](int loads) {
    for (int i = 0; i < loads; ++i) {
      {
        const LoadedDll dll;
        ReplaceSystemCalls(dll.Handle());
        PrintBoth(dll, 0);
      }
      ASSERT_EQ(nullptr, GetModuleHandleA("QRN_DriverT62804.dll"));
    }
  };
  jobs(3);  // the system's own libraries take what they need for good
  const Holdings before;
  const std::size_t bytes = HeapBytes();
  jobs(100);
  before.ExpectTheSame();
  EXPECT_LT(HeapBytes(), bytes + 1'000);
  std::printf("heap: %zu bytes before, %zu after\n", bytes, HeapBytes());
}

}  // namespace
