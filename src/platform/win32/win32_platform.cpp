#include "platform/win32/win32_platform.h"

#include <windows.h>

#include <shlwapi.h>
#include <winioctl.h>

#include <atomic>
#include <new>

namespace qrn {
namespace {

// The bulk requests of the printer's USB function driver.
constexpr DWORD kFunctionDriver = 0x22;
constexpr DWORD kBulkWrite = CTL_CODE(kFunctionDriver, 0x814, METHOD_IN_DIRECT, FILE_ANY_ACCESS);
constexpr DWORD kBulkRead = CTL_CODE(kFunctionDriver, 0x813, METHOD_OUT_DIRECT, FILE_ANY_ACCESS);
static_assert(kBulkWrite == 0x222051 && kBulkRead == 0x22204E);
constexpr std::uint32_t kWritePipe = 0, kReadPipe = 2;

// How long a thread that is asked to leave has to reach its next sleep, transfer or box.
constexpr DWORD kAskedMs = 300;
// A thread that was ended by force may hang in its driver for minutes, but never comes back from
// there; one that has done its work may hang in the system's loader, which the host holds while it
// loads and unloads. So neither is awaited for longer than this.
constexpr DWORD kEndMs = 2000;

struct StartedThread {
  HANDLE handle;
  void (*procedure)(void*);
  void* argument;
  bool forced;                // ended by force; its starter's thread only
  std::atomic<bool> asked;    // set by its starter's thread: it is to leave
  std::atomic<DWORD> id;      // this and what follows set by the thread; 0 = not begun
  std::atomic<bool> resting;  // it is in a sleep
  std::atomic<bool> done;     // it executes no further step of the library
};

// The library has one thread of its own at a time; null = none.
std::atomic<StartedThread*> g_thread = nullptr;

// What this thread was started as; null on a thread of the host's.
StartedThread* Self() {
  StartedThread* thread = g_thread;
  return thread != nullptr && thread->id == GetCurrentThreadId() ? thread : nullptr;
}

// The system promises a stack that is aligned to 4 bytes only.
__attribute__((force_align_arg_pointer)) DWORD WINAPI RunThread(void* started) {
  auto* thread = static_cast<StartedThread*>(started);
  thread->id = GetCurrentThreadId();
  thread->procedure(thread->argument);
  thread->done = true;
  return 0;
}

// Files are opened by the wide call and devices by the narrow one, so that either can be watched or
// replaced alone.
HANDLE OpenFileForWriting(const char* path, DWORD disposition) {
  wchar_t wide[MAX_PATH];
  if (MultiByteToWideChar(CP_ACP, 0, path, -1, wide, MAX_PATH) == 0) return INVALID_HANDLE_VALUE;
  return CreateFileW(wide, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                     nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
}

// Keeps the library loaded until the process ends: a thread that was stopped in a call of the
// system's may still be on its way back into it.
void KeepLibraryLoaded() {
  HMODULE library = nullptr;
  GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                     reinterpret_cast<const char*>(&g_thread), &library);
}

// The pipe number is the input, the data travel in the output buffer. The driver's count of
// transferred bytes is ignored.
bool Transfer(DeviceHandle device, DWORD request, std::uint32_t pipe, void* data,
              std::uint32_t bytes) {
  Win32Platform::LeaveIfAsked();
  DWORD transferred = 0;
  const BOOL done = DeviceIoControl(reinterpret_cast<HANDLE>(device), request, &pipe, sizeof pipe,
                                    data, bytes, &transferred, nullptr);
  Win32Platform::LeaveIfAsked();
  return done != FALSE;
}

}  // namespace

Platform& SystemPlatform() {
  static Win32Platform platform;
  return platform;
}

DeviceHandle Win32Platform::DeviceOpen(const char* path) {
  const HANDLE device =
      CreateFileA(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  return device != INVALID_HANDLE_VALUE ? reinterpret_cast<DeviceHandle>(device) : 0;
}

void Win32Platform::DeviceClose(DeviceHandle device) {
  CloseHandle(reinterpret_cast<HANDLE>(device));
}

bool Win32Platform::BulkWrite(DeviceHandle device, const void* data, std::uint32_t bytes) {
  return Transfer(device, kBulkWrite, kWritePipe, const_cast<void*>(data), bytes);  // only read
}

bool Win32Platform::BulkRead(DeviceHandle device, void* data, std::uint32_t bytes) {
  return Transfer(device, kBulkRead, kReadPipe, data, bytes);
}

// The frames of the library that are abandoned own nothing.
void Win32Platform::LeaveIfAsked() {
  StartedThread* self = Self();
  if (self == nullptr || !self->asked) return;
  self->done = true;
  ExitThread(0);
}

std::uint32_t Win32Platform::LastError() { return GetLastError(); }

std::uint32_t Win32Platform::TickMs() { return GetTickCount(); }

void Win32Platform::SleepMs(std::uint32_t ms) {
  LeaveIfAsked();
  StartedThread* self = Self();
  if (self != nullptr) self->resting = true;
  Sleep(ms);
  if (self != nullptr) self->resting = false;
  LeaveIfAsked();
}

LocalTime Win32Platform::LocalTimeNow() {
  SYSTEMTIME now;
  GetLocalTime(&now);
  return {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond};
}

ThreadHandle Win32Platform::ThreadStart(void (*procedure)(void*), void* argument) {
  auto* thread = new (std::nothrow) StartedThread{};
  if (thread == nullptr) return 0;
  thread->procedure = procedure;
  thread->argument = argument;
  g_thread = thread;
  thread->handle = CreateThread(nullptr, 0, RunThread, thread, 0, nullptr);
  if (thread->handle == nullptr) {
    g_thread = nullptr;
    delete thread;
    return 0;
  }
  return reinterpret_cast<ThreadHandle>(thread);
}

void Win32Platform::ThreadRaisePriority(ThreadHandle thread) {
  SetThreadPriority(reinterpret_cast<StartedThread*>(thread)->handle, THREAD_PRIORITY_HIGHEST);
}

void Win32Platform::ThreadTerminate(ThreadHandle thread) {
  auto* started = reinterpret_cast<StartedThread*>(thread);
  started->asked = true;
  if (started->id != 0) PostThreadMessageA(started->id, WM_QUIT, 0, 0);  // closes a box of it
  // A thread that has left may still be waiting for the loader.
  if (WaitForSingleObject(started->handle, kAskedMs) != WAIT_OBJECT_0 && !started->done) {
    if (!started->resting) KeepLibraryLoaded();
    TerminateThread(started->handle, 0);
    WaitForSingleObject(started->handle, kEndMs);
  }
  started->forced = true;
}

void Win32Platform::ThreadRelease(ThreadHandle thread) {
  auto* started = reinterpret_cast<StartedThread*>(thread);
  if (!started->forced && WaitForSingleObject(started->handle, kEndMs) != WAIT_OBJECT_0 &&
      !started->done) {
    ThreadTerminate(thread);
  }
  g_thread = nullptr;
  CloseHandle(started->handle);
  delete started;
}

std::uint32_t Win32Platform::SystemLocaleId() { return GetSystemDefaultLCID(); }

void Win32Platform::ShowBox(const char* text, const char* caption) {
  LeaveIfAsked();
  MessageBoxA(nullptr, text, caption, MB_OK);
  LeaveIfAsked();
}

bool Win32Platform::PathExists(const char* path) { return PathFileExistsA(path) != FALSE; }

bool Win32Platform::FileCreate(const char* path) {
  const HANDLE file = OpenFileForWriting(path, CREATE_ALWAYS);
  if (file == INVALID_HANDLE_VALUE) return false;
  CloseHandle(file);
  return true;
}

FileWrite Win32Platform::FileWriteAt(const char* path, const FilePart& part,
                                     std::uint32_t gapMaxBytes, std::uint32_t* fileBytes) {
  const DWORD error = GetLastError();
  FileWrite result = FileWrite::kFailed;
  const HANDLE file = OpenFileForWriting(path, OPEN_ALWAYS);
  if (file != INVALID_HANDLE_VALUE) {
    *fileBytes = GetFileSize(file, nullptr);
    OVERLAPPED at{};
    at.Offset = part.place;
    DWORD written = 0;
    if (std::uint64_t{*fileBytes} + gapMaxBytes < part.place) {
      result = FileWrite::kShort;
    } else if (WriteFile(file, part.bytes, part.count, &written, &at) && written == part.count) {
      result = FileWrite::kWritten;
    }
    CloseHandle(file);
  }
  SetLastError(error);
  return result;
}

}  // namespace qrn
