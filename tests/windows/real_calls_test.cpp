// What happens between the DLL and the real system: threads that must be ended by force, a host
// that unloads the library or holds the loader's lock, calls that come while another is running.
// The log folder is there, since that is where a thread is most often caught. Boxes need a screen:
// on_a_screen gives one.
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "qrn_driver.h"
#include "sim/virtual_printer.h"
#include "support/log_folder.h"
#include "windows/loaded_dll.h"
#include "windows/real_device.h"

namespace {

using qrn::sim::Quirk;
using qrn::sim::QuirkScript;
using qrn::sim::VirtualPrinter;

constexpr std::uint32_t kWidth = 48, kLines = 2, kFast = 100;
constexpr std::uint64_t kPageInk = 1ull * kLines * kWidth * 3;  // of one colour

QuirkScript Script(const std::string& text, std::size_t times = 1) {
  Quirk quirk;
  std::string error;
  if (!qrn::sim::ParseQuirk(text, &quirk, &error)) ADD_FAILURE() << text << ": " << error;
  return QuirkScript(times, quirk);
}

VirtualPrinter Printer(const QuirkScript& quirks = {}) {
  return VirtualPrinter(qrn::sim::Machine{}, quirks);
}

// A host of the line family.
class Host {
 public:
  explicit Host(std::uint32_t speed) { LeadDeviceCallsHere(dll_->Handle(), speed); }

  int Init() {
    HostJobDesc desc{};
    desc.resX = 1440;
    desc.resY = 360;
    desc.height = kLines;
    desc.width = kWidth;
    desc.colors = 8;
    desc.bitsPerPixel = 2;
    return Find<decltype(PP_Init)>("PP_Init")(&desc);
  }
  int SendLine(std::uint32_t color) {
    const std::vector<std::uint8_t> line(kWidth / 4, color == 0 ? 0xFF : 0);
    return Find<decltype(PP_SendALineAColorData)>("PP_SendALineAColorData")(color, kWidth / 4,
                                                                            line.data(), 0);
  }
  // Fewer swaths than the queue has room for, so that it returns whatever the printer does.
  void SendPage() {
    for (std::uint32_t i = 0; i < 8 * kLines; ++i) (void)SendLine(i % 8);
  }
  int Uninit() { return Find<decltype(PP_Uninit)>("PP_Uninit")(); }

  // A whole job on a printer that does nothing wrong.
  void PrintAPage() {
    VirtualPrinter printer = Printer();
    PlugIn(&printer);
    ASSERT_EQ(1, Init());
    SendPage();
    ASSERT_EQ(1, Uninit());
    EXPECT_EQ("", printer.Violation());
    EXPECT_EQ(1u, printer.Stats().jobsEnded);
    EXPECT_EQ(kPageInk, printer.Stats().inkLaid);
  }
  void Unload() { dll_.reset(); }

  template <class Function>
  Function* Find(const char* name) const {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(dll_->Find(name)));
  }

 private:
  std::optional<LoadedDll> dll_{std::in_place};
};

bool WaitFor(const std::function<bool()>& ready) {
  for (int poll = 0; poll < 6000; ++poll) {
    if (ready()) return true;
    Sleep(10);
  }
  return false;
}

bool IsBoxOpen() { return FindWindowA(nullptr, "Tip") != nullptr; }

// A job whose transmit thread does not end by itself, up to the moment when it no longer can.
struct Kind {
  QuirkScript quirks;
  std::function<bool(const VirtualPrinter&)> stands;
  bool leavesByItself;  // when it is asked to
};

// Polls of a pause are refused for ever and asked again at once: the thread is busy, most of all
// with its log.
Kind PollRefused() {
  QuirkScript quirks = Script("pause:at=1,ms=1000");
  for (const Quirk& refusal : Script("refuse:on=poll,status=9,count=1000", 1000))
    quirks.push_back(refusal);
  // Nothing else takes as many bytes as that in commands: each is a packet of 128.
  const auto polls = [sent = std::uint64_t{0}, row = 0](const VirtualPrinter& printer) mutable {
    const std::uint64_t before = std::exchange(sent, printer.Stats().bytesReceived);
    row = printer.Stats().swaths != 0 && sent != before && sent < before + 8192 ? row + 1 : 0;
    return row == 5;
  };
  return {quirks, polls, true};
}
Kind Silence() {
  return {Script("silence:at=1"), [](const VirtualPrinter&) { return IsReadHeld(); }, false};
}
// The link is given up, which takes 30 s, and nobody closes the box that says so.
Kind BoxLeftOpen() {
  return {Script("unplug:msg=6"), [](const VirtualPrinter&) { return IsBoxOpen(); }, true};
}

// The next start must end the thread, and print; so must the one after it.
void EndByForce(Host& host, const Kind& kind) {
  VirtualPrinter printer = Printer(kind.quirks);
  PlugIn(&printer);
  ASSERT_EQ(1, host.Init());
  host.SendPage();
  ASSERT_TRUE(WaitFor([&] { return kind.stands(printer); }));
  const int before = TerminatedThreads();
  host.PrintAPage();
  if (kind.leavesByItself) {
    EXPECT_EQ(before, TerminatedThreads());
  }
  EXPECT_FALSE(IsBoxOpen());
}

std::size_t LogsWith(const std::string& text) {
  const std::vector<std::string> logs = LogFolder::Logs();
  return static_cast<std::size_t>(
      std::count_if(logs.begin(), logs.end(), [&text](const std::string& log) {
        EXPECT_EQ(std::string::npos, log.find('\0'));
        return log.find(text) != std::string::npos;
      }));
}

// "The transmit thread is made to leave", in code page 936.
constexpr char kForced[] = "\xC7\xBF\xD0\xD0\xCD\xCB\xB3\xF6TX";

TEST(ForcedEnds, AHundredInARow) {
  const LogFolder folder;
  Host host(kFast);
  for (int i = 0; i < 100 && !testing::Test::HasFailure(); ++i) {
    SCOPED_TRACE(i);
    EndByForce(host, i == 50 ? BoxLeftOpen() : i % 4 == 0 ? PollRefused() : Silence());
  }
  EXPECT_EQ(100u, LogsWith(kForced));
  EXPECT_EQ(100u, LogsWith("jobend: "));
}

// On the true clock the end takes 21 s.
void EndByForceInFullTime(const Kind& kind) {
  const LogFolder folder;
  Host host(1);
  EndByForce(host, kind);
  EXPECT_EQ(1u, LogsWith(kForced)) << LogFolder::Logs()[0];
}
TEST(ForcedEndsInFullTime, PollRefused) { EndByForceInFullTime(PollRefused()); }
TEST(ForcedEndsInFullTime, Silence) { EndByForceInFullTime(Silence()); }
TEST(ForcedEndsInFullTime, BoxLeftOpen) { EndByForceInFullTime(BoxLeftOpen()); }

// A thread cannot end while another holds the loader's lock, as a host does in its DllMain.
TEST(LoaderLock, HeldByTheHostDoesNotHoldTheEndOfAJob) {
  using Lock = LONG(WINAPI*)(ULONG flags, ULONG * state, ULONG_PTR * cookie);
  using Unlock = LONG(WINAPI*)(ULONG flags, ULONG_PTR cookie);
  const HMODULE ntdll = GetModuleHandleA("ntdll.dll");
  const auto find = [ntdll](const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(ntdll, name));
  };
  const LogFolder folder;
  Host host(1);
  VirtualPrinter printer = Printer();
  PlugIn(&printer);
  ASSERT_EQ(1, host.Init());
  host.SendPage();
  ULONG_PTR cookie = 0;
  ASSERT_EQ(0, reinterpret_cast<Lock>(find("LdrLockLoaderLock"))(0, nullptr, &cookie));
  EXPECT_EQ(1, host.Uninit());
  ASSERT_EQ(0, reinterpret_cast<Unlock>(find("LdrUnlockLoaderLock"))(0, cookie));
  EXPECT_EQ(kPageInk, printer.Stats().inkLaid);
  host.PrintAPage();
}

// The library is gone when FreeLibrary returns, and its thread with it.
TEST(Unload, InTheMiddleOfAJobEndsTheJob) {
  const LogFolder folder;
  for (const bool failedStart : {false, true}) {
    SCOPED_TRACE(failedStart);
    {
      VirtualPrinter printer =
          Printer(Script(failedStart ? "refuse:on=connect,status=2" : "late:msg=3,ms=1"));
      Host host(1);
      PlugIn(&printer);
      ASSERT_EQ(failedStart ? 0 : 1, host.Init());
      EXPECT_EQ(failedStart ? 0 : 1, host.SendLine(0));
      host.Unload();
      EXPECT_EQ(nullptr, GetModuleHandleA("QRN_DriverT62804.dll"));
      Sleep(1500);  // a thread that was left would run into nothing
    }
    Host host(1);
    host.PrintAPage();
  }
  EXPECT_EQ(2u, LogsWith("Library unloaded without the end of this job: it is ended here"));
}

// Results of every export, called while another one is running.
void ExpectRefusals(const Host& host) {
  HostJobDesc desc{};
  const std::uint8_t line[12] = {};
  char text[16];
  EXPECT_EQ(0, host.Find<decltype(PP_Init)>("PP_Init")(&desc));
  EXPECT_EQ(0,
            host.Find<decltype(PP_SendALineAColorData)>("PP_SendALineAColorData")(0, 12, line, 0));
  EXPECT_EQ(1, host.Find<decltype(PP_Uninit)>("PP_Uninit")());
  EXPECT_EQ(1, host.Find<decltype(StartPrint)>("StartPrint")(&desc, 0));
  EXPECT_EQ(12u, host.Find<decltype(WriteRipData)>("WriteRipData")(line, 12));
  EXPECT_EQ(1, host.Find<decltype(EndRipData)>("EndRipData")());
  EXPECT_EQ(1, host.Find<decltype(InitPrinter)>("InitPrinter")(0));
  EXPECT_EQ(1, host.Find<decltype(AbortPrint)>("AbortPrint")());
  EXPECT_EQ(1, host.Find<decltype(ExitPrinter)>("ExitPrinter")());
  EXPECT_EQ(1, host.Find<decltype(PP_GetErrorMsg)>("PP_GetErrorMsg")(text));
  EXPECT_EQ(1440u, host.Find<decltype(PP_GetResolutionX)>("PP_GetResolutionX")(1));
  EXPECT_EQ(360u, host.Find<decltype(PP_GetResolutionY)>("PP_GetResolutionY")(1));
}

const Host* g_calledHost = nullptr;
int g_calledBack = 0;

// What a window of the host's does while a box stands, which runs the messages of its thread.
void CALLBACK CallBackIn(HWND, UINT, UINT_PTR timer, DWORD) {
  if (!IsBoxOpen()) return;
  KillTimer(nullptr, timer);
  ++g_calledBack;
  ExpectRefusals(*g_calledHost);
  PostMessageA(FindWindowA(nullptr, "Tip"), WM_COMMAND, IDOK, 0);
}

TEST(Reentry, FromTheMessagesOfABoxIsRefused) {
  const LogFolder folder;
  Host host(1);
  g_calledHost = &host;
  PlugIn(nullptr);
  SetTimer(nullptr, 0, 50, CallBackIn);
  EXPECT_EQ(0, host.Init());
  EXPECT_EQ(1, g_calledBack);
  EXPECT_EQ(0, host.SendLine(0));  // the error stands that the box told of
  EXPECT_EQ(1, host.Uninit());
  EXPECT_EQ(1u, LogsWith("Call refused: another one is running\r\n"));
  EXPECT_EQ(1u, LogFolder::Logs().size());
  host.PrintAPage();
}

TEST(Reentry, FromASecondThreadIsRefused) {
  const LogFolder folder;
  Host host(1);
  VirtualPrinter printer = Printer(Script("pause:at=1,ms=3000"));
  PlugIn(&printer);
  ASSERT_EQ(1, host.Init());
  std::thread second([&host] {
    Sleep(1000);  // the end call waits for the paused printer
    ExpectRefusals(host);
  });
  host.SendPage();
  EXPECT_EQ(1, host.Uninit());
  second.join();
  EXPECT_EQ("", printer.Violation());
  EXPECT_EQ(kPageInk, printer.Stats().inkLaid);
  EXPECT_EQ(1u, LogsWith("Call refused: another one is running\r\n"));
}

}  // namespace
