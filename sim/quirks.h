// What a virtual printer is made to do wrong, and when.
#ifndef QRN_SIM_QUIRKS_H_
#define QRN_SIM_QUIRKS_H_

#include <cstdint>
#include <string>
#include <vector>

namespace qrn::sim {

struct Quirk {
  enum class Kind {
    kConnectRefused,  // the first `count` connects are refused with status `value`
    kBufferFull,      // from swath `at` on, `count` buffer queries answer no room
    kPause,           // at swath `at` the job is paused for `durationMs`, then resumed
    kCancel,          // at swath `at` the operator cancels
    kSpoolOverflow,   // swath `at` is refused `count` times with status 7
    kUnplug,          // at message `at` the device is gone for `durationMs`; 0 = for good
  };
  Kind kind = Kind::kConnectRefused;
  std::uint32_t at = 1;  // 1 = the first
  std::uint32_t count = 1;
  std::uint32_t value = 0;
  std::uint32_t durationMs = 0;
};

using QuirkScript = std::vector<Quirk>;

// A quirk costs a job at most this much: the driver comes back within three seconds, so that 1000
// times make an hour. A script of a hundred quirks stays below the seven days after which virtual
// time gives a job up.
constexpr std::uint32_t kQuirkCountMax = 1000;
constexpr std::uint32_t kQuirkMsMax = 3'600'000;

// One quirk a string, such as "pause:at=3,ms=5000"; docs/simulator.md lists the kinds and their
// fields. False, with a one-line reason, when it is not one.
bool ParseQuirk(const std::string& text, Quirk* quirk, std::string* error);

}  // namespace qrn::sim

#endif  // QRN_SIM_QUIRKS_H_
