#include "sim/virtual_printer.h"

#include <algorithm>
#include <mutex>

#include "base/bytes.h"
#include "sim/firmware/firmware.h"
#include "sim/quirks/quirk_triggers.h"
#include "sim/usb/reply_pipe.h"
#include "sim/usb/usb_bus.h"
#include "sim/wire/messages.h"
#include "sim/wire/wire.h"

namespace qrn::sim {
namespace {

constexpr std::uint32_t kErrorGenFailure = 31, kErrorNotConnected = 1167;

}  // namespace

struct VirtualPrinter::Impl {
  Impl(const Machine& machine, const QuirkScript& quirks)
      : triggers(quirks), bus(triggers), pipe(triggers), firmware(machine, triggers) {}

  // Time has passed or something has come: the printer may leave the bus by that, or be back.
  void Look(std::uint32_t nowMs) {
    triggers.PassTime(nowMs);
    if (bus.Look(nowMs)) {
      firmware.Note("the printer was unplugged at message " + std::to_string(triggers.Messages()));
    }
  }

  // The host writes; what it means is seen before it is taken.
  void BeginWrite(const std::uint8_t* data, std::size_t bytes) {
    const bool isCommand = IsCommandWrite(data, bytes);
    if (isCommand && bytes >= kFramePayloadAt + kCommandBytes) {
      const std::vector<std::uint8_t> packet(data + kFramePayloadAt,
                                             data + kFramePayloadAt + kCommandBytes);
      const Message message = Firmware::MessageOf(packet);
      triggers.BeginPacket(message, message == Message::kSwath   ? U32(&packet[kSwathNoAt])
                                    : message == Message::kQuery ? firmware.NextSwath()
                                                                 : 0);
    }
    triggers.BeginWrite(bytes, !isCommand);
  }

  // Of a write that fails, or in the middle of which the printer leaves, it uses nothing: the
  // message comes again from its start.
  UsbStep WriteStep(std::uint32_t handle, const std::uint8_t* data, std::uint32_t bytes,
                    std::uint32_t nowMs) {
    Look(nowMs);
    if (!bus.Usable(handle)) return {UsbStep::kFailed, kErrorGenFailure};
    BeginWrite(data, bytes);
    Look(nowMs);
    if (!bus.Usable(handle)) return {UsbStep::kFailed, kErrorGenFailure};
    if (const Quirk* fault = triggers.Use(Quirk::Kind::kWriteFails))
      return {UsbStep::kFailed, fault->error};
    bytesReceived += bytes;
    std::vector<WireMessage> messages;
    wire.Take(data, bytes, &messages);
    for (const WireMessage& message : messages) {
      const std::optional<Reply> reply = firmware.Take(message, nowMs);
      Look(nowMs);  // a printer that has left by now answers nothing
      if (reply && bus.Usable(handle)) pipe.Send(*reply, nowMs);
    }
    return {UsbStep::kDone, 0};
  }

  UsbStep ReadStep(std::uint32_t asked, std::uint8_t* data, std::uint32_t bytes,
                   std::uint32_t nowMs) {
    if (!bus.Usable(asked)) return {UsbStep::kFailed, kErrorNotConnected};
    if (const Quirk* fault = triggers.Use(Quirk::Kind::kReadFails))
      return {UsbStep::kFailed, fault->error};
    std::uint32_t lookAgainMs = 0;
    const std::vector<std::uint8_t>* packet = pipe.Front(nowMs, &lookAgainMs);
    if (packet == nullptr) return {UsbStep::kWait, triggers.NoLongerThan(lookAgainMs)};
    if (bytes < packet->size()) return {UsbStep::kFailed, kErrorGenFailure};
    std::copy(packet->begin(), packet->end(), data);
    bytesSent += packet->size();
    pipe.Pop();
    return {UsbStep::kDone, 0};
  }

  void HostGot(const UsbStep& step, const std::uint8_t* packet) {
    if (step.state == UsbStep::kFailed) {
      joiner.Drop();
      firmware.TransferFailed();
    } else if (step.state == UsbStep::kDone && packet != nullptr) {
      if (const auto reply = joiner.Take(packet)) firmware.ReplyRead(*reply);
    }
  }

  mutable std::mutex mutex;
  QuirkTriggers triggers;
  UsbBus bus;
  WireReceiver wire;
  ReplyPipe pipe;
  ReplyJoiner joiner;  // puts the replies together as the host does
  Firmware firmware;
  std::uint64_t bytesReceived = 0, bytesSent = 0;
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
  stats.open = impl_->bus.IsOpen();
  stats.paused = impl_->firmware.IsPaused();
  return stats;
}

std::string VirtualPrinter::Violation() const {
  const std::lock_guard lock(impl_->mutex);
  return !impl_->wire.Violation().empty() ? impl_->wire.Violation() : impl_->firmware.Violation();
}

std::vector<std::string> VirtualPrinter::UnusedQuirks() const {
  const std::lock_guard lock(impl_->mutex);
  return impl_->triggers.Unused();
}

std::string VirtualPrinter::Trouble() const {
  const std::lock_guard lock(impl_->mutex);
  return impl_->firmware.Trouble();
}

const Paper& VirtualPrinter::CurrentPaper() const { return impl_->firmware.ThePaper(); }
std::uint32_t VirtualPrinter::ResolutionX() const { return impl_->firmware.ResolutionX(); }

bool VirtualPrinter::Listable(std::uint32_t nowMs) {
  const std::lock_guard lock(impl_->mutex);
  impl_->Look(nowMs);
  return impl_->bus.Listable();
}

const char* VirtualPrinter::PathAt(std::uint32_t index, std::uint32_t nowMs) {
  const std::lock_guard lock(impl_->mutex);
  impl_->Look(nowMs);
  return impl_->bus.PathAt(index);
}

std::uint32_t VirtualPrinter::Open(const char* path, std::uint32_t nowMs, std::uint32_t* error) {
  const std::lock_guard lock(impl_->mutex);
  impl_->Look(nowMs);
  const std::uint32_t handle = impl_->bus.Open(path, error);
  if (handle == 0) return 0;
  impl_->triggers.EndRead();
  impl_->pipe.Reopened();
  impl_->joiner.Drop();
  impl_->wire.Reopened();
  impl_->firmware.Reopened();
  return handle;
}

void VirtualPrinter::Close(std::uint32_t handle, std::uint32_t) {
  const std::lock_guard lock(impl_->mutex);
  impl_->bus.Close(handle);
}

UsbStep VirtualPrinter::Write(std::uint32_t handle, const std::uint8_t* data, std::uint32_t bytes,
                              std::uint32_t nowMs) {
  const std::lock_guard lock(impl_->mutex);
  const UsbStep step = impl_->WriteStep(handle, data, bytes, nowMs);
  impl_->HostGot(step, nullptr);
  return step;
}

UsbStep VirtualPrinter::Read(std::uint32_t handle, std::uint8_t* data, std::uint32_t bytes,
                             std::uint32_t nowMs) {
  const std::lock_guard lock(impl_->mutex);
  impl_->triggers.BeginRead();
  impl_->Look(nowMs);
  const UsbStep step = impl_->ReadStep(handle, data, bytes, nowMs);
  if (step.state != UsbStep::kWait) impl_->triggers.EndRead();
  impl_->HostGot(step, data);
  return step;
}

}  // namespace qrn::sim
