// The printer's memory for swath data that wait to be printed. It drains as time passes, at a fixed
// rate, so that on virtual time a job finds the same room again.
#ifndef QRN_SIM_FIRMWARE_SPOOL_H_
#define QRN_SIM_FIRMWARE_SPOOL_H_

#include <algorithm>
#include <cstdint>

namespace qrn::sim {

constexpr std::uint32_t kSpoolBytes = 128u << 20;
constexpr std::uint32_t kDrainBytesPerMs = 32u << 10;  // about 32 MB a second

class Spool {
 public:
  std::uint32_t Room(std::uint32_t nowMs) {
    Drain(nowMs);
    return fill_ < kSpoolBytes ? static_cast<std::uint32_t>(kSpoolBytes - fill_) : 0;
  }

  // Takes a swath when half of it fits: while one half arrives, room for the other is made. False,
  // and nothing is taken, when it does not.
  bool Take(std::size_t bytes, std::uint32_t nowMs) {
    if (Room(nowMs) < bytes / 2) return false;
    fill_ += bytes;
    return true;
  }

 private:
  void Drain(std::uint32_t nowMs) {
    const std::uint64_t drained = std::uint64_t{nowMs - drainedAtMs_} * kDrainBytesPerMs;
    fill_ -= std::min(fill_, drained);
    drainedAtMs_ = nowMs;
  }

  std::uint64_t fill_ = 0;
  std::uint32_t drainedAtMs_ = 0;
};

}  // namespace qrn::sim

#endif  // QRN_SIM_FIRMWARE_SPOOL_H_
