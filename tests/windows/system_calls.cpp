#include "windows/system_calls.h"

#include <windows.h>

#include <setupapi.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <mutex>
#include <utility>

#include "platform/platform.h"
#include "windows/image_tables.h"
#include "windows/skewed_call.h"

namespace {

using qrn::Platform;
using qrn::ThePlatform;
using qrn::UsbPathStatus;

std::mutex g_mutex;
std::string g_wrongCall;

// Records a call that is not as it must be.
void Demand(bool right, const char* call, const char* what) {
  if (right) return;
  const std::lock_guard lock(g_mutex);
  if (g_wrongCall.empty()) g_wrongCall = std::string(call) + ": " + what;
}

// ---- Ends of threads ----

// Where a thread that is ended by force goes back to, past the frames of the DLL, which cannot be
// unwound.
thread_local void* t_leave[5];
thread_local bool t_isLibraryThread = false;

// Runs a call of the platform, which may end the thread by an exception.
template <class Call>
auto Enter(Call call) -> decltype(call()) {
  bool ended = false;
  try {
    return call();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    std::_Exit(3);
  } catch (...) {
    ended = true;
  }
  if (ended && t_isLibraryThread) __builtin_longjmp(t_leave, 1);
  std::fprintf(stderr, "the host's thread was ended by force\n");
  std::_Exit(3);
}

// ---- Handles: the DLL sees numbers that no system gives out ----

constexpr std::uintptr_t kDeviceTag = 0x7D000000, kThreadTag = 0x7E000000, kTagMask = 0xFF000000;

struct Thread {
  LPTHREAD_START_ROUTINE procedure;
  void* argument;
  qrn::ThreadHandle started;
  bool forced, released;
};
constexpr std::size_t kThreadsMax = 4096;
Thread g_threads[kThreadsMax];
std::atomic<std::uint32_t> g_threadCount = 0;

bool HasTag(HANDLE handle, std::uintptr_t tag) {
  return (reinterpret_cast<std::uintptr_t>(handle) & kTagMask) == tag;
}

HANDLE Tagged(std::uintptr_t value, std::uintptr_t tag) {
  if (value > ~kTagMask) std::abort();
  return reinterpret_cast<HANDLE>(value | tag);
}

std::uintptr_t Untagged(HANDLE handle) {
  return reinterpret_cast<std::uintptr_t>(handle) & ~kTagMask;
}

// ---- Devices ----

constexpr GUID kUsbDevices = {
    0xA5DCBF10, 0x6530, 0x11D2, {0x90, 0x1F, 0x00, 0xC0, 0x4F, 0xB9, 0x51, 0xED}};

bool IsUsbClass(const GUID* id) {
  return id != nullptr && std::memcmp(id, &kUsbDevices, sizeof *id) == 0;
}

std::string g_path;  // of the interface enumerated last; "" = its details cannot be read

HDEVINFO WINAPI GetClassDevs(const GUID* id, PCSTR enumerator, HWND owner, DWORD flags) {
  Demand(IsUsbClass(id) && enumerator == nullptr && owner == nullptr && flags == 0x12,
         "SetupDiGetClassDevsA", "not all present USB device interfaces");
  const qrn::UsbList list = Enter([] { return ThePlatform().UsbListOpen(); });
  return list != 0 ? reinterpret_cast<HDEVINFO>(list) : INVALID_HANDLE_VALUE;
}

BOOL WINAPI EnumInterfaces(HDEVINFO list, PSP_DEVINFO_DATA device, const GUID* id, DWORD index,
                           PSP_DEVICE_INTERFACE_DATA entry) {
  Demand(device == nullptr && IsUsbClass(id), "SetupDiEnumDeviceInterfaces", "wrong filter");
  Demand(entry->cbSize == 28, "SetupDiEnumDeviceInterfaces", "wrong size of the record");
  const char* path = nullptr;
  const UsbPathStatus status = Enter([&] {
    return ThePlatform().UsbListPath(reinterpret_cast<qrn::UsbList>(list), index, &path);
  });
  if (status == UsbPathStatus::kEnd) {
    SetLastError(ERROR_NO_MORE_ITEMS);
    return FALSE;
  }
  g_path = status == UsbPathStatus::kPath ? path : "";
  entry->Reserved = index + 1;
  return TRUE;
}

BOOL WINAPI GetInterfaceDetail(HDEVINFO, PSP_DEVICE_INTERFACE_DATA entry,
                               PSP_DEVICE_INTERFACE_DETAIL_DATA_A detail, DWORD bytes,
                               PDWORD needed, PSP_DEVINFO_DATA device) {
  Demand(entry->cbSize == 28 && entry->Reserved != 0, "SetupDiGetDeviceInterfaceDetailA",
         "not an enumerated interface");
  Demand(device == nullptr, "SetupDiGetDeviceInterfaceDetailA", "asks for the device");
  if (g_path.empty()) {
    SetLastError(ERROR_INVALID_DATA);
    return FALSE;
  }
  const DWORD needs = static_cast<DWORD>(offsetof(SP_DEVICE_INTERFACE_DETAIL_DATA_A, DevicePath) +
                                         g_path.size() + 1);
  if (needed != nullptr) *needed = needs;
  if (detail == nullptr || bytes < needs) {
    Demand(detail == nullptr && bytes == 0, "SetupDiGetDeviceInterfaceDetailA", "buffer too small");
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return FALSE;
  }
  Demand(detail->cbSize == 5, "SetupDiGetDeviceInterfaceDetailA", "wrong size of the record");
  std::memcpy(detail->DevicePath, g_path.c_str(), g_path.size() + 1);
  return TRUE;
}

BOOL WINAPI DestroyList(HDEVINFO list) {
  Enter([list] { ThePlatform().UsbListClose(reinterpret_cast<qrn::UsbList>(list)); });
  return TRUE;
}

HANDLE WINAPI OpenDevice(LPCSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                         DWORD disposition, DWORD flags, HANDLE model) {
  Demand(access == 0xC0000000 && share == 0 && security == nullptr && disposition == 3 &&
             flags == 0 && model == nullptr,
         "CreateFileA", "not exclusive synchronous read and write");
  const qrn::DeviceHandle device = Enter([path] { return ThePlatform().DeviceOpen(path); });
  return device != 0 ? Tagged(device, kDeviceTag) : INVALID_HANDLE_VALUE;
}

BOOL WINAPI ControlDevice(HANDLE device, DWORD code, LPVOID in, DWORD inBytes, LPVOID out,
                          DWORD outBytes, LPDWORD transferred, LPOVERLAPPED overlapped) {
  Demand(HasTag(device, kDeviceTag), "DeviceIoControl", "not the device");
  Demand(inBytes == 4 && transferred != nullptr && overlapped == nullptr, "DeviceIoControl",
         "wrong arguments");
  std::uint32_t pipe = 0;
  std::memcpy(&pipe, in, sizeof pipe);
  const bool write = code == 0x222051;
  Demand(write ? pipe == 0 : code == 0x22204E && pipe == 2, "DeviceIoControl", "wrong pipe");
  return Enter([=] {
    return write ? ThePlatform().BulkWrite(Untagged(device), out, outBytes)
                 : ThePlatform().BulkRead(Untagged(device), out, outBytes);
  });
}

// ---- Threads ----

void RunLibraryThread(void* started) {
  t_isLibraryThread = true;
  const auto* thread = static_cast<const Thread*>(started);
  if (__builtin_setjmp(t_leave) == 0)
    (void)CallSkewed(reinterpret_cast<void*>(thread->procedure), {thread->argument});
}

HANDLE WINAPI StartThread(LPSECURITY_ATTRIBUTES security, SIZE_T stack,
                          LPTHREAD_START_ROUTINE procedure, LPVOID argument, DWORD flags,
                          LPDWORD id) {
  Demand(security == nullptr && stack == 0 && flags == 0 && id == nullptr, "CreateThread",
         "not a plain thread that runs at once");
  const std::uint32_t index = g_threadCount++;
  if (index >= kThreadsMax) std::abort();
  Thread& thread = g_threads[index];
  thread = {procedure, argument, 0, false, false};
  thread.started = Enter([&] { return ThePlatform().ThreadStart(RunLibraryThread, &thread); });
  return thread.started != 0 ? Tagged(index, kThreadTag) : nullptr;
}

BOOL WINAPI RaisePriority(HANDLE handle, int priority) {
  Demand(HasTag(handle, kThreadTag) && priority == 2, "SetThreadPriority", "not the highest");
  Enter([handle] { ThePlatform().ThreadRaisePriority(g_threads[Untagged(handle)].started); });
  return TRUE;
}

BOOL WINAPI EndThread(HANDLE handle, DWORD code) {
  Demand(HasTag(handle, kThreadTag) && code == 0, "TerminateThread", "wrong arguments");
  Thread& thread = g_threads[Untagged(handle)];
  thread.forced = true;
  Enter([&thread] { ThePlatform().ThreadTerminate(thread.started); });
  return TRUE;
}

void Release(Thread& thread) {
  if (thread.released) return;
  thread.released = true;
  Enter([&thread] { ThePlatform().ThreadRelease(thread.started); });
}

// What a thread gets that is asked to leave; a longer wait is for one that has done its work.
// Asked, it leaves in no time: where it waits, as on the other platforms with virtual time.
constexpr DWORD kAskedMs = 300;

DWORD WINAPI Wait(HANDLE handle, DWORD ms) {
  if (!HasTag(handle, kThreadTag)) return WaitForSingleObject(handle, ms);
  Demand(ms != INFINITE, "WaitForSingleObject", "without a limit");
  Thread& thread = g_threads[Untagged(handle)];
  if (ms == kAskedMs && !thread.released) return WAIT_TIMEOUT;
  if (!thread.forced) Release(thread);
  return WAIT_OBJECT_0;
}

BOOL WINAPI Close(HANDLE handle) {
  if (HasTag(handle, kDeviceTag)) {
    Enter([handle] { ThePlatform().DeviceClose(Untagged(handle)); });
    return TRUE;
  }
  if (!HasTag(handle, kThreadTag)) return CloseHandle(handle);
  Thread& thread = g_threads[Untagged(handle)];
  Demand(thread.forced || thread.released, "CloseHandle", "the thread was not waited for");
  Release(thread);
  return TRUE;
}

// ---- Time and the user ----

DWORD WINAPI SystemError() {
  return Enter([] { return ThePlatform().LastError(); });
}

DWORD WINAPI TickCount() {
  return Enter([] { return ThePlatform().TickMs(); });
}

void WINAPI SleepFor(DWORD ms) {
  Enter([ms] { ThePlatform().SleepMs(ms); });
}

void WINAPI LocalTimeOf(LPSYSTEMTIME now) {
  const qrn::LocalTime time = Enter([] { return ThePlatform().LocalTimeNow(); });
  *now = {time.year, time.month, 0, time.day, time.hour, time.minute, time.second, 0};
}

LCID WINAPI DefaultLocale() {
  return Enter([] { return ThePlatform().SystemLocaleId(); });
}

int WINAPI ShowBox(HWND owner, LPCSTR text, LPCSTR caption, UINT type) {
  Demand(owner == nullptr && type == MB_OK && std::strcmp(caption, "Tip") == 0, "MessageBoxA",
         "not an ownerless box with one button");
  Enter([=] { ThePlatform().ShowBox(text, caption); });
  return IDOK;
}

BOOL WINAPI FileExists(LPCSTR path) {
  return Enter([path] { return ThePlatform().PathExists(path); });
}

}  // namespace

void ReplaceSystemCalls(HMODULE dll, SystemCalls which) {
  Redirect(dll, {{"SetupDiGetClassDevsA", GetClassDevs},
                 {"SetupDiEnumDeviceInterfaces", EnumInterfaces},
                 {"SetupDiGetDeviceInterfaceDetailA", GetInterfaceDetail},
                 {"SetupDiDestroyDeviceInfoList", DestroyList},
                 {"CreateFileA", OpenDevice},
                 {"DeviceIoControl", ControlDevice},
                 {"CloseHandle", Close},
                 {"GetTickCount", TickCount},
                 {"Sleep", SleepFor}});
  if (which == SystemCalls::kDevices) return;
  Redirect(dll, {{"GetLastError", SystemError},
                 {"CreateThread", StartThread},
                 {"SetThreadPriority", RaisePriority},
                 {"TerminateThread", EndThread},
                 {"WaitForSingleObject", Wait},
                 {"GetLocalTime", LocalTimeOf},
                 {"GetSystemDefaultLCID", DefaultLocale},
                 {"MessageBoxA", ShowBox},
                 {"PathFileExistsA", FileExists}});
}

std::string TakeWrongCall() {
  const std::lock_guard lock(g_mutex);
  return std::exchange(g_wrongCall, "");
}
