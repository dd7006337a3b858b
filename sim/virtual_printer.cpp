#include "sim/virtual_printer.h"

#include <cstring>
#include <deque>

#include "sim/firmware.h"
#include "sim/wire.h"

namespace qrn::sim {
namespace {

// What stands on the bus: a mouse first, then the printer.
constexpr const char* kForeignPath =
    R"(\\?\usb#vid_1c4f&pid_0034#5&2c1e7f2&0&4#{a5dcbf10-6530-11d2-901f-00c04fb951ed})";
constexpr const char* kPrinterPath =
    R"(\\?\usb#VID_5E3C&PID_A71D#0001#{a5dcbf10-6530-11d2-901f-00c04fb951ed})";

constexpr std::uint32_t kErrorFileNotFound = 2, kErrorAccessDenied = 5, kErrorGenFailure = 31,
                        kErrorNotConnected = 1167;
constexpr std::uint32_t kReplyLatencyMs = 1;
constexpr std::uint32_t kSilencePollMs = 10;

}  // namespace

struct VirtualPrinter::Impl {
  struct Packet {
    std::vector<std::uint8_t> bytes;
    std::uint32_t dueMs;
  };

  Impl(const Machine& machine, const QuirkScript& quirks) : firmware(machine, quirks) {}

  bool Usable(std::uint32_t asked, std::uint32_t nowMs) {
    return firmware.Present(nowMs) && asked == handle && handle != 0;
  }

  mutable std::mutex mutex;
  WireReceiver wire;
  ReplyPacker packer;
  Firmware firmware;
  std::deque<Packet> outgoing;
  std::uint32_t handle = 0;  // the open one
  std::uint32_t lastHandle = 0;
  std::uint64_t bytesReceived = 0, bytesSent = 0;
  bool keepTransfers = false;
  std::vector<std::vector<std::uint8_t>> transfers;
};

VirtualPrinter::VirtualPrinter(const Machine& machine, const QuirkScript& quirks)
    : impl_(std::make_unique<Impl>(machine, quirks)) {}

VirtualPrinter::~VirtualPrinter() = default;

PrinterStats VirtualPrinter::Stats() const {
  const std::lock_guard lock(impl_->mutex);
  PrinterStats stats;
  stats.bytesReceived = impl_->bytesReceived;
  stats.bytesSent = impl_->bytesSent;
  stats.swaths = impl_->firmware.Swaths();
  stats.feedOnlySwaths = impl_->firmware.FeedOnlySwaths();
  stats.inkLaid = impl_->firmware.InkLaid();
  stats.jobsCreated = impl_->firmware.JobsCreated();
  stats.jobsEnded = impl_->firmware.JobsEnded();
  return stats;
}

std::string VirtualPrinter::Violation() const {
  const std::lock_guard lock(impl_->mutex);
  return !impl_->wire.Violation().empty() ? impl_->wire.Violation() : impl_->firmware.Violation();
}

std::string VirtualPrinter::Trouble() const {
  const std::lock_guard lock(impl_->mutex);
  return impl_->firmware.Trouble();
}

const Paper& VirtualPrinter::CurrentPaper() const { return impl_->firmware.ThePaper(); }
std::uint32_t VirtualPrinter::ResolutionX() const { return impl_->firmware.ResolutionX(); }
void VirtualPrinter::KeepTransfers(bool keep) { impl_->keepTransfers = keep; }
const std::vector<std::vector<std::uint8_t>>& VirtualPrinter::Transfers() const {
  return impl_->transfers;
}

bool VirtualPrinter::Listable(std::uint32_t) { return true; }

const char* VirtualPrinter::PathAt(std::uint32_t index, std::uint32_t nowMs) {
  const std::lock_guard lock(impl_->mutex);
  if (index == 0) return kForeignPath;
  return index == 1 && impl_->firmware.Present(nowMs) ? kPrinterPath : nullptr;
}

std::uint32_t VirtualPrinter::Open(const char* path, std::uint32_t nowMs, std::uint32_t* error) {
  const std::lock_guard lock(impl_->mutex);
  if (std::strcmp(path, kPrinterPath) != 0 || !impl_->firmware.Present(nowMs)) {
    *error = kErrorFileNotFound;
    return 0;
  }
  if (impl_->handle != 0) {
    *error = kErrorAccessDenied;
    return 0;
  }
  impl_->handle = ++impl_->lastHandle;
  impl_->outgoing.clear();
  impl_->wire.Reopened();
  impl_->firmware.Reopened();
  return impl_->handle;
}

void VirtualPrinter::Close(std::uint32_t handle, std::uint32_t) {
  const std::lock_guard lock(impl_->mutex);
  if (handle == impl_->handle) impl_->handle = 0;
}

UsbStep VirtualPrinter::Write(std::uint32_t handle, const std::uint8_t* data, std::uint32_t bytes,
                              std::uint32_t nowMs) {
  const std::lock_guard lock(impl_->mutex);
  if (!impl_->Usable(handle, nowMs)) return {UsbStep::kFailed, kErrorGenFailure};
  impl_->bytesReceived += bytes;
  if (impl_->keepTransfers) impl_->transfers.emplace_back(data, data + bytes);
  std::vector<WireMessage> messages;
  impl_->wire.Take(data, bytes, &messages);
  for (const WireMessage& message : messages) {
    const std::optional<Reply> reply = impl_->firmware.Take(message, nowMs);
    if (!reply) continue;
    for (auto& packet : impl_->packer.Pack(*reply)) {
      impl_->outgoing.push_back({std::move(packet), nowMs + kReplyLatencyMs});
    }
  }
  return {UsbStep::kDone, 0};
}

UsbStep VirtualPrinter::Read(std::uint32_t handle, std::uint8_t* data, std::uint32_t bytes,
                             std::uint32_t nowMs) {
  const std::lock_guard lock(impl_->mutex);
  if (!impl_->Usable(handle, nowMs)) return {UsbStep::kFailed, kErrorNotConnected};
  if (impl_->outgoing.empty()) return {UsbStep::kWait, nowMs + kSilencePollMs};
  const Impl::Packet& packet = impl_->outgoing.front();
  if (static_cast<std::int32_t>(nowMs - packet.dueMs) < 0) return {UsbStep::kWait, packet.dueMs};
  if (bytes < packet.bytes.size()) return {UsbStep::kFailed, kErrorGenFailure};
  std::memcpy(data, packet.bytes.data(), packet.bytes.size());
  impl_->bytesSent += packet.bytes.size();
  impl_->outgoing.pop_front();
  return {UsbStep::kDone, 0};
}

}  // namespace qrn::sim
