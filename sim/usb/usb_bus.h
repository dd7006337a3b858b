// The USB bus as the host finds it: which devices are on it under which path, which of them can be
// opened, and how the printer leaves it and comes back. A second printer that the script asks for
// is held by another program, or is taken by one as soon as the driver has opened the first it
// finds: so the driver always ends up at the printer that it began with.
#ifndef QRN_SIM_USB_USB_BUS_H_
#define QRN_SIM_USB_USB_BUS_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "sim/quirks/quirk_triggers.h"

namespace qrn::sim {

class UsbBus {
 public:
  explicit UsbBus(QuirkTriggers& triggers);

  // Lets the printer leave and come back as is due. True when it has just left.
  bool Look(std::uint32_t nowMs);
  // Whether the system can list its devices at present.
  bool Listable() { return triggers_->Use(Quirk::Kind::kListFails) == nullptr; }
  // The path at this place among the devices that are there; null past the end.
  const char* PathAt(std::size_t index) const;
  // A handle, or 0 and why.
  std::uint32_t Open(const char* path, std::uint32_t* error);
  void Close(std::uint32_t handle);
  // The handle is open and its device has stayed there.
  bool Usable(std::uint32_t handle) const;
  bool IsOpen() const { return handle_ != 0; }

 private:
  struct Device {
    std::string path;
    bool away = false;
    bool held = false;  // by another program
  };

  std::string Spelled(std::uint32_t instance) const;
  void ComeBack();

  QuirkTriggers* triggers_;
  std::vector<Device> devices_;
  std::size_t printer_ = 0;  // the one that the driver has opened first; until then, the first
  bool chosen_ = false;
  Quirk path_;
  std::uint32_t instance_ = 1;

  Quirk unplug_;  // why the printer is away
  std::uint32_t backMs_ = 0, freeMs_ = 0;
  std::uint32_t handle_ = 0;  // the open one
  std::uint32_t lastHandle_ = 0;
};

}  // namespace qrn::sim

#endif  // QRN_SIM_USB_USB_BUS_H_
