// The list of the present USB device interfaces, from SetupAPI.
#include <windows.h>

#include <setupapi.h>

#include <cstdlib>
#include <new>

#include "platform/win32/win32_platform.h"

namespace qrn {
namespace {

// The published class of USB devices, as the system's headers have it under
// GUID_DEVINTERFACE_USB_DEVICE; written out because its definition needs a library of GUIDs.
constexpr GUID kUsbDeviceClass = {
    0xA5DCBF10, 0x6530, 0x11D2, {0x90, 0x1F, 0x00, 0xC0, 0x4F, 0xB9, 0x51, 0xED}};

// SetupAPI refuses records whose size field holds anything but what a 32-bit program has.
static_assert(sizeof(SP_DEVICE_INTERFACE_DATA) == 28);
static_assert(sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_A) == 5);

struct Listing {
  HDEVINFO set;
  SP_DEVICE_INTERFACE_DETAIL_DATA_A* detail;  // of the path given last; owned
};

// The detail record of one interface, to be freed with std::free; null when it cannot be read.
SP_DEVICE_INTERFACE_DETAIL_DATA_A* ReadDetail(HDEVINFO set, SP_DEVICE_INTERFACE_DATA& entry) {
  DWORD bytes = 0;
  (void)SetupDiGetDeviceInterfaceDetailA(set, &entry, nullptr, 0, &bytes, nullptr);
  if (bytes < sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_A)) return nullptr;
  auto* detail = static_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_A*>(std::malloc(bytes));
  if (detail == nullptr) return nullptr;
  detail->cbSize = sizeof *detail;
  if (SetupDiGetDeviceInterfaceDetailA(set, &entry, detail, bytes, nullptr, nullptr)) return detail;
  std::free(detail);
  return nullptr;
}

}  // namespace

UsbList Win32Platform::UsbListOpen() {
  LeaveIfAsked();
  const HDEVINFO set = SetupDiGetClassDevsA(&kUsbDeviceClass, nullptr, nullptr,
                                            DIGCF_PRESENT | DIGCF_DEVICEINTERFACE);
  if (set == INVALID_HANDLE_VALUE) return 0;
  auto* listing = new (std::nothrow) Listing{set, nullptr};
  if (listing == nullptr) SetupDiDestroyDeviceInfoList(set);
  return reinterpret_cast<UsbList>(listing);
}

UsbPathStatus Win32Platform::UsbListPath(UsbList list, std::uint32_t index, const char** path) {
  auto* listing = reinterpret_cast<Listing*>(list);
  std::free(listing->detail);
  listing->detail = nullptr;
  SP_DEVICE_INTERFACE_DATA entry{};
  entry.cbSize = sizeof entry;
  if (!SetupDiEnumDeviceInterfaces(listing->set, nullptr, &kUsbDeviceClass, index, &entry)) {
    return UsbPathStatus::kEnd;
  }
  listing->detail = ReadDetail(listing->set, entry);
  if (listing->detail == nullptr) return UsbPathStatus::kUnreadable;
  *path = listing->detail->DevicePath;
  return UsbPathStatus::kPath;
}

void Win32Platform::UsbListClose(UsbList list) {
  auto* listing = reinterpret_cast<Listing*>(list);
  std::free(listing->detail);
  SetupDiDestroyDeviceInfoList(listing->set);
  delete listing;
  LeaveIfAsked();
}

}  // namespace qrn
