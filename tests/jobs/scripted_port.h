// Stands between the library and the virtual printer and spoils single transfers by script, so that
// a test says exactly which one goes wrong and how. The printer behind it stays strict.
#ifndef QRN_TESTS_JOBS_SCRIPTED_PORT_H_
#define QRN_TESTS_JOBS_SCRIPTED_PORT_H_

#include <array>
#include <cstdint>
#include <deque>
#include <vector>

#include "link/replies.h"
#include "platform/usb_port.h"
#include "sim/virtual_printer.h"

constexpr std::uint8_t kAnswerTest = 0xFF;  // code 10 and nothing else

// What happens to a message, or to its reply: at the `nth` time (from 1, repetitions included) that
// a message with this code is sent, and `times` - 1 times more.
struct Spoiled {
  enum What {
    kWriteFails,  // the packet cannot be written
    kDataFails,   // write `value` (from 1) of the swath data that follow cannot be written
    kReadFails,   // the reply is lost, the read fails
    kLate,        // the reply comes `value` ms after the message
    kSilent,      // no reply ever comes
    kSays,        // `packets` come in place of the reply
    kSaysFirst,   // `packets` come in front of the reply
    kLeaves,      // the reply is lost, and the device is away for `value` ms; 0 = for good
  };
  std::uint8_t code;
  std::uint32_t nth;
  What what;
  std::uint32_t value = 0;
  std::vector<qrn::Bytes> packets = {};
  std::uint32_t times = 1;
};

class ScriptedPort : public qrn::UsbPort {
 public:
  ScriptedPort(qrn::sim::VirtualPrinter& inner, std::vector<Spoiled> script)
      : inner_(inner), script_(std::move(script)) {}

  // How the bus looks: as it is, without the list, without the printer, or with the printer held by
  // another program.
  enum class Bus { kPlain, kUnlistable, kEmpty, kHeld } bus = Bus::kPlain;

  bool Listable(std::uint32_t nowMs) override;
  const char* PathAt(std::uint32_t index, std::uint32_t nowMs) override;
  std::uint32_t Open(const char* path, std::uint32_t nowMs, std::uint32_t* error) override;
  void Close(std::uint32_t handle, std::uint32_t nowMs) override { inner_.Close(handle, nowMs); }
  qrn::UsbStep Write(std::uint32_t handle, const std::uint8_t* data, std::uint32_t bytes,
                     std::uint32_t nowMs) override;
  qrn::UsbStep Read(std::uint32_t handle, std::uint8_t* data, std::uint32_t bytes,
                    std::uint32_t nowMs) override;

 private:
  const Spoiled* Due(Spoiled::What what, std::uint32_t value = 0) const;
  bool Away(std::uint32_t nowMs);
  qrn::UsbStep WriteStep(std::uint32_t handle, const std::uint8_t* data, std::uint32_t bytes,
                         std::uint32_t nowMs);
  qrn::UsbStep ReadStep(std::uint32_t handle, std::uint8_t* data, std::uint32_t bytes,
                        std::uint32_t nowMs);
  // Reads the printer's own reply to its end and drops it; kDone when that has come.
  qrn::UsbStep DropReply(std::uint32_t handle, std::uint32_t nowMs);
  qrn::UsbStep Spoil(const Spoiled& spoiled, std::uint32_t nowMs);

  qrn::sim::VirtualPrinter& inner_;
  std::vector<Spoiled> script_;
  std::array<std::uint32_t, 256> sent_{};  // messages by code
  std::uint8_t code_ = 0;                  // of the last message
  std::uint32_t dataWrites_ = 0;           // of the last message
  std::uint32_t sentMs_ = 0;               // when its packet was written
  bool spoiled_ = false;                   // its reply has had its turn
  std::deque<qrn::Bytes> packets_;         // to be read next
  bool away_ = false, awayForGood_ = false;
  std::uint32_t backMs_ = 0;
};

#endif  // QRN_TESTS_JOBS_SCRIPTED_PORT_H_
