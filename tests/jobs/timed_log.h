// The simulated platform, with an eye on the job's log: each line is kept with the virtual time at
// which it was written.
#ifndef QRN_TESTS_JOBS_TIMED_LOG_H_
#define QRN_TESTS_JOBS_TIMED_LOG_H_

#include <deque>
#include <string>
#include <utility>
#include <vector>

#include "sim/sim_platform.h"

struct LogLine {
  std::uint32_t ms;  // since the platform was put in place
  std::string text;  // UTF-8, without its ends
};

class TimedPlatform final : public qrn::Platform {
 public:
  TimedPlatform(qrn::UsbPort& port, qrn::sim::SimOptions options)
      : inner_(port, std::move(options)), startMs_(inner_.TickMs()) {}

  // The lines of all logs so far. Blank ones are left out.
  const std::vector<LogLine>& Lines() {
    Note();
    return lines_;
  }
  const qrn::sim::SimPlatform& Inner() const { return inner_; }

  qrn::UsbList UsbListOpen() override { return inner_.UsbListOpen(); }
  qrn::UsbPathStatus UsbListPath(qrn::UsbList list, std::uint32_t index,
                                 const char** path) override {
    return inner_.UsbListPath(list, index, path);
  }
  void UsbListClose(qrn::UsbList list) override { inner_.UsbListClose(list); }
  qrn::DeviceHandle DeviceOpen(const char* path) override { return inner_.DeviceOpen(path); }
  void DeviceClose(qrn::DeviceHandle device) override { inner_.DeviceClose(device); }
  bool BulkWrite(qrn::DeviceHandle device, const void* data, std::uint32_t bytes) override {
    Note();
    return inner_.BulkWrite(device, data, bytes);
  }
  bool BulkRead(qrn::DeviceHandle device, void* data, std::uint32_t bytes) override {
    Note();
    return inner_.BulkRead(device, data, bytes);
  }
  std::uint32_t LastError() override { return inner_.LastError(); }
  std::uint32_t TickMs() override { return inner_.TickMs(); }
  void SleepMs(std::uint32_t ms) override {
    Note();
    inner_.SleepMs(ms);
  }
  qrn::LocalTime LocalTimeNow() override { return inner_.LocalTimeNow(); }
  qrn::ThreadHandle ThreadStart(void (*procedure)(void*), void* argument) override;
  void ThreadRaisePriority(qrn::ThreadHandle thread) override {
    inner_.ThreadRaisePriority(thread);
  }
  void ThreadTerminate(qrn::ThreadHandle thread) override {
    Note();
    inner_.ThreadTerminate(thread);
  }
  void ThreadRelease(qrn::ThreadHandle thread) override {
    Note();
    inner_.ThreadRelease(thread);
  }
  std::uint32_t SystemLocaleId() override { return inner_.SystemLocaleId(); }
  void ShowBox(const char* text, const char* caption) override {
    Note();
    inner_.ShowBox(text, caption);
  }
  bool PathExists(const char* path) override { return inner_.PathExists(path); }

 private:
  struct Started {
    TimedPlatform* self;
    void (*procedure)(void*);
    void* argument;
  };

  // Takes in what stands in the log now. Called in front of everything that lets time pass: what
  // has come since the last call was written at this very moment, for one thread runs at a time.
  void Note();
  void ReadOn();

  qrn::sim::SimPlatform inner_;
  std::uint32_t startMs_;
  std::string file_;  // the log being read
  std::size_t read_ = 0;
  std::vector<LogLine> lines_;
  std::deque<Started> started_;
};

#endif  // QRN_TESTS_JOBS_TIMED_LOG_H_
