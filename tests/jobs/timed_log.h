// The simulated platform, with an eye on the job's log: each line is kept with the virtual time at
// which it was written.
#ifndef QRN_TESTS_JOBS_TIMED_LOG_H_
#define QRN_TESTS_JOBS_TIMED_LOG_H_

#include <deque>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "sim/sim_platform.h"
#include "support/forwarding_platform.h"

struct LogLine {
  std::uint32_t ms;  // since the platform was put in place
  std::string text;  // UTF-8, without its ends
};

// A base, so that it is there before the one that hands calls on to it.
struct SimPlatformHolder {
  qrn::sim::SimPlatform inner;
};

class TimedPlatform final : private SimPlatformHolder, public qrn::ForwardingPlatform {
 public:
  TimedPlatform(qrn::UsbPort& port, qrn::sim::SimOptions options)
      : SimPlatformHolder{{port, std::move(options)}},
        ForwardingPlatform(inner),
        startMs_(inner.TickMs()) {}

  // The lines of all logs so far. Blank ones are left out.
  const std::vector<LogLine>& Lines() {
    Note();
    return lines_;
  }
  const qrn::sim::SimPlatform& Inner() const { return inner; }

  // In front of everything that lets time pass.
  bool BulkWrite(qrn::DeviceHandle device, const void* data, std::uint32_t bytes) override {
    Note();
    return inner.BulkWrite(device, data, bytes);
  }
  bool BulkRead(qrn::DeviceHandle device, void* data, std::uint32_t bytes) override {
    Note();
    return inner.BulkRead(device, data, bytes);
  }
  void SleepMs(std::uint32_t ms) override {
    Note();
    inner.SleepMs(ms);
  }
  qrn::ThreadHandle ThreadStart(void (*procedure)(void*), void* argument) override;
  void ThreadTerminate(qrn::ThreadHandle thread) override {
    Note();
    inner.ThreadTerminate(thread);
  }
  void ThreadRelease(qrn::ThreadHandle thread) override {
    Note();
    inner.ThreadRelease(thread);
  }
  void ShowBox(const char* text, const char* caption) override {
    Note();
    inner.ShowBox(text, caption);
  }

 private:
  struct Started {
    TimedPlatform* self;
    void (*procedure)(void*);
    void* argument;
  };

  // Takes in what stands in the log now. What has come since the last call was written at this very
  // moment, for one thread runs at a time.
  void Note();
  void ReadOn();

  std::uint32_t startMs_;
  std::filesystem::path file_;  // the log being read
  std::size_t read_ = 0;
  std::vector<LogLine> lines_;
  std::deque<Started> started_;
};

#endif  // QRN_TESTS_JOBS_TIMED_LOG_H_
