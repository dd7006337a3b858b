// A printer that accepts everything and prints nothing: it answers each connect with the bytes it
// is given, every other command with yes, and keeps count of what came. The frames are checked as
// strictly as by the virtual printer.
#ifndef QRN_FUZZ_ACCEPTING_PORT_H_
#define QRN_FUZZ_ACCEPTING_PORT_H_

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "platform/usb_port.h"
#include "sim/wire.h"

namespace qrn::fuzz {

class AcceptingPort : public UsbPort {
 public:
  explicit AcceptingPort(std::vector<std::uint8_t> parameters)
      : parameters_(std::move(parameters)) {}

  // First offence against the frames, the packets' constants or the order of swaths; "" if none.
  std::string Violation() const { return violation_.empty() ? wire_.Violation() : violation_; }
  std::uint32_t Swaths() const { return swaths_; }
  // Bits that are set in swath data; each is at least a part of one pixel's drop.
  std::uint64_t Dots() const { return dots_; }

  bool Listable(std::uint32_t nowMs) override;
  const char* PathAt(std::uint32_t index, std::uint32_t nowMs) override;
  std::uint32_t Open(const char* path, std::uint32_t nowMs, std::uint32_t* error) override;
  void Close(std::uint32_t handle, std::uint32_t nowMs) override;
  UsbStep Write(std::uint32_t handle, const std::uint8_t* data, std::uint32_t bytes,
                std::uint32_t nowMs) override;
  UsbStep Read(std::uint32_t handle, std::uint8_t* data, std::uint32_t bytes,
               std::uint32_t nowMs) override;

 private:
  void Take(const sim::WireMessage& message);
  void TakeData(const std::vector<std::uint8_t>& data);
  void Answer(std::uint32_t code);
  void Fail(const std::string& what);

  std::vector<std::uint8_t> parameters_;
  sim::WireReceiver wire_;
  sim::ReplyPacker packer_;
  std::deque<std::vector<std::uint8_t>> outgoing_;
  std::string violation_;
  std::uint32_t swaths_ = 0;
  std::uint32_t announcedBytes_ = 0;  // of swath data that are to come
  std::uint64_t dots_ = 0;
};

}  // namespace qrn::fuzz

#endif  // QRN_FUZZ_ACCEPTING_PORT_H_
