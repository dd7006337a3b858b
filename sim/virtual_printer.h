// The virtual printer as something that can be plugged in: a USB device whose three layers take the
// transfers apart (wire), behave like the machine (firmware) and lay the dots (paper). The objects
// that it is made of are for one thread at a time; a lock here sees to it.
#ifndef QRN_SIM_VIRTUAL_PRINTER_H_
#define QRN_SIM_VIRTUAL_PRINTER_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/usb_port.h"
#include "sim/machine/machine.h"
#include "sim/paper/paper.h"
#include "sim/quirks/quirks.h"

namespace qrn::sim {

struct PrinterStats {
  std::uint64_t bytesReceived = 0;  // everything on the bulk-out pipe
  std::uint64_t bytesSent = 0;      // everything on the bulk-in pipe
  std::uint32_t swaths = 0;         // accepted, feed-only ones included
  std::uint32_t feedOnlySwaths = 0;
  std::uint64_t inkLaid = 0;  // sum of drop levels
  std::uint32_t jobsCreated = 0, jobsEnded = 0;
  bool open = false;    // now: the host has opened the device, and it is there
  bool paused = false;  // now: the job
};

// Calls may come from any thread.
class VirtualPrinter : public UsbPort {
 public:
  explicit VirtualPrinter(const Machine& machine, const QuirkScript& quirks = {});
  ~VirtualPrinter() override;

  PrinterStats Stats() const;
  // First violation of the framing or of the command protocol that the host has committed, with its
  // place; "" if none.
  std::string Violation() const;
  // What happened to the printer since its last connect and may have ended the job early; "" if
  // nothing.
  std::string Trouble() const;
  // The quirks that have not acted, as they were given: perhaps their trigger never came.
  std::vector<std::string> UnusedQuirks() const;
  // The paper of the job so far, or of the last one. Valid until the next job create; only between
  // jobs.
  const Paper& CurrentPaper() const;
  // Resolution of the last job create; 0 before the first.
  std::uint32_t ResolutionX() const;

  // UsbPort
  bool Listable(std::uint32_t nowMs) override;
  const char* PathAt(std::uint32_t index, std::uint32_t nowMs) override;
  std::uint32_t Open(const char* path, std::uint32_t nowMs, std::uint32_t* error) override;
  void Close(std::uint32_t handle, std::uint32_t nowMs) override;
  UsbStep Write(std::uint32_t handle, const std::uint8_t* data, std::uint32_t bytes,
                std::uint32_t nowMs) override;
  UsbStep Read(std::uint32_t handle, std::uint8_t* data, std::uint32_t bytes,
               std::uint32_t nowMs) override;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace qrn::sim

#endif  // QRN_SIM_VIRTUAL_PRINTER_H_
