#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <thread>

#include "jobs/holdings.h"
#include "sim/time/real_time.h"

namespace {

constexpr char kThreads[] = "/proc/self/task", kFiles[] = "/proc/self/fd";

std::size_t Entries(const char* directory) {
  const std::filesystem::directory_iterator entries(directory);
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

}  // namespace

// The thread sanitizer starts a thread of its own with the first of the process: here, not in a
// job.
Holdings::Holdings() : handles_(Entries(kFiles)) {
  std::atomic<bool> counted = false;
  std::thread first([&counted] { counted.wait(false); });
  threads_ = Entries(kThreads) - 1;
  counted = true;
  counted.notify_one();
  first.join();
}

// A thread that has been joined may be listed for a moment more.
void Holdings::ExpectTheSame() const {
  for (int poll = 0; poll < 1000 && Entries(kThreads) != threads_; ++poll)
    qrn::sim::RealTimePlatform().SleepMs(10);
  EXPECT_EQ(threads_, Entries(kThreads));
  EXPECT_EQ(handles_, Entries(kFiles));
}
