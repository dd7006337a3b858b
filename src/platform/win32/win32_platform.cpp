#include "platform/win32/win32_platform.h"

#include <windows.h>

#include <shlwapi.h>
#include <winioctl.h>

#include <new>

namespace qrn {
namespace {

// The bulk requests of the printer's USB function driver: the pipe number is the input, the data
// travel in the output buffer. What the driver says of the bytes transferred is not looked at.
struct BulkRequest {
  DWORD code;
  std::uint32_t pipe;
};
constexpr DWORD kFunctionDriver = 0x22;
constexpr BulkRequest kBulkWrite = {
    CTL_CODE(kFunctionDriver, 0x814, METHOD_IN_DIRECT, FILE_ANY_ACCESS), 0};
constexpr BulkRequest kBulkRead = {
    CTL_CODE(kFunctionDriver, 0x813, METHOD_OUT_DIRECT, FILE_ANY_ACCESS), 2};
static_assert(kBulkWrite.code == 0x222051 && kBulkRead.code == 0x22204E);

// A thread that was ended by force may hang in its driver for minutes, but never comes back from
// there: so its end is awaited for this long and no longer.
constexpr DWORD kForcedEndMs = 2000;

struct StartedThread {
  HANDLE handle;
  bool forced;  // ended by force; its starter's thread only
  void (*procedure)(void*);
  void* argument;
};

// The system promises a stack that is aligned to 4 bytes only.
__attribute__((force_align_arg_pointer)) DWORD WINAPI RunThread(void* started) {
  const auto* thread = static_cast<const StartedThread*>(started);
  thread->procedure(thread->argument);
  return 0;
}

bool Transfer(DeviceHandle device, BulkRequest request, void* data, std::uint32_t bytes) {
  DWORD transferred = 0;
  return DeviceIoControl(reinterpret_cast<HANDLE>(device), request.code, &request.pipe,
                         sizeof request.pipe, data, bytes, &transferred, nullptr) != 0;
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
  return Transfer(device, kBulkWrite, const_cast<void*>(data), bytes);  // the driver only reads it
}

bool Win32Platform::BulkRead(DeviceHandle device, void* data, std::uint32_t bytes) {
  return Transfer(device, kBulkRead, data, bytes);
}

std::uint32_t Win32Platform::LastError() { return GetLastError(); }

std::uint32_t Win32Platform::TickMs() { return GetTickCount(); }

void Win32Platform::SleepMs(std::uint32_t ms) { Sleep(ms); }

LocalTime Win32Platform::LocalTimeNow() {
  SYSTEMTIME now;
  GetLocalTime(&now);
  return {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond};
}

ThreadHandle Win32Platform::ThreadStart(void (*procedure)(void*), void* argument) {
  auto* thread = new (std::nothrow) StartedThread{nullptr, false, procedure, argument};
  if (thread == nullptr) return 0;
  thread->handle = CreateThread(nullptr, 0, RunThread, thread, 0, nullptr);
  if (thread->handle == nullptr) {
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
  TerminateThread(started->handle, 0);
  WaitForSingleObject(started->handle, kForcedEndMs);
  started->forced = true;
}

void Win32Platform::ThreadRelease(ThreadHandle thread) {
  auto* started = reinterpret_cast<StartedThread*>(thread);
  if (!started->forced) WaitForSingleObject(started->handle, INFINITE);
  CloseHandle(started->handle);
  delete started;
}

std::uint32_t Win32Platform::SystemLocaleId() { return GetSystemDefaultLCID(); }

void Win32Platform::ShowBox(const char* text, const char* caption) {
  MessageBoxA(nullptr, text, caption, MB_OK);
}

bool Win32Platform::PathExists(const char* path) { return PathFileExistsA(path) != FALSE; }

}  // namespace qrn
