// A port with one device whose transfers complete, fail or wait as told.
#ifndef QRN_TESTS_PLATFORM_FAKE_PORT_H_
#define QRN_TESTS_PLATFORM_FAKE_PORT_H_

#include <atomic>

#include "platform/usb_port.h"

class FakePort : public qrn::UsbPort {
 public:
  std::uint32_t dueMs = 0;     // reads complete from this tick on
  std::uint32_t failWith = 0;  // not 0: writes fail with it
  std::atomic<std::uint32_t> reads = 0;

  bool Listable(std::uint32_t) override { return true; }
  const char* PathAt(std::uint32_t index, std::uint32_t) override {
    return index == 0 ? "" : index == 1 ? "one" : nullptr;
  }
  std::uint32_t Open(const char*, std::uint32_t, std::uint32_t*) override { return 1; }
  void Close(std::uint32_t, std::uint32_t) override {}
  qrn::UsbStep Write(std::uint32_t, const std::uint8_t*, std::uint32_t, std::uint32_t) override {
    return failWith != 0 ? qrn::UsbStep{qrn::UsbStep::kFailed, failWith}
                         : qrn::UsbStep{qrn::UsbStep::kDone, 0};
  }
  qrn::UsbStep Read(std::uint32_t, std::uint8_t*, std::uint32_t, std::uint32_t nowMs) override {
    ++reads;
    const bool due = static_cast<std::int32_t>(nowMs - dueMs) >= 0;
    return due ? qrn::UsbStep{qrn::UsbStep::kDone, 0}
               : qrn::UsbStep{qrn::UsbStep::kWait, nowMs + 10};
  }
};

#endif  // QRN_TESTS_PLATFORM_FAKE_PORT_H_
