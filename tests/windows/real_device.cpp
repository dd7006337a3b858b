#include "windows/real_device.h"

#include <setupapi.h>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <string>

#include "windows/image_tables.h"

namespace {

constexpr DWORD kHeldAfterMs = 300;  // no virtual printer answers later than this
constexpr DWORD kLookAgainMs = 5;

qrn::UsbPort* g_plugged = nullptr;
qrn::UsbPort* g_port = nullptr;  // the open one
std::uint32_t g_handle = 0;      // of the port; the DLL has a real one, of the null device
std::string g_path;
DWORD g_hostThread = 0;
std::uint32_t g_speed = 1;
std::atomic<int> g_terminated = 0;
std::atomic<bool> g_readHeld = false;

HDEVINFO WINAPI GetClassDevs(const GUID*, PCSTR, HWND, DWORD) {
  return reinterpret_cast<HDEVINFO>(1);
}

BOOL WINAPI EnumInterfaces(HDEVINFO, PSP_DEVINFO_DATA, const GUID*, DWORD index,
                           PSP_DEVICE_INTERFACE_DATA) {
  const char* path = g_plugged != nullptr ? g_plugged->PathAt(index, GetTickCount()) : nullptr;
  if (path == nullptr) return FALSE;
  g_path = path;
  return TRUE;
}

BOOL WINAPI GetInterfaceDetail(HDEVINFO, PSP_DEVICE_INTERFACE_DATA,
                               PSP_DEVICE_INTERFACE_DETAIL_DATA_A detail, DWORD, PDWORD needed,
                               PSP_DEVINFO_DATA) {
  if (needed != nullptr) *needed = static_cast<DWORD>(g_path.size() + 5);
  if (detail == nullptr) return FALSE;
  std::memcpy(detail->DevicePath, g_path.c_str(), g_path.size() + 1);
  return TRUE;
}

BOOL WINAPI DestroyList(HDEVINFO) { return TRUE; }

HANDLE WINAPI OpenDevice(LPCSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                         DWORD disposition, DWORD flags, HANDLE model) {
  if (g_port == g_plugged && g_handle != 0) g_port->Close(g_handle, GetTickCount());
  g_port = g_plugged;
  g_readHeld = false;
  std::uint32_t error = 0;
  g_handle = g_port->Open(path, GetTickCount(), &error);
  if (g_handle == 0) {
    SetLastError(error);
    return INVALID_HANDLE_VALUE;
  }
  return CreateFileA("NUL", access, share | FILE_SHARE_READ | FILE_SHARE_WRITE, security,
                     disposition, flags, model);
}

BOOL WINAPI ControlDevice(HANDLE, DWORD code, LPVOID, DWORD, LPVOID data, DWORD bytes,
                          LPDWORD transferred, LPOVERLAPPED) {
  const DWORD begin = GetTickCount();
  for (;;) {
    const DWORD now = GetTickCount();
    auto* const buffer = static_cast<std::uint8_t*>(data);
    const qrn::UsbStep step = code == 0x222051 ? g_port->Write(g_handle, buffer, bytes, now)
                                               : g_port->Read(g_handle, buffer, bytes, now);
    if (step.state != qrn::UsbStep::kWait) {
      *transferred = bytes;
      if (step.state == qrn::UsbStep::kFailed) SetLastError(step.value);
      return step.state == qrn::UsbStep::kDone;
    }
    if (now - begin > kHeldAfterMs) {
      g_readHeld = true;
      Sleep(INFINITE);
    }
    // One that is nearly due is as good as ready: a thread that never rests is the hardest to end.
    if (step.value - now > 2) Sleep(std::min(step.value - now, kLookAgainMs));
  }
}

void WINAPI SleepFor(DWORD ms) {
  Sleep(GetCurrentThreadId() == g_hostThread ? (ms + g_speed - 1) / g_speed : ms);
}

DWORD WINAPI TickCount() {
  return GetTickCount() * (GetCurrentThreadId() == g_hostThread ? g_speed : 1);
}

BOOL WINAPI EndThread(HANDLE thread, DWORD code) {
  ++g_terminated;
  return TerminateThread(thread, code);
}

}  // namespace

void LeadDeviceCallsHere(HMODULE dll, std::uint32_t speed) {
  g_hostThread = GetCurrentThreadId();
  g_speed = speed;
  Redirect(dll, {{"SetupDiGetClassDevsA", GetClassDevs},
                 {"SetupDiEnumDeviceInterfaces", EnumInterfaces},
                 {"SetupDiGetDeviceInterfaceDetailA", GetInterfaceDetail},
                 {"SetupDiDestroyDeviceInfoList", DestroyList},
                 {"CreateFileA", OpenDevice},
                 {"DeviceIoControl", ControlDevice},
                 {"Sleep", SleepFor},
                 {"GetTickCount", TickCount},
                 {"TerminateThread", EndThread}});
}

void PlugIn(qrn::UsbPort* port) { g_plugged = port; }

int TerminatedThreads() { return g_terminated; }

bool IsReadHeld() { return g_readHeld; }
