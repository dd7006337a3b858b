// Plugs a virtual printer into the library of this process, on real time (the system's threads and
// clock) or on virtual time.
#ifndef QRN_SIM_SESSION_H_
#define QRN_SIM_SESSION_H_

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "sim/virtual_printer.h"

namespace qrn::sim {

struct SessionOptions {
  bool virtualTime = false;
  std::uint64_t seed = 1;  // scheduling on virtual time
  // Of virtual time; the call that passes it throws TimeLimitPassed. Nothing in a job waits for
  // days.
  std::uint64_t limitMs = 7ull * 24 * 3600 * 1000;
  // Called for every message box of the library, on the thread that raised it; text in UTF-8.
  std::function<void(const std::string& text)> onBox;
};

// From construction to destruction the library prints on `printer`.
class Session {
 public:
  Session(VirtualPrinter& printer, SessionOptions options);
  ~Session();
  std::uint32_t TickMs() const;  // virtual or real milliseconds

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace qrn::sim

#endif  // QRN_SIM_SESSION_H_
