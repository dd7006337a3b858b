#include "jobs/scripted_port.h"

#include <algorithm>
#include <cstring>

using qrn::UsbStep;

namespace {

constexpr std::uint16_t kDataType = 0x85B5, kOnly = 0xF008, kLast = 0xF002;
constexpr std::size_t kTypeAt = 14, kKindAt = 16, kCommandAt = 32, kPacketBytes = 128;
constexpr std::uint32_t kErrorFailed = 31, kErrorGone = 1167, kErrorHeld = 5;
constexpr std::uint32_t kSilencePollMs = 1000;

bool Reached(std::uint32_t nowMs, std::uint32_t momentMs) {
  return static_cast<std::int32_t>(nowMs - momentMs) >= 0;
}

}  // namespace

const Spoiled* ScriptedPort::Due(Spoiled::What what, std::uint32_t value) const {
  for (const Spoiled& spoiled : script_) {
    if (spoiled.what == what && spoiled.code == code_ &&
        sent_[code_] - spoiled.nth < spoiled.times && (value == 0 || spoiled.value == value)) {
      return &spoiled;
    }
  }
  return nullptr;
}

bool ScriptedPort::Away(std::uint32_t nowMs) {
  if (away_ && !awayForGood_ && Reached(nowMs, backMs_)) away_ = false;
  return away_;
}

bool ScriptedPort::Listable(std::uint32_t) { return bus != Bus::kUnlistable; }

const char* ScriptedPort::PathAt(std::uint32_t index, std::uint32_t nowMs) {
  const bool printerListed = bus != Bus::kEmpty && !Away(nowMs);
  return index == 0 || printerListed ? inner_.PathAt(index, nowMs) : nullptr;
}

std::uint32_t ScriptedPort::Open(const char* path, std::uint32_t nowMs, std::uint32_t* error) {
  if (bus != Bus::kHeld) return inner_.Open(path, nowMs, error);
  *error = kErrorHeld;
  return 0;
}

// The printer knows what the host was told by this, not by what it has answered itself.
UsbStep ScriptedPort::Write(std::uint32_t handle, const std::uint8_t* data, std::uint32_t bytes,
                            std::uint32_t nowMs) {
  const UsbStep step = WriteStep(handle, data, bytes, nowMs);
  inner_.HostGot(step, nullptr);
  return step;
}

UsbStep ScriptedPort::Read(std::uint32_t handle, std::uint8_t* data, std::uint32_t bytes,
                           std::uint32_t nowMs) {
  const UsbStep step = ReadStep(handle, data, bytes, nowMs);
  inner_.HostGot(step, data);
  return step;
}

UsbStep ScriptedPort::WriteStep(std::uint32_t handle, const std::uint8_t* data, std::uint32_t bytes,
                                std::uint32_t nowMs) {
  if (Away(nowMs)) return {UsbStep::kFailed, kErrorFailed};
  if (qrn::U16(data + kTypeAt) == kDataType) {
    if (Due(Spoiled::kDataFails, ++dataWrites_) != nullptr) return {UsbStep::kFailed, kErrorFailed};
    return inner_.Write(handle, data, bytes, nowMs);
  }
  const bool bare = std::all_of(data + kCommandAt + 1, data + kCommandAt + 64,
                                [](std::uint8_t byte) { return byte == 0; });
  code_ = data[kCommandAt] == 10 && bare ? kAnswerTest : data[kCommandAt];
  ++sent_[code_];
  dataWrites_ = 0;
  sentMs_ = nowMs;
  spoiled_ = false;
  packets_.clear();
  if (Due(Spoiled::kWriteFails) != nullptr) return {UsbStep::kFailed, kErrorFailed};
  return inner_.Write(handle, data, bytes, nowMs);
}

UsbStep ScriptedPort::DropReply(std::uint32_t handle, std::uint32_t nowMs) {
  std::uint8_t packet[kPacketBytes];
  for (;;) {
    const UsbStep step = inner_.Fetch(handle, packet, sizeof packet, nowMs);
    const std::uint16_t kind = qrn::U16(packet + kKindAt);
    if (step.state != UsbStep::kDone || kind == kOnly || kind == kLast) return step;
  }
}

UsbStep ScriptedPort::Spoil(const Spoiled& spoiled, std::uint32_t nowMs) {
  spoiled_ = true;
  if (spoiled.what == Spoiled::kLeaves) {
    away_ = true;
    awayForGood_ = spoiled.value == 0;
    backMs_ = nowMs + spoiled.value;
    return {UsbStep::kFailed, kErrorGone};
  }
  packets_.assign(spoiled.packets.begin(), spoiled.packets.end());
  if (spoiled.what == Spoiled::kReadFails) return {UsbStep::kFailed, kErrorFailed};
  return {UsbStep::kDone, 0};
}

UsbStep ScriptedPort::ReadStep(std::uint32_t handle, std::uint8_t* data, std::uint32_t bytes,
                               std::uint32_t nowMs) {
  if (Away(nowMs)) return {UsbStep::kFailed, kErrorGone};
  if (Due(Spoiled::kSilent) != nullptr) return {UsbStep::kWait, nowMs + kSilencePollMs};
  const Spoiled* late = Due(Spoiled::kLate);
  if (late != nullptr && !Reached(nowMs, sentMs_ + late->value))
    return {UsbStep::kWait, sentMs_ + late->value};
  for (const auto what :
       {Spoiled::kSays, Spoiled::kReadFails, Spoiled::kLeaves, Spoiled::kSaysFirst}) {
    const Spoiled* spoiled = spoiled_ ? nullptr : Due(what);
    if (spoiled == nullptr) continue;
    if (what != Spoiled::kSaysFirst) {
      const UsbStep own = DropReply(handle, nowMs);
      if (own.state != UsbStep::kDone) return own;
    }
    const UsbStep step = Spoil(*spoiled, nowMs);
    if (step.state != UsbStep::kDone) return step;
  }
  if (packets_.empty()) return inner_.Fetch(handle, data, bytes, nowMs);
  std::memcpy(data, packets_.front().data(), packets_.front().size());
  packets_.pop_front();
  return {UsbStep::kDone, 0};
}
