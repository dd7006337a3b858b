// What happens between the DLL and the real system: threads that must be ended by force, a host
// that unloads the library or holds the loader's lock, calls that come while another is running,
// boxes. Only the devices are virtual. The log folder is there, since that is where a thread is
// most often caught. Boxes need a screen: on_a_screen gives one.
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "qrn_driver.h"
#include "sim/time/real_time.h"
#include "sim/virtual_printer.h"
#include "support/forwarding_platform.h"
#include "support/log_folder.h"
#include "support/log_text.h"
#include "support/quirk_text.h"
#include "windows/loaded_dll.h"

namespace {

using qrn::sim::VirtualPrinter;

// The printer on its cable. A read that no reply ends is held in the kernel for good, as a driver
// holds it. The library's clock, not the printer's, may be a fast one.
class Cable final : public qrn::ForwardingPlatform {
 public:
  explicit Cable(VirtualPrinter& printer, std::uint32_t speed = 1)
      : ForwardingPlatform(qrn::sim::RealTimePlatform()), printer_(printer), speed_(speed) {
    qrn::sim::PlugIntoRealTime(&printer, nullptr);
    qrn::UsePlatform(this);
  }
  ~Cable() override {
    qrn::UsePlatform(nullptr);
    qrn::sim::PlugIntoRealTime(nullptr, nullptr);
  }
  bool IsReadHeld() const { return held_; }

  std::uint32_t TickMs() override { return GetTickCount() * speed_; }
  void SleepMs(std::uint32_t ms) override { Sleep((ms + speed_ - 1) / speed_); }
  bool BulkRead(qrn::DeviceHandle device, void* data, std::uint32_t bytes) override {
    for (const DWORD begin = GetTickCount();;) {
      const DWORD now = GetTickCount();
      const qrn::UsbStep step = printer_.Read(static_cast<std::uint32_t>(device),
                                              static_cast<std::uint8_t*>(data), bytes, now);
      if (step.state == qrn::UsbStep::kFailed) SetLastError(step.value);
      if (step.state != qrn::UsbStep::kWait) return step.state == qrn::UsbStep::kDone;
      if (now - begin > kHeldAfterMs) {
        held_ = true;
        Sleep(INFINITE);
      }
      // One that is nearly due is as good as ready: the thread never rests, and is hard to end.
      if (step.value - now > 2) Sleep(1);
    }
  }

 private:
  static constexpr DWORD kHeldAfterMs = 100;  // no reply here comes later than this

  VirtualPrinter& printer_;
  std::uint32_t speed_;
  std::atomic<bool> held_ = false;
};

// A host of the line family.
constexpr std::uint32_t kWidth = 48, kLines = 2;
constexpr std::uint64_t kPageInk = 1ull * kLines * kWidth * 3;  // of one colour

int Init() {
  const HostJobDesc page = {0, 1440, 360, 0, kLines, kWidth, 0, 8, 2, {}};
  return PP_Init(&page);
}
int SendLine(std::uint32_t color) {
  const std::vector<std::uint8_t> line(kWidth / 4, color == 0 ? 0xFF : 0);
  return PP_SendALineAColorData(color, kWidth / 4, line.data(), 0);
}
// Fewer swaths than the queue has room for, so that it returns whatever the printer does.
void SendPage() {
  for (std::uint32_t i = 0; i < 8 * kLines; ++i) (void)SendLine(i % 8);
}
// A whole job in which the printer does nothing wrong.
void PrintAPage(const VirtualPrinter& printer) {
  const qrn::sim::PrinterStats before = printer.Stats();
  ASSERT_EQ(1, Init());
  SendPage();
  ASSERT_EQ(1, PP_Uninit());
  EXPECT_EQ("", printer.Violation());
  EXPECT_EQ(before.jobsEnded + 1, printer.Stats().jobsEnded);
  EXPECT_EQ(before.inkLaid + kPageInk, printer.Stats().inkLaid);
}
void PrintAPage() {
  VirtualPrinter printer{qrn::sim::Machine{}};
  const Cable cable(printer);
  PrintAPage(printer);
}

bool WaitFor(const std::function<bool()>& ready) {
  for (int poll = 0; poll < 6000; ++poll) {
    if (ready()) return true;
    Sleep(10);
  }
  return false;
}

HWND OpenBox() { return FindWindowA(nullptr, "Tip"); }
void PressOk() { PostMessageA(OpenBox(), WM_COMMAND, IDOK, 0); }

std::ptrdiff_t LogsWith(const std::string& text) {
  const std::vector<std::string> logs = LogFolder::Logs();
  return std::count_if(logs.begin(), logs.end(), [&text](const std::string& log) {
    return CodePageToUtf8(log).find(text) != std::string::npos;
  });
}

class RealCalls : public testing::Test {
 protected:
  RealCalls() { RenewDll(SystemCalls::kDevices); }
  const LogFolder folder_;
};

// A job whose transmit thread does not end by itself, up to the moment when it no longer can.
struct Hang {
  std::vector<const char*> quirks;
  std::function<bool(const Cable&)> stands;
};

// Polls of a pause are refused for ever and asked again at once: the thread is busy, most of all
// with its log.
Hang PollRefused() {
  std::vector<const char*> quirks(100, "refuse:on=poll,status=9,count=1000");
  quirks.push_back("pause:at=1,ms=1000");
  return {quirks, [](const Cable&) {
            return LogFolder::Logs().back().find("Tx Cmm 10-A(9)") != std::string::npos;
          }};
}
// The link is given up, and nobody closes the box that says so.
Hang BoxLeftOpen() {
  return {{"write-fails:at=2,on=swath", "open-fails:at=2,count=6"},
          [](const Cable&) { return OpenBox() != nullptr; }};
}
Hang Silence() {
  return {{"silence:at=1"}, [](const Cable& cable) { return cable.IsReadHeld(); }};
}

// On a clock that is a hundred times as fast for the library: it gives a thread 21 s to end.
class ForcedEnds : public RealCalls {
 protected:
  // The next start must end the thread, and print.
  static void EndByForce(const Hang& hang) {
    VirtualPrinter printer(qrn::sim::Machine{}, Script(hang.quirks));
    const Cable cable(printer, 100);
    ASSERT_EQ(1, Init());
    SendPage();
    ASSERT_TRUE(WaitFor([&] { return hang.stands(cable); }));
    PrintAPage(printer);
    EXPECT_EQ(nullptr, OpenBox());
  }
  static void ExpectInTheLogs(int ends) {
    EXPECT_EQ(2 * ends, LogsWith(""));
    EXPECT_EQ(ends, LogsWith("强行退出TX线程"));
    EXPECT_EQ(ends, LogsWith("jobend: "));
    EXPECT_EQ(0, LogsWith(std::string(1, '\0')));
  }
};

// A library that had to stop it where it is would stay loaded.
TEST_F(ForcedEnds, FiftyInARowOfAThreadThatLeavesWhenAsked) {
  for (int i = 0; i < 50 && !HasFailure(); ++i)
    EndByForce(i % 10 == 5 ? BoxLeftOpen() : PollRefused());
  ExpectInTheLogs(50);
  EXPECT_TRUE(UnloadDll());
}

// It stays loaded: the thread may still be on its way back into it.
TEST_F(ForcedEnds, FiftyInARowOfAThreadThatIsHeldByItsDriver) {
  for (int i = 0; i < 50 && !HasFailure(); ++i) EndByForce(Silence());
  ExpectInTheLogs(50);
  EXPECT_FALSE(UnloadDll());
}

// A thread cannot end while another holds the loader's lock, as a host does in its DllMain.
TEST_F(RealCalls, AJobEndsWhileTheHostHoldsTheLoadersLock) {
  using Lock = LONG(WINAPI*)(ULONG flags, ULONG * state, ULONG_PTR * cookie);
  using Unlock = LONG(WINAPI*)(ULONG flags, ULONG_PTR cookie);
  const HMODULE ntdll = GetModuleHandleA("ntdll.dll");
  const auto find = [ntdll](const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(ntdll, name));
  };
  VirtualPrinter printer{qrn::sim::Machine{}};
  const Cable cable(printer);
  ASSERT_EQ(1, Init());
  SendPage();
  ULONG_PTR cookie = 0;
  ASSERT_EQ(0, reinterpret_cast<Lock>(find("LdrLockLoaderLock"))(0, nullptr, &cookie));
  EXPECT_EQ(1, PP_Uninit());
  ASSERT_EQ(0, reinterpret_cast<Unlock>(find("LdrUnlockLoaderLock"))(0, cookie));
  EXPECT_EQ(kPageInk, printer.Stats().inkLaid);
  PrintAPage(printer);
}

// The library is gone when FreeLibrary returns, and its thread with it.
TEST_F(RealCalls, UnloadingInTheMiddleOfAJobEndsTheJob) {
  for (const int started : {0, 1}) {
    SCOPED_TRACE(started);
    {
      VirtualPrinter printer(qrn::sim::Machine{},
                             Script({started ? "late:ms=1" : "refuse:on=connect,status=2"}));
      const Cable cable(printer);
      ASSERT_EQ(started, Init());
      EXPECT_EQ(started, SendLine(0));
      EXPECT_TRUE(UnloadDll());
      Sleep(1500);  // a thread that was left would run into nothing
    }
    RenewDll(SystemCalls::kDevices);
    PrintAPage();
  }
  EXPECT_EQ(2, LogsWith("Library unloaded without the end of this job: it is ended here"));
}

// Results of every export, called while another one is running.
void ExpectRefusals() {
  const HostJobDesc desc{};
  const std::uint8_t line[12] = {};
  char text[] = "0123456789ABCDEF#";
  EXPECT_EQ(0, PP_Init(&desc));
  EXPECT_EQ(0, PP_SendALineAColorData(0, 12, line, 0));
  EXPECT_EQ(1, PP_Uninit());
  EXPECT_EQ(1, StartPrint(&desc, 0));
  EXPECT_EQ(12u, WriteRipData(line, 12));
  EXPECT_EQ(1, EndRipData());
  EXPECT_EQ(1, InitPrinter(0));
  EXPECT_EQ(1, AbortPrint());
  EXPECT_EQ(1, ExitPrinter());
  EXPECT_EQ(1, PP_GetErrorMsg(text));
  EXPECT_STREQ("#", text + 16);  // sixteen bytes and no more
  EXPECT_EQ(1440u, PP_GetResolutionX(1));
  EXPECT_EQ(360u, PP_GetResolutionY(1));
}

int g_calledBack = 0;

// What a window of the host's does while a box is open, which runs the messages of its thread.
void CALLBACK CallBackIn(HWND, UINT, UINT_PTR timer, DWORD) {
  if (OpenBox() == nullptr) return;
  KillTimer(nullptr, timer);
  ++g_calledBack;
  ExpectRefusals();
  PressOk();
}

TEST_F(RealCalls, CallsFromTheMessagesOfABoxAreRefused) {
  SetTimer(nullptr, 0, 50, CallBackIn);
  EXPECT_EQ(0, Init());
  EXPECT_EQ(1, g_calledBack);
  EXPECT_EQ(0, SendLine(0));  // the error that the box showed is still recorded
  EXPECT_EQ(1, PP_Uninit());
  EXPECT_EQ(1, LogsWith("Call refused: another one is running\r\n"));
  EXPECT_EQ(1, LogsWith(""));
  PrintAPage();
}

TEST_F(RealCalls, CallsFromASecondThreadAreRefused) {
  VirtualPrinter printer(qrn::sim::Machine{}, Script({"pause:at=1,ms=3000"}));
  const Cable cable(printer);
  ASSERT_EQ(1, Init());
  std::thread second([] {
    Sleep(1000);  // the end call waits for the paused printer
    ExpectRefusals();
  });
  SendPage();
  EXPECT_EQ(1, PP_Uninit());
  second.join();
  EXPECT_EQ("", printer.Violation());
  EXPECT_EQ(kPageInk, printer.Stats().inkLaid);
  EXPECT_EQ(1, LogsWith("Call refused: another one is running\r\n"));
}

// A program of its own, linked against the DLL as it ships, on a system without a printer.
void ExpectInTheBoxOfTheExample(const std::string& wanted) {
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION host{};
  char program[] = "minimal_host.exe";
  ASSERT_TRUE(CreateProcessA(nullptr, program, nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                             &startup, &host));
  ASSERT_TRUE(WaitFor([] { return OpenBox() != nullptr; }));
  char text[512] = "";
  GetDlgItemTextA(OpenBox(), 0xFFFF, text, sizeof text);
  EXPECT_NE(std::string::npos, CodePageToUtf8(text).find(wanted)) << CodePageToUtf8(text);
  PressOk();
  DWORD code = STILL_ACTIVE;
  WaitForSingleObject(host.hProcess, 10'000);
  GetExitCodeProcess(host.hProcess, &code);
  EXPECT_EQ(1u, code);
}
TEST(Example, TellsItsUserInEnglish) { ExpectInTheBoxOfTheExample("Is printer power on now?"); }
TEST(Example, TellsItsUserInChinese) { ExpectInTheBoxOfTheExample("打印机是否已经上电?"); }

}  // namespace
