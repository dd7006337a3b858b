#include "sim/time/sim_platform.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <thread>

#include "platform/usb_transfer.h"

namespace qrn::sim {
namespace {

constexpr UsbList kTheList = 1;
constexpr std::uint32_t kStepsInARowMax = 1000;  // more than a swath of the widest page has

// Ends a thread of the library by force: it leaves through its frames, none of which holds
// anything.
struct Killed {};

}  // namespace

struct SimPlatform::Thread {
  std::thread thread;
  std::condition_variable baton;
  std::uint64_t wakeMs = 0;
  std::uint32_t lastError = 0;
  std::uint32_t stepsInARow = 0;  // of transfers, since it last waited
  bool ended = false;
  bool released = false;
  bool killed = false;
};

SimPlatform::SimPlatform(UsbPort& port, SimOptions options)
    : port_(port), options_(std::move(options)), random_(options_.seed) {
  threads_.push_back(std::make_unique<Thread>());
  running_ = threads_[0].get();
}

SimPlatform::~SimPlatform() {
  for (std::size_t i = 1; i < threads_.size(); ++i) {
    if (!threads_[i]->ended) ThreadTerminate(static_cast<ThreadHandle>(i));
    if (threads_[i]->thread.joinable()) threads_[i]->thread.join();
  }
}

std::uint32_t SimPlatform::LiveThreads() const {
  return static_cast<std::uint32_t>(std::count_if(
      threads_.begin() + 1, threads_.end(), [](const auto& thread) { return !thread->released; }));
}

// splitmix64: the same everywhere, unlike the standard library's distributions.
std::uint64_t SimPlatform::Random() {
  random_ += 0x9E3779B97F4A7C15u;
  std::uint64_t z = random_;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
  return z ^ (z >> 31);
}

SimPlatform::Thread& SimPlatform::Current() { return *running_; }

// The next thread to run, among those whose time has come; if there is none, time moves on to the
// earliest.
SimPlatform::Thread& SimPlatform::PickNext() {
  std::uint64_t earliest = UINT64_MAX;
  for (const auto& thread : threads_) {
    if (!thread->ended) earliest = std::min(earliest, thread->wakeMs);
  }
  nowMs_ = std::max(nowMs_, earliest);
  if (IsOverTime()) return *threads_[0];  // which throws
  std::vector<Thread*> ready;
  for (const auto& thread : threads_) {
    if (!thread->ended && thread->wakeMs <= nowMs_) ready.push_back(thread.get());
  }
  return *ready[static_cast<std::size_t>(Random() % ready.size())];
}

// Lets the next thread run and returns when it is this one's turn again.
void SimPlatform::PassBaton(std::unique_lock<std::mutex>& lock, Thread& from) {
  running_ = &PickNext();
  running_->baton.notify_one();
  if (from.ended) return;
  from.baton.wait(lock, [this, &from] { return running_ == &from; });
  if (from.killed) throw Killed{};
  if (IsOverTime()) {
    throw TimeLimitPassed("the job is not over after " + std::to_string(options_.limitMs / 1000) +
                          " s of virtual time: seed " + std::to_string(options_.seed));
  }
}

void SimPlatform::WaitUntil(std::uint64_t wakeMs) {
  std::unique_lock lock(mutex_);
  Thread& self = Current();
  self.wakeMs = wakeMs;
  self.stepsInARow = 0;
  PassBaton(lock, self);
}

// A thread in a transfer of its own. Others run only while it waits, so one whose device is always
// ready is made to wait now and then.
struct SimPlatform::Waiting {
  SimPlatform& platform;

  void LeaveIfAsked() const {
    if (++platform.Current().stepsInARow > kStepsInARowMax) WaitMs(1);
  }
  std::uint32_t TickMs() const { return platform.TickMs(); }
  void WaitMs(std::uint32_t ms) const { platform.SleepMs(ms); }
  void SetError(std::uint32_t code) const { platform.Current().lastError = code; }
};

UsbList SimPlatform::UsbListOpen() { return port_.Listable(TickMs()) ? kTheList : 0; }

UsbPathStatus SimPlatform::UsbListPath(UsbList, std::uint32_t index, const char** path) {
  *path = port_.PathAt(index, TickMs());
  if (*path == nullptr) return UsbPathStatus::kEnd;
  return **path != '\0' ? UsbPathStatus::kPath : UsbPathStatus::kUnreadable;
}

void SimPlatform::UsbListClose(UsbList) {}

DeviceHandle SimPlatform::DeviceOpen(const char* path) {
  const DeviceHandle device = port_.Open(path, TickMs(), &Current().lastError);
  if (device != 0) ++openDevices_;
  return device;
}

void SimPlatform::DeviceClose(DeviceHandle device) {
  port_.Close(static_cast<std::uint32_t>(device), TickMs());
  --openDevices_;
}

bool SimPlatform::BulkWrite(DeviceHandle device, const void* data, std::uint32_t bytes) {
  return CompleteTransfer(Waiting{*this}, [=, this](std::uint32_t now) {
    return port_.Write(static_cast<std::uint32_t>(device), static_cast<const std::uint8_t*>(data),
                       bytes, now);
  });
}

bool SimPlatform::BulkRead(DeviceHandle device, void* data, std::uint32_t bytes) {
  return CompleteTransfer(Waiting{*this}, [=, this](std::uint32_t now) {
    return port_.Read(static_cast<std::uint32_t>(device), static_cast<std::uint8_t*>(data), bytes,
                      now);
  });
}

std::uint32_t SimPlatform::LastError() { return Current().lastError; }

std::uint32_t SimPlatform::TickMs() {
  return static_cast<std::uint32_t>(options_.startTickMs + nowMs_);
}

void SimPlatform::SleepMs(std::uint32_t ms) { WaitUntil(nowMs_ + ms); }

LocalTime SimPlatform::LocalTimeNow() {
  using namespace std::chrono;
  const LocalTime& start = options_.startTime;
  const sys_seconds begin = sys_days{year{start.year} / month{start.month} / day{start.day}} +
                            hours{start.hour} + minutes{start.minute} + seconds{start.second};
  const sys_seconds now = begin + duration_cast<seconds>(milliseconds{nowMs_});
  const sys_days today = floor<days>(now);
  const year_month_day date{today};
  const hh_mm_ss time{now - today};
  return {static_cast<std::uint16_t>(static_cast<int>(date.year())),
          static_cast<std::uint16_t>(static_cast<unsigned>(date.month())),
          static_cast<std::uint16_t>(static_cast<unsigned>(date.day())),
          static_cast<std::uint16_t>(time.hours().count()),
          static_cast<std::uint16_t>(time.minutes().count()),
          static_cast<std::uint16_t>(time.seconds().count())};
}

ThreadHandle SimPlatform::ThreadStart(void (*procedure)(void*), void* argument) {
  if (options_.failThreadStart) return 0;
  std::unique_lock lock(mutex_);
  threads_.push_back(std::make_unique<Thread>());
  Thread& started = *threads_.back();
  started.wakeMs = nowMs_;
  started.thread = std::thread([this, &started, procedure, argument] {
    {
      std::unique_lock threadLock(mutex_);
      started.baton.wait(threadLock, [this, &started] { return running_ == &started; });
    }
    try {
      if (!started.killed) procedure(argument);
    } catch (const Killed&) {
    }
    std::unique_lock threadLock(mutex_);
    started.ended = true;
    PassBaton(threadLock, started);
  });
  return static_cast<ThreadHandle>(threads_.size() - 1);
}

void SimPlatform::ThreadRaisePriority(ThreadHandle) {}

void SimPlatform::ThreadTerminate(ThreadHandle thread) {
  std::unique_lock lock(mutex_);
  Thread& target = *threads_[thread];
  if (target.ended) return;
  // It runs once more, alone, only to leave; then this thread goes on at the same time.
  Thread& self = Current();
  target.killed = true;
  running_ = &target;
  target.baton.notify_one();
  std::vector<std::uint64_t> wakes;
  for (const auto& other : threads_) {
    wakes.push_back(other->wakeMs);
    if (other.get() != &self) other->wakeMs = UINT64_MAX;
  }
  self.wakeMs = nowMs_;
  self.baton.wait(lock, [this, &self] { return running_ == &self; });
  for (std::size_t i = 0; i < wakes.size(); ++i) threads_[i]->wakeMs = wakes[i];
}

void SimPlatform::ThreadRelease(ThreadHandle thread) {
  Thread& target = *threads_[thread];
  while (!target.ended) SleepMs(1);
  if (target.thread.joinable()) target.thread.join();
  target.released = true;
}

void SimPlatform::ShowBox(const char* text, const char*) {
  if (options_.onBox) options_.onBox(text);
  SleepMs(options_.boxOpenMs);
}

// Files are the system's: what is in them takes no part in the order of events.
bool SimPlatform::PathExists(const char* path) { return SystemPlatform().PathExists(path); }

bool SimPlatform::FileCreate(const char* path) { return SystemPlatform().FileCreate(path); }

FileWrite SimPlatform::FileWriteAt(const char* path, const FilePart& part,
                                   std::uint32_t gapMaxBytes, std::uint32_t* fileBytes) {
  return SystemPlatform().FileWriteAt(path, part, gapMaxBytes, fileBytes);
}

}  // namespace qrn::sim
