#include "bench/sending.h"

#include <cstddef>
#include <cstring>

#include "base/bytes.h"
#include "bench/measure.h"
#include "link/frame.h"
#include "link/transport.h"
#include "protocol/command.h"
#include "protocol/swath_header.h"
#include "raster/swath_builder.h"
#include "raster/swath_queue.h"

namespace qrn::bench {
namespace {

constexpr DeviceHandle kDevice = 1;
constexpr std::uint64_t kHashFactor = 0x100000001B3;

void Send(const std::uint8_t* message, std::uint32_t bytes, int type) {
  if (LinkSend(kDevice, message, bytes, type) != 1) Fail("link", "not sent");
}

}  // namespace

void SendSwath(const std::uint8_t* header, const std::uint8_t* data, std::uint32_t bytes) {
  std::uint8_t packet[kCommandBytes] = {};
  PutU32(packet + kPacketCodeAt, kCmdSwath);
  PutU32(packet + kPacketDataSizeAt, bytes);
  std::memcpy(packet + kPacketSwathHeaderAt, header, kSwathHeaderBytes);
  Send(packet, sizeof packet, kTypeCmm);
  if (bytes != 0) Send(data, bytes, kTypeData);
}

std::uint32_t SendReady(Job& job) {
  std::uint32_t withData = 0;
  while (Swath* swath = QueueGetReady(job)) {
    std::uint8_t header[kSwathHeaderBytes];
    EncodeSwathHeader(swath->header, header);
    SendSwath(header, swath->pSwathData, swath->dataSize);
    withData += swath->dataSize != 0 ? 1 : 0;
    SetSwathState(swath, kSwathFree);
  }
  return withData;
}

void ResetSequence(IdlePlatform& system) {
  std::uint16_t sequence = 0;
  system.onWrite = [&sequence](const std::uint8_t* data, std::uint32_t) {
    sequence = U16(data + offsetof(FrameHeader, sequence));
  };
  const std::uint8_t word[2] = {};
  Send(word, sizeof word, kTypeCmm);
  system.onWrite = nullptr;
  // An empty message writes nothing and counts.
  while (++sequence != 0) Send(word, 0, kTypeCmm);
}

StreamHash::StreamHash(IdlePlatform& system) : system_(system) {
  system_.onWrite = [this](const std::uint8_t* data, std::uint32_t bytes) { Take(data, bytes); };
}

StreamHash::~StreamHash() { system_.onWrite = nullptr; }

void StreamHash::Take(const std::uint8_t* data, std::uint32_t bytes) {
  seconds_ += SecondsOf([&] {
    hash_ = (hash_ ^ bytes) * kHashFactor;
    std::uint64_t word = 0;
    std::uint32_t at = 0;
    for (; at + sizeof word <= bytes; at += sizeof word) {
      std::memcpy(&word, data + at, sizeof word);
      hash_ = (hash_ ^ word) * kHashFactor;
      hash_ ^= hash_ >> 29;
    }
    for (; at < bytes; ++at) hash_ = (hash_ ^ data[at]) * kHashFactor;
  });
}

}  // namespace qrn::bench
