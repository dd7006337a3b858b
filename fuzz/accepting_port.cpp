#include "fuzz/accepting_port.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "platform/bytes.h"
#include "sim/protocol_check.h"

namespace qrn::fuzz {
namespace {

constexpr const char* kPath = "usb#vid_5e3c&pid_a71d#1";
constexpr std::uint32_t kHandle = 1, kErrorFileNotFound = 2;
constexpr std::uint32_t kSilencePollMs = 100;
constexpr std::uint16_t kRunning = 5;

// Eight bytes at a time: this is where a run would spend most of its time.
std::uint64_t BitsOf(const std::vector<std::uint8_t>& data) {
  std::uint64_t bits = 0;
  for (std::size_t at = 0; at < data.size(); at += sizeof(std::uint64_t)) {
    std::uint64_t word = 0;
    std::memcpy(&word, data.data() + at, std::min(sizeof word, data.size() - at));
    bits += static_cast<std::uint64_t>(std::popcount(word));
  }
  return bits;
}

}  // namespace

bool AcceptingPort::Listable(std::uint32_t) { return true; }

const char* AcceptingPort::PathAt(std::uint32_t index, std::uint32_t) {
  return index == 0 ? kPath : nullptr;
}

std::uint32_t AcceptingPort::Open(const char* path, std::uint32_t, std::uint32_t* error) {
  *error = kErrorFileNotFound;
  return std::strcmp(path, kPath) == 0 ? kHandle : 0;
}

void AcceptingPort::Close(std::uint32_t, std::uint32_t) {}

void AcceptingPort::Fail(const std::string& what) {
  if (violation_.empty()) violation_ = what;
}

void AcceptingPort::Answer(std::uint32_t code) {
  std::vector<std::uint8_t> reply(12);
  PutU16(&reply[0], Low16(code));
  PutU16(&reply[2], 1);
  PutU16(&reply[4], kRunning);
  if (code == sim::kBufferQuery) PutU32(&reply[8], 0xFFFFFFFF);
  if (code == sim::kConnect) {
    reply.resize(8);
    reply.insert(reply.end(), parameters_.begin(), parameters_.end());
  }
  for (auto& packet : packer_.Pack(reply)) outgoing_.push_back(std::move(packet));
}

void AcceptingPort::TakeData(const std::vector<std::uint8_t>& data) {
  if (data.size() != announcedBytes_ || data.empty())
    Fail(std::to_string(data.size()) + " bytes of data, announced " +
         std::to_string(announcedBytes_));
  announcedBytes_ = 0;
  dots_ += BitsOf(data);
  Answer(sim::kSwath);
}

void AcceptingPort::Take(const sim::WireMessage& message) {
  if (message.isData) return TakeData(message.bytes);
  if (announcedBytes_ != 0) Fail("a command in place of data");
  const std::string fault = sim::CheckCommandPacket(message.bytes);
  if (!fault.empty()) return Fail(fault);
  const std::uint32_t code = U32(message.bytes.data());
  if (code == sim::kSwath) {
    if (U32(&message.bytes[sim::kSwathNoAt]) != ++swaths_)
      Fail("swath " + std::to_string(swaths_) + " has another number");
    announcedBytes_ = U32(&message.bytes[sim::kDataSizeAt]);
    if (announcedBytes_ != 0) return;
  }
  Answer(code);
}

UsbStep AcceptingPort::Write(std::uint32_t, const std::uint8_t* data, std::uint32_t bytes,
                             std::uint32_t) {
  std::vector<sim::WireMessage> messages;
  wire_.Take(data, bytes, &messages);
  for (const sim::WireMessage& message : messages) Take(message);
  return {UsbStep::kDone, 0};
}

UsbStep AcceptingPort::Read(std::uint32_t, std::uint8_t* data, std::uint32_t bytes,
                            std::uint32_t nowMs) {
  if (outgoing_.empty()) return {UsbStep::kWait, nowMs + kSilencePollMs};
  const std::vector<std::uint8_t> packet = outgoing_.front();
  outgoing_.pop_front();
  if (packet.size() != bytes) Fail("a read of " + std::to_string(bytes) + " bytes");
  std::memcpy(data, packet.data(), std::min<std::size_t>(bytes, packet.size()));
  return {UsbStep::kDone, 0};
}

}  // namespace qrn::fuzz
