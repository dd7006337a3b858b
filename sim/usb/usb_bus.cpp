#include "sim/usb/usb_bus.h"

#include <cctype>

namespace qrn::sim {
namespace {

// A mouse is listed before the printers.
constexpr const char* kForeignPath =
    R"(\\?\usb#vid_1c4f&pid_0034#5&2c1e7f2&0&4#{a5dcbf10-6530-11d2-901f-00c04fb951ed})";
constexpr const char* kIdentifiers = "VID_5E3C&PID_A71D";
constexpr std::uint32_t kSecondInstance = 9;
constexpr std::size_t kLongInstance = 300;  // characters; no path of a real system is that long

constexpr std::uint32_t kErrorFileNotFound = 2, kErrorAccessDenied = 5;

bool Passed(std::uint32_t nowMs, std::uint32_t timeMs) {
  return static_cast<std::int32_t>(nowMs - timeMs) >= 0;
}

std::string InCase(PathCase wanted, std::string text) {
  if (wanted == PathCase::kUpper) return text;
  const std::size_t step = wanted == PathCase::kLower ? 1 : 2;
  for (std::size_t i = 0; i < text.size(); i += step)
    text[i] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[i])));
  return text;
}

}  // namespace

UsbBus::UsbBus(QuirkTriggers& triggers) : triggers_(&triggers) {
  if (const Quirk* path = triggers.Use(Quirk::Kind::kPath)) path_ = *path;
  devices_ = {{kForeignPath}, {Spelled(instance_)}};
  if (const Quirk* second = triggers.Use(Quirk::Kind::kSecondPrinter)) {
    const Device device{Spelled(kSecondInstance), false, second->held};
    devices_.insert(second->first ? devices_.begin() + 1 : devices_.end(), device);
  }
  printer_ = 1;
  while (devices_[printer_].held) ++printer_;
}

std::string UsbBus::Spelled(std::uint32_t instance) const {
  std::string number = std::to_string(instance);
  const std::size_t digits = path_.longPath ? kLongInstance : 4;
  number.insert(0, digits - number.size(), '0');
  return R"(\\?\usb#)" + InCase(path_.spelling, kIdentifiers) + "#" + number +
         "#{a5dcbf10-6530-11d2-901f-00c04fb951ed}";
}

bool UsbBus::Look(std::uint32_t nowMs) {
  Device& printer = devices_[printer_];
  if (printer.away && unplug_.ms != 0 && Passed(nowMs, backMs_)) ComeBack();
  if (printer.held && unplug_.heldMs != 0 && Passed(nowMs, freeMs_)) printer.held = false;
  if (printer.away) return false;
  const Quirk* unplug = triggers_->Use(Quirk::Kind::kUnplug);
  if (unplug == nullptr) return false;
  unplug_ = *unplug;
  backMs_ = nowMs + unplug_.ms;
  printer.away = true;
  handle_ = 0;  // dead, even when the device is back before its owner looks
  return true;
}

void UsbBus::ComeBack() {
  Device& printer = devices_[printer_];
  printer.away = false;
  if (unplug_.back == Back::kOtherPath) printer.path = Spelled(++instance_);
  printer.held = unplug_.back == Back::kHeld;
  freeMs_ = backMs_ + unplug_.heldMs;
}

const char* UsbBus::PathAt(std::size_t index) const {
  for (const Device& device : devices_) {
    if (!device.away && index-- == 0) return device.path.c_str();
  }
  return nullptr;
}

std::uint32_t UsbBus::Open(const char* path, std::uint32_t* error) {
  for (std::size_t i = 1; i < devices_.size(); ++i) {
    Device& device = devices_[i];
    if (device.path != path || device.away) continue;
    if (const Quirk* fault = triggers_->Use(Quirk::Kind::kOpenFails)) {
      *error = fault->error;
      return 0;
    }
    if (device.held || handle_ != 0) {
      *error = kErrorAccessDenied;
      return 0;
    }
    if (!chosen_) {
      for (Device& other : devices_) other.held = true;
      device.held = false;
      printer_ = i;
      chosen_ = true;
    }
    handle_ = ++lastHandle_;
    return handle_;
  }
  *error = kErrorFileNotFound;
  return 0;
}

void UsbBus::Close(std::uint32_t handle) {
  if (handle == handle_) handle_ = 0;
}

bool UsbBus::Usable(std::uint32_t handle) const { return handle != 0 && handle == handle_; }

}  // namespace qrn::sim
