#include "platform/port_platform.h"

#include <windows.h>

#include <algorithm>

#include "platform/usb_transfer.h"
#include "platform/win32/win32_platform.h"

namespace qrn {
namespace {

constexpr UsbList kTheList = 1;
constexpr std::uint32_t kTransferNapMs = 5;  // a waiting transfer looks again at least this often

class Win32PortPlatform final : public Win32Platform {
 public:
  void Plug(UsbPort* port, PortBoxHandler onBox, void* context) {
    port_ = port;
    onBox_ = onBox;
    context_ = context;
  }

  UsbList UsbListOpen() override {
    return port_ == nullptr || port_->Listable(TickMs()) ? kTheList : 0;
  }
  UsbPathStatus UsbListPath(UsbList, std::uint32_t index, const char** path) override {
    *path = port_ != nullptr ? port_->PathAt(index, TickMs()) : nullptr;
    if (*path == nullptr) return UsbPathStatus::kEnd;
    return **path != '\0' ? UsbPathStatus::kPath : UsbPathStatus::kUnreadable;
  }
  void UsbListClose(UsbList) override {}

  DeviceHandle DeviceOpen(const char* path) override {
    std::uint32_t error = ERROR_FILE_NOT_FOUND;
    const DeviceHandle device = port_ != nullptr ? port_->Open(path, TickMs(), &error) : 0;
    if (device == 0) SetLastError(error);
    return device;
  }
  void DeviceClose(DeviceHandle device) override {
    port_->Close(static_cast<std::uint32_t>(device), TickMs());
  }
  bool BulkWrite(DeviceHandle device, const void* data, std::uint32_t bytes) override {
    return CompleteTransfer(Waiting{}, [=, this](std::uint32_t now) {
      return port_->Write(static_cast<std::uint32_t>(device),
                          static_cast<const std::uint8_t*>(data), bytes, now);
    });
  }
  bool BulkRead(DeviceHandle device, void* data, std::uint32_t bytes) override {
    return CompleteTransfer(Waiting{}, [=, this](std::uint32_t now) {
      return port_->Read(static_cast<std::uint32_t>(device), static_cast<std::uint8_t*>(data),
                         bytes, now);
    });
  }

  void ShowBox(const char* text, const char* caption) override {
    LeaveIfAsked();
    if (onBox_ == nullptr) return Win32Platform::ShowBox(text, caption);
    onBox_(context_, text, caption);
    LeaveIfAsked();
  }

 private:
  // A thread in a transfer of its own. A step of the port takes no time worth speaking of, so that
  // an asked thread always gets here.
  struct Waiting {
    static void LeaveIfAsked() { Win32Platform::LeaveIfAsked(); }
    static std::uint32_t TickMs() { return GetTickCount(); }
    static void WaitMs(std::uint32_t ms) { Sleep(std::min(ms, kTransferNapMs)); }
    static void SetError(std::uint32_t code) { SetLastError(code); }
  };

  UsbPort* port_ = nullptr;
  PortBoxHandler onBox_ = nullptr;
  void* context_ = nullptr;
};

Win32PortPlatform& ThePortPlatform() {
  static Win32PortPlatform platform;
  return platform;
}

}  // namespace

Platform& PortPlatform() { return ThePortPlatform(); }

void PlugPort(UsbPort* port, PortBoxHandler onBox, void* context) {
  ThePortPlatform().Plug(port, onBox, context);
}

}  // namespace qrn
