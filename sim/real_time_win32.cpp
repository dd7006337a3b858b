#include <windows.h>

#include <algorithm>
#include <utility>

#include "platform/usb_transfer.h"
#include "platform/win32/win32_platform.h"
#include "sim/real_time.h"

namespace qrn::sim {
namespace {

constexpr UsbList kTheList = 1;
constexpr std::uint32_t kTransferNapMs = 5;  // a waiting transfer looks again at least this often

class PortPlatform final : public Win32Platform {
 public:
  void Plug(UsbPort* port, BoxHandler onBox) {
    port_ = port;
    onBox_ = std::move(onBox);
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

  void ShowBox(const char* text, const char*) override {
    if (onBox_) onBox_(text);
  }

 private:
  // A thread in a transfer of its own.
  struct Waiting {
    static void LeaveIfAsked() { Win32Platform::LeaveIfAsked(); }
    static std::uint32_t TickMs() { return GetTickCount(); }
    static void WaitMs(std::uint32_t ms) { Sleep(std::min(ms, kTransferNapMs)); }
    static void SetError(std::uint32_t code) { SetLastError(code); }
  };

  UsbPort* port_ = nullptr;
  BoxHandler onBox_;
};

PortPlatform& ThePortPlatform() {
  static PortPlatform platform;
  return platform;
}

}  // namespace

Platform& RealTimePlatform() { return ThePortPlatform(); }

void PlugIntoRealTime(UsbPort* port, BoxHandler onBox) {
  ThePortPlatform().Plug(port, std::move(onBox));
}

}  // namespace qrn::sim
