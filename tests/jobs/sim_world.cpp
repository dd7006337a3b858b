#include "jobs/sim_world.h"

#include <algorithm>
#include <cstring>

#include "jobs/heap_watch.h"
#include "platform/bytes.h"
#include "platform/platform.h"
#include "sim/sim_platform.h"

using qrn::DeviceHandle;
using qrn::LocalTime;
using qrn::ThreadHandle;
using qrn::UsbList;
using qrn::UsbPathStatus;
using qrn::UsbStep;

namespace {

constexpr std::uint32_t kSwathCode = 4;
constexpr std::size_t kPacketBytes = 128, kSlotBytes = 8192, kFrameBytes = 32;
constexpr std::size_t kTypeAt = 14, kKindAt = 16, kWordsAt = 22;  // of a frame
constexpr std::uint16_t kTypeData = 0x85B5, kKindLast = 0xF002, kKindOnly = 0xF008;
constexpr std::size_t kDataSizeAt = 8, kHeaderAt = 28, kNumberAt = 48;
constexpr std::uint32_t kErrorNoFile = 2, kErrorGone = 31;

// Takes the swaths down. It trusts the frames: the printer's wire layer checks them.
class SwathBook {
 public:
  void Take(const std::uint8_t* data, std::uint32_t bytes) {
    if (qrn::U16(data + kTypeAt) != kTypeData) {
      std::copy_n(data + kFrameBytes, packet_.size(), packet_.begin());
      Reopened();
      if (qrn::U32(packet_.data()) == kSwathCode && qrn::U32(&packet_[kDataSizeAt]) == 0) Enter();
      return;
    }
    for (std::size_t at = 0; at < bytes; at += kSlotBytes) {
      const std::uint8_t* slot = data + at;
      const std::size_t payload = 2 * (qrn::U16(slot + kWordsAt) + std::size_t{1});
      data_.Add(slot + kFrameBytes, payload);
      dataBytes_ += static_cast<std::uint32_t>(payload);
      const std::uint16_t kind = qrn::U16(slot + kKindAt);
      if (kind != kKindLast && kind != kKindOnly) continue;
      Enter();
      return;
    }
  }
  // A message that is not whole comes again from its start.
  void Reopened() {
    data_ = Digest{};
    dataBytes_ = 0;
  }

  std::vector<SentSwath> swaths;
  std::string fault;

 private:
  void Enter() {
    SentSwath swath{{}, dataBytes_, data_.Value()};
    std::copy_n(&packet_[kHeaderAt], swath.header.size(), swath.header.begin());
    Reopened();
    const std::uint32_t number = qrn::U32(&packet_[kNumberAt]);
    if (number == swaths.size() + 1) {
      swaths.push_back(swath);
    } else if (fault.empty() && (number == 0 || number > swaths.size())) {
      fault = "swath " + std::to_string(number) + " behind " + std::to_string(swaths.size());
    } else if (fault.empty() && swaths[number - 1] != swath) {
      fault = "swath " + std::to_string(number) + " was sent again, changed";
    }
  }

  std::array<std::uint8_t, 64> packet_{};  // the last command
  Digest data_;
  std::uint32_t dataBytes_ = 0;
};

// The line between driver and printer.
class SlowLine final : public qrn::UsbPort {
 public:
  SlowLine(qrn::UsbPort& printer, const SimPlan& plan, std::uint64_t seed)
      : printer_(printer), plan_(plan), random_(seed) {}

  bool Listable(std::uint32_t nowMs) override { return printer_.Listable(nowMs); }
  const char* PathAt(std::uint32_t index, std::uint32_t nowMs) override {
    return pulled_ ? nullptr : printer_.PathAt(index, nowMs);
  }
  std::uint32_t Open(const char* path, std::uint32_t nowMs, std::uint32_t* error) override {
    moving_ = false;
    *error = kErrorNoFile;
    const std::uint32_t handle = pulled_ ? 0 : printer_.Open(path, nowMs, error);
    if (handle != 0) book_.Reopened();
    return handle;
  }
  void Close(std::uint32_t handle, std::uint32_t nowMs) override {
    moving_ = false;
    printer_.Close(handle, nowMs);
  }
  UsbStep Write(std::uint32_t handle, const std::uint8_t* data, std::uint32_t bytes,
                std::uint32_t nowMs) override {
    const UsbStep step = Move(plan_.writeLatencyMaxMs, nowMs,
                              [&] { return printer_.Write(handle, data, bytes, nowMs); });
    if (step.state != UsbStep::kDone) return step;
    book_.Take(data, bytes);
    digest_.Add(nowMs);
    digest_.Add(bytes);
    digest_.Add(data, std::min<std::size_t>(bytes, kPacketBytes));  // the book has the data
    return step;
  }
  UsbStep Read(std::uint32_t handle, std::uint8_t* data, std::uint32_t bytes,
               std::uint32_t nowMs) override {
    return Move(plan_.readLatencyMaxMs, nowMs,
                [&] { return printer_.Read(handle, data, bytes, nowMs); });
  }

  const SwathBook& Book() const { return book_; }
  bool Pulled() const { return pulled_; }
  const Digest& Written() const { return digest_; }
  std::uint64_t LatencyMs() const { return latencyMs_; }

 private:
  // One transfer, asked for again until it has ended.
  template <class Transfer>
  UsbStep Move(std::uint32_t latencyMaxMs, std::uint32_t nowMs, Transfer transfer) {
    if (!moving_) {
      moving_ = true;
      beganMs_ = nowMs;
      const std::uint32_t latencyMs = random_.Below(latencyMaxMs + 1);
      latencyMs_ += latencyMs;
      dueMs_ = nowMs + latencyMs;
    }
    if (static_cast<std::int32_t>(nowMs - dueMs_) < 0) return {UsbStep::kWait, dueMs_};
    UsbStep step = pulled_ ? UsbStep{UsbStep::kFailed, kErrorGone} : transfer();
    if (step.state == UsbStep::kWait && nowMs - beganMs_ > plan_.patienceMs) {
      pulled_ = true;
      step = {UsbStep::kFailed, kErrorGone};
    }
    moving_ = step.state == UsbStep::kWait;
    return step;
  }

  qrn::UsbPort& printer_;
  const SimPlan& plan_;
  SeedStream random_;
  bool moving_ = false, pulled_ = false;
  std::uint32_t beganMs_ = 0, dueMs_ = 0;
  std::uint64_t latencyMs_ = 0;
  SwathBook book_;
  Digest digest_;
};

// Forwards every call and keeps what the surroundings take from the heap out of the library's
// account.
class Surroundings final : public qrn::Platform {
 public:
  explicit Surroundings(qrn::Platform& platform) : platform_(platform) {}

  UsbList UsbListOpen() override {
    return OutsideLibrary([&] { return platform_.UsbListOpen(); });
  }
  UsbPathStatus UsbListPath(UsbList list, std::uint32_t index, const char** path) override {
    return OutsideLibrary([&] { return platform_.UsbListPath(list, index, path); });
  }
  void UsbListClose(UsbList list) override {
    OutsideLibrary([&] { platform_.UsbListClose(list); });
  }
  DeviceHandle DeviceOpen(const char* path) override {
    return OutsideLibrary([&] { return platform_.DeviceOpen(path); });
  }
  void DeviceClose(DeviceHandle device) override {
    OutsideLibrary([&] { platform_.DeviceClose(device); });
  }
  bool BulkWrite(DeviceHandle device, const void* data, std::uint32_t bytes) override {
    return OutsideLibrary([&] { return platform_.BulkWrite(device, data, bytes); });
  }
  bool BulkRead(DeviceHandle device, void* data, std::uint32_t bytes) override {
    return OutsideLibrary([&] { return platform_.BulkRead(device, data, bytes); });
  }
  std::uint32_t LastError() override {
    return OutsideLibrary([&] { return platform_.LastError(); });
  }
  std::uint32_t TickMs() override {
    return OutsideLibrary([&] { return platform_.TickMs(); });
  }
  void SleepMs(std::uint32_t ms) override {
    OutsideLibrary([&] { platform_.SleepMs(ms); });
  }
  LocalTime LocalTimeNow() override {
    return OutsideLibrary([&] { return platform_.LocalTimeNow(); });
  }
  ThreadHandle ThreadStart(void (*procedure)(void*), void* argument) override {
    procedure_ = procedure;
    argument_ = argument;
    return OutsideLibrary([&] { return platform_.ThreadStart(&Surroundings::RunThread, this); });
  }
  void ThreadRaisePriority(ThreadHandle thread) override {
    OutsideLibrary([&] { platform_.ThreadRaisePriority(thread); });
  }
  void ThreadTerminate(ThreadHandle thread) override {
    OutsideLibrary([&] { platform_.ThreadTerminate(thread); });
  }
  void ThreadRelease(ThreadHandle thread) override {
    OutsideLibrary([&] { platform_.ThreadRelease(thread); });
  }
  std::uint32_t SystemLocaleId() override {
    return OutsideLibrary([&] { return platform_.SystemLocaleId(); });
  }
  void ShowBox(const char* text, const char* caption) override {
    OutsideLibrary([&] {
      boxes.emplace_back(text);
      platform_.ShowBox(text, caption);
    });
  }
  bool PathExists(const char* path) override {
    return OutsideLibrary([&] { return platform_.PathExists(path); });
  }
  bool FileCreate(const char* path) override {
    return OutsideLibrary([&] { return platform_.FileCreate(path); });
  }
  qrn::FileWrite FileWriteAt(const char* path, const qrn::FilePart& part, std::uint32_t gapMaxBytes,
                             std::uint32_t* fileBytes) override {
    return OutsideLibrary(
        [&] { return platform_.FileWriteAt(path, part, gapMaxBytes, fileBytes); });
  }

  std::vector<std::string> boxes;

 private:
  static void RunThread(void* self) {
    const LibraryScope inside(true);
    auto* world = static_cast<Surroundings*>(self);
    world->procedure_(world->argument_);
  }

  qrn::Platform& platform_;
  void (*procedure_)(void*) = nullptr;
  void* argument_ = nullptr;
};

qrn::sim::SimOptions OptionsOf(const SimPlan& plan, std::uint64_t seed) {
  qrn::sim::SimOptions options;
  options.seed = seed;
  options.startTickMs = plan.startTickMs;
  options.localeId = plan.chinese ? 0x0404 : 0x0409;
  options.boxOpenMs = plan.boxOpenMs;
  options.failThreadStart = plan.noThread;
  options.limitMs = plan.BoundMs();
  return options;
}

}  // namespace

// Four lanes, so that one multiplication need not wait for the other.
void Digest::Add(const void* bytes, std::size_t count) {
  constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15u;
  constexpr std::size_t kLanes = 4, kBlock = 8 * kLanes;
  const auto* from = static_cast<const std::uint8_t*>(bytes);
  std::array<std::uint64_t, kLanes> lanes{value_, 1, 2, 3};
  for (std::size_t at = 0; at < count; at += kBlock) {
    std::array<std::uint64_t, kLanes> words{};
    std::memcpy(words.data(), from + at, std::min(count - at, kBlock));
    for (std::size_t i = 0; i < kLanes; ++i) {
      lanes[i] = (lanes[i] ^ words[i]) * kFactor;
      lanes[i] ^= lanes[i] >> 29;
    }
  }
  for (const std::uint64_t lane : lanes) value_ = (value_ ^ lane) * kFactor + count;
}

struct SimWorld::Impl {
  Impl(const SimPlan& plan, const qrn::sim::QuirkScript& quirks, std::uint64_t seed)
      : printer(plan.machine, quirks),
        line(printer, plan, seed ^ 0x5117),
        platform(line, OptionsOf(plan, seed)),
        surroundings(platform),
        startTickMs(plan.startTickMs) {}

  qrn::sim::VirtualPrinter printer;
  SlowLine line;
  qrn::sim::SimPlatform platform;
  Surroundings surroundings;
  std::uint32_t startTickMs;
};

SimWorld::SimWorld(const SimPlan& plan, const qrn::sim::QuirkScript& quirks, std::uint64_t seed)
    : impl_(std::make_unique<Impl>(plan, quirks, seed)) {
  qrn::UsePlatform(&impl_->surroundings);
}

SimWorld::~SimWorld() { qrn::UsePlatform(nullptr); }

qrn::sim::VirtualPrinter& SimWorld::Printer() { return impl_->printer; }
std::uint64_t SimWorld::ElapsedMs() const { return impl_->platform.TickMs() - impl_->startTickMs; }
std::uint64_t SimWorld::LatencyMs() const { return impl_->line.LatencyMs(); }
void SimWorld::RestMs(std::uint32_t ms) { impl_->platform.SleepMs(ms); }
const std::vector<SentSwath>& SimWorld::Swaths() const { return impl_->line.Book().swaths; }
const std::string& SimWorld::SwathFault() const { return impl_->line.Book().fault; }
const std::vector<std::string>& SimWorld::Boxes() const { return impl_->surroundings.boxes; }
bool SimWorld::PatienceLost() const { return impl_->line.Pulled(); }
std::uint32_t SimWorld::LiveThreads() const { return impl_->platform.LiveThreads(); }
std::uint32_t SimWorld::OpenDevices() const { return impl_->platform.OpenDevices(); }
std::uint64_t SimWorld::LineDigest() const {
  Digest digest = impl_->line.Written();
  for (const SentSwath& swath : Swaths()) digest.Add(swath.dataDigest);
  return digest.Value();
}
