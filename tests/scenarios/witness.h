// Sits between the library and virtual time and records what happens: each line of the logs with
// the time at which it was written, each box, what goes over the wire.
#ifndef QRN_TESTS_SCENARIOS_WITNESS_H_
#define QRN_TESTS_SCENARIOS_WITNESS_H_

#include <cstdint>
#include <deque>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "sim/time/sim_platform.h"
#include "support/forwarding_platform.h"
#include "support/log_folder.h"

namespace scenarios {

// What was fed, in order, in 32 bits: FNV-1a.
class Digest {
 public:
  void Add(const void* bytes, std::size_t count);
  std::string Text() const;

 private:
  std::uint64_t value_ = 0xCBF29CE484222325u;
};

struct Event {
  enum Kind { kLogBegins, kLog, kSaid };  // a new log file, a line in it, a box or the host's words
  Kind kind;
  std::uint32_t ms;  // since the witness was put in place
  std::string text;  // UTF-8, one line
};

// What the driver wrote since it was asked last.
struct Traffic {
  std::map<std::uint32_t, std::uint32_t> messages;  // how often each code; 0 = the answer test
  std::uint32_t writes = 0;
  std::uint64_t bytes = 0;
  Digest digest;
};

// A base, so that it is there before the one that hands calls on to it.
struct VirtualTime {
  qrn::sim::SimPlatform time;
};

class Witness final : private VirtualTime, public qrn::ForwardingPlatform {
 public:
  Witness(qrn::UsbPort& port, const qrn::sim::SimOptions& options);

  // The host says something, after all that has happened up to now.
  void Say(const std::string& text);
  // What has happened, or was written, since it was taken last.
  std::vector<Event> TakeEvents();
  Traffic TakeTraffic() { return std::exchange(traffic_, {}); }
  const qrn::sim::SimPlatform& Time() const { return time; }

  bool BulkWrite(qrn::DeviceHandle device, const void* data, std::uint32_t bytes) override;
  bool BulkRead(qrn::DeviceHandle device, void* data, std::uint32_t bytes) override;
  void SleepMs(std::uint32_t ms) override;
  qrn::ThreadHandle ThreadStart(void (*procedure)(void*), void* argument) override;
  void ThreadTerminate(qrn::ThreadHandle thread) override;
  void ThreadRelease(qrn::ThreadHandle thread) override;
  void ShowBox(const char* text, const char* caption) override;

 private:
  struct Started {
    Witness* self;
    void (*procedure)(void*);
    void* argument;
  };

  // Before everything that lets time pass: what the log has gained since the last call was written
  // just now, because one thread runs at a time.
  void Look();
  void ReadOn();
  std::uint32_t NowMs() { return time.TickMs() - startMs_; }

  std::uint32_t startMs_;
  std::filesystem::path file_;  // the log being read
  std::size_t read_ = 0;
  std::string line_;  // the last one, not ended yet
  std::vector<Event> events_;
  Traffic traffic_;
  std::deque<Started> started_;
};

}  // namespace scenarios

#endif  // QRN_TESTS_SCENARIOS_WITNESS_H_
