// What the library meets while a planned job runs: virtual time, a virtual printer behind a line
// that is slow and that somebody unplugs when nothing moves for long, and the user's message boxes.
// It also takes down what the host program cannot see: the swaths as they left.
#ifndef QRN_TESTS_JOBS_SIM_WORLD_H_
#define QRN_TESTS_JOBS_SIM_WORLD_H_

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "jobs/sim_plan.h"
#include "sim/virtual_printer.h"

// 64 bits of what was fed, in order.
class Digest {
 public:
  void Add(const void* bytes, std::size_t count);
  void Add(std::uint64_t value) { Add(&value, sizeof value); }
  std::uint64_t Value() const { return value_; }

 private:
  std::uint64_t value_ = 0xCBF29CE484222325u;
};

struct SentSwath {
  std::array<std::uint8_t, 36> header;
  std::uint32_t dataBytes;
  std::uint64_t dataDigest;
  bool operator==(const SentSwath&) const = default;
};

class SimWorld {
 public:
  // Puts itself under the library until it is destroyed.
  SimWorld(const SimPlan& plan, const qrn::sim::QuirkScript& quirks, std::uint64_t seed);
  ~SimWorld();

  qrn::sim::VirtualPrinter& Printer();
  std::uint64_t ElapsedMs() const;  // virtual
  void RestMs(std::uint32_t ms);    // the host sleeps
  std::uint64_t LatencyMs() const;  // by which the line has held its transfers up, together

  // Swath n, from 1, at place n-1, as it went over the line completely for the first time.
  const std::vector<SentSwath>& Swaths() const;
  // What no job may do: a swath that came again changed, or out of its order; "" = nothing.
  const std::string& SwathFault() const;
  const std::vector<std::string>& Boxes() const;  // texts in the code page
  bool PatienceLost() const;                      // somebody has pulled the plug
  std::uint32_t LiveThreads() const;
  std::uint32_t OpenDevices() const;
  std::uint64_t LineDigest() const;  // of all that was written and when

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

#endif  // QRN_TESTS_JOBS_SIM_WORLD_H_
