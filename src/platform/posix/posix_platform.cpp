#include "platform/posix/posix_platform.h"

#include <fcntl.h>
#include <iconv.h>
#include <pthread.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "platform/usb_transfer.h"

namespace qrn {
namespace {

constexpr UsbList kTheList = 1;
constexpr std::uint32_t kLocaleEnglish = 0x0409;
constexpr std::uint32_t kLocaleChinese = 0x0804;
constexpr std::uint32_t kErrorNoDeviceCode = 1167;  // the Windows error for it
constexpr mode_t kNewFileMode = 0666;               // less what the user's mask takes
constexpr std::uint32_t kTransferNapMs = 5;  // a waiting transfer looks again at least this often

thread_local std::uint32_t t_lastError = 0;

constexpr std::size_t kBoxTextBytes = 1024;  // of the longest text, 255 bytes, in any encoding

struct StartedThread {
  pthread_t id;
  bool joined;  // the thread that starts and ends it
  void (*procedure)(void*);
  void* argument;
};

// A thread can be ended by force only while one of these lives: where it waits, never in the middle
// of a step.
class EndableByForce {
 public:
  EndableByForce() { pthread_setcancelstate(PTHREAD_CANCEL_ENABLE, &before_); }
  ~EndableByForce() { pthread_setcancelstate(before_, nullptr); }

 private:
  int before_ = 0;
};

void* RunThread(void* started) {
  pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
  auto* thread = static_cast<StartedThread*>(started);
  thread->procedure(thread->argument);
  return nullptr;
}

void Nap(std::uint32_t ms) {
  const EndableByForce here;
  timespec left{static_cast<time_t>(ms / 1000), static_cast<long>(ms % 1000) * 1'000'000};
  while (nanosleep(&left, &left) != 0 && errno == EINTR) {
  }
}

// A thread in a transfer of its own.
struct Waiting {
  static void LeaveIfAsked() {
    const EndableByForce here;
    pthread_testcancel();
  }
  static std::uint32_t TickMs() { return ThePosixPlatform().TickMs(); }
  static void WaitMs(std::uint32_t ms) { Nap(std::min(ms, kTransferNapMs)); }
  static void SetError(std::uint32_t code) { t_lastError = code; }
};

// Terminals show UTF-8, the library's texts are in code page 936. What cannot be converted is cut.
void ToUtf8(const char* text, char (&utf8)[kBoxTextBytes]) {
  char* in = const_cast<char*>(text);  // iconv's signature; it does not write there
  char* out = utf8;
  std::size_t inLeft = std::strlen(text), outLeft = sizeof utf8 - 1;
  const iconv_t conversion = iconv_open("UTF-8", "GBK");
  if (conversion != reinterpret_cast<iconv_t>(-1)) {
    (void)iconv(conversion, &in, &inLeft, &out, &outLeft);
    iconv_close(conversion);
  }
  *out = '\0';
}

bool NoDevice() {
  t_lastError = kErrorNoDeviceCode;
  return false;
}

}  // namespace

PosixPlatform& ThePosixPlatform() {
  static PosixPlatform platform;
  return platform;
}

Platform& SystemPlatform() { return ThePosixPlatform(); }

void PosixPlatform::HandleBoxes(BoxHandler handler, void* context) {
  boxHandler_ = handler;
  boxContext_ = context;
}

UsbList PosixPlatform::UsbListOpen() {
  return port_ == nullptr || port_->Listable(TickMs()) ? kTheList : 0;
}

UsbPathStatus PosixPlatform::UsbListPath(UsbList, std::uint32_t index, const char** path) {
  *path = port_ != nullptr ? port_->PathAt(index, TickMs()) : nullptr;
  if (*path == nullptr) return UsbPathStatus::kEnd;
  return **path != '\0' ? UsbPathStatus::kPath : UsbPathStatus::kUnreadable;
}

void PosixPlatform::UsbListClose(UsbList) {}

DeviceHandle PosixPlatform::DeviceOpen(const char* path) {
  return port_ != nullptr ? port_->Open(path, TickMs(), &t_lastError) : 0;
}

void PosixPlatform::DeviceClose(DeviceHandle device) {
  if (port_ != nullptr) port_->Close(static_cast<std::uint32_t>(device), TickMs());
}

bool PosixPlatform::BulkWrite(DeviceHandle device, const void* data, std::uint32_t bytes) {
  if (port_ == nullptr) return NoDevice();
  return CompleteTransfer(Waiting{}, [=, this](std::uint32_t now) {
    return port_->Write(static_cast<std::uint32_t>(device), static_cast<const std::uint8_t*>(data),
                        bytes, now);
  });
}

bool PosixPlatform::BulkRead(DeviceHandle device, void* data, std::uint32_t bytes) {
  if (port_ == nullptr) return NoDevice();
  return CompleteTransfer(Waiting{}, [=, this](std::uint32_t now) {
    return port_->Read(static_cast<std::uint32_t>(device), static_cast<std::uint8_t*>(data), bytes,
                       now);
  });
}

std::uint32_t PosixPlatform::LastError() { return t_lastError; }

std::uint32_t PosixPlatform::TickMs() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::uint32_t>(static_cast<std::uint64_t>(now.tv_sec) * 1000u +
                                    static_cast<std::uint64_t>(now.tv_nsec) / 1'000'000u);
}

void PosixPlatform::SleepMs(std::uint32_t ms) { Nap(ms); }

LocalTime PosixPlatform::LocalTimeNow() {
  const time_t now = time(nullptr);
  tm parts{};
  localtime_r(&now, &parts);
  const auto u16 = [](int value) { return static_cast<std::uint16_t>(value); };
  return {u16(parts.tm_year + 1900), u16(parts.tm_mon + 1), u16(parts.tm_mday),
          u16(parts.tm_hour),        u16(parts.tm_min),     u16(parts.tm_sec)};
}

ThreadHandle PosixPlatform::ThreadStart(void (*procedure)(void*), void* argument) {
  auto* thread = new (std::nothrow) StartedThread{{}, false, procedure, argument};
  if (thread == nullptr) return 0;
  if (pthread_create(&thread->id, nullptr, RunThread, thread) != 0) {
    delete thread;
    return 0;
  }
  return reinterpret_cast<ThreadHandle>(thread);
}

// A process without the right to raise it keeps the normal priority, and still prints.
void PosixPlatform::ThreadRaisePriority(ThreadHandle) {}

// Returns when the thread is gone, so that none of its code runs alongside what the caller does
// next.
void PosixPlatform::ThreadTerminate(ThreadHandle thread) {
  auto* started = reinterpret_cast<StartedThread*>(thread);
  (void)pthread_cancel(started->id);  // one that has just ended cannot be cancelled
  pthread_join(started->id, nullptr);
  started->joined = true;
}

void PosixPlatform::ThreadRelease(ThreadHandle thread) {
  auto* started = reinterpret_cast<StartedThread*>(thread);
  if (!started->joined) pthread_join(started->id, nullptr);
  delete started;
}

// The first of these variables that is set and not empty counts.
std::uint32_t PosixPlatform::SystemLocaleId() {
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* language = std::getenv(name);
    if (language == nullptr || *language == '\0') continue;
    return language[0] == 'z' && language[1] == 'h' ? kLocaleChinese : kLocaleEnglish;
  }
  return kLocaleEnglish;
}

void PosixPlatform::ShowBox(const char* text, const char* caption) {
  char utf8[kBoxTextBytes];
  ToUtf8(text, utf8);
  const EndableByForce here;  // the user may leave the box open for ever
  if (boxHandler_ != nullptr) {
    boxHandler_(boxContext_, utf8, caption);
  } else {
    std::fprintf(stderr, "%s: %s\n", caption, utf8);
  }
}

bool PosixPlatform::PathExists(const char* path) {
  struct stat ignored {};
  return stat(path, &ignored) == 0;
}

bool PosixPlatform::FileCreate(const char* path) {
  const int file = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kNewFileMode);
  if (file < 0) return false;
  close(file);
  return true;
}

FileWrite PosixPlatform::FileWriteAt(const char* path, const FilePart& part,
                                     std::uint32_t gapMaxBytes, std::uint32_t* fileBytes) {
  const int file = open(path, O_WRONLY | O_CREAT | O_CLOEXEC, kNewFileMode);
  if (file < 0) return FileWrite::kFailed;
  struct stat status {};
  FileWrite result = FileWrite::kFailed;
  if (fstat(file, &status) == 0) {
    *fileBytes = static_cast<std::uint32_t>(status.st_size);
    if (status.st_size + static_cast<off_t>(gapMaxBytes) < static_cast<off_t>(part.place)) {
      result = FileWrite::kShort;
    } else if (pwrite(file, part.bytes, part.count, static_cast<off_t>(part.place)) ==
               static_cast<ssize_t>(part.count)) {
      result = FileWrite::kWritten;
    }
  }
  close(file);
  return result;
}

}  // namespace qrn
