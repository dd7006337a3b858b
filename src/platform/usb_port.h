// A set of USB devices that can be plugged into any platform in place of real ones, seen as a host
// controller sees them: paths, open, bulk transfers. A port never blocks
// and never reads a clock: the platform passes the time and does the waiting. Calls come from one
// thread at a time, but not always from the same one.
#ifndef QRN_PLATFORM_USB_PORT_H_
#define QRN_PLATFORM_USB_PORT_H_

#include <cstdint>

namespace qrn {

// The outcome of one step of a transfer.
struct UsbStep {
  enum State {
    kDone,    // the transfer is complete
    kFailed,  // the transfer has failed; `value` is the system error code
    // Nothing yet: call again with the same arguments when the clock has reached `value`, a tick in
    // ms.
    kWait,
  };
  State state;
  std::uint32_t value;
};

class UsbPort {
 public:
  virtual ~UsbPort() = default;

  // False: the system cannot list its devices at present.
  virtual bool Listable(std::uint32_t nowMs) = 0;
  // Device path at this place of the list; nullptr past its end. "" is an interface whose details
  // cannot be read. Valid until the next call of the port.
  virtual const char* PathAt(std::uint32_t index, std::uint32_t nowMs) = 0;
  // A handle above 0, or 0 when the path cannot be opened (absent, or held by another program);
  // *error then says why.
  virtual std::uint32_t Open(const char* path, std::uint32_t nowMs, std::uint32_t* error) = 0;
  virtual void Close(std::uint32_t handle, std::uint32_t nowMs) = 0;
  virtual UsbStep Write(std::uint32_t handle, const std::uint8_t* data, std::uint32_t bytes,
                        std::uint32_t nowMs) = 0;
  virtual UsbStep Read(std::uint32_t handle, std::uint8_t* data, std::uint32_t bytes,
                       std::uint32_t nowMs) = 0;
};

}  // namespace qrn

#endif  // QRN_PLATFORM_USB_PORT_H_
