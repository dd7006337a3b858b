#include "sim/usb/reply_pipe.h"

#include <algorithm>
#include <random>

#include "base/bytes.h"

namespace qrn::sim {
namespace {

constexpr std::uint32_t kLatencyMs = 1;
constexpr std::uint32_t kSilencePollMs = 100;
constexpr std::uint32_t kSplitWords = 2;
constexpr std::size_t kOverlongBytes = 3200;  // more than a host has room for
constexpr std::uint16_t kUnknownKind = 0xF003;
constexpr std::uint16_t kTooManyWords = (kPacketBytes - kFramePayloadAt) / 2 + 1;

std::int32_t Until(std::uint32_t timeMs, std::uint32_t nowMs) {
  return static_cast<std::int32_t>(timeMs - nowMs);
}

}  // namespace

std::uint32_t ReplyPipe::DueMs(std::uint32_t nowMs) {
  std::uint32_t dueMs = nowMs + kLatencyMs;
  if (const Quirk* late = triggers_->Use(Quirk::Kind::kLate)) dueMs += late->ms;
  if (const Quirk* silence = triggers_->Use(Quirk::Kind::kSilence)) {
    mute_ = silence->ms == 0;
    silent_ = !mute_;
    silentUntilMs_ = nowMs + silence->ms;
  }
  if (silent_ && Until(silentUntilMs_, nowMs) <= 0) silent_ = false;
  if (silent_ && Until(silentUntilMs_, dueMs) > 0) dueMs = silentUntilMs_;
  return dueMs;
}

void ReplyPipe::Send(const Reply& reply, std::uint32_t nowMs) {
  const std::uint32_t dueMs = DueMs(nowMs);
  if (mute_) return;
  if (const Quirk* say = triggers_->Use(Quirk::Kind::kSay)) {
    for (const SaidPacket& said : say->words) PushSaid(said, dueMs);
    if (!say->first) return;
  }
  if (triggers_->Use(Quirk::Kind::kOtherCode) != nullptr) PushStray(reply, dueMs);
  if (const Quirk* garbage = triggers_->Use(Quirk::Kind::kGarbage)) {
    PushGarbage(garbage->form, reply, dueMs);
  } else {
    Push(packer_.Pack(reply), dueMs);
  }
}

// A reply to a command that the host has not sent. It reports that the job is cancelled, so a host
// that obeys it gives itself away. A host takes any reply as the answer to a buffer query, so one
// that comes before that answer reports a running job and no room.
void ReplyPipe::PushStray(const Reply& reply, std::uint32_t dueMs) {
  const std::uint16_t code = U16(&reply[kReplyCodeAt]);
  // Now another command's code, now one that differs beyond 8 bits.
  const std::uint32_t other = code == kJobEnd ? kCancel : kJobEnd;
  const std::uint32_t strayCode = strays_++ % 2 == 0 ? code + 0x100u : other;
  const std::uint16_t state = code == kBufferQuery ? kStateRunning : kStateCancelled;
  Push(packer_.Pack(MakeReply(strayCode, true, state, 0)), dueMs);
}

void ReplyPipe::PushSaid(const SaidPacket& said, std::uint32_t dueMs) {
  Reply reply(2 * std::max<std::size_t>(said.words.size(), 1));  // an empty one needs a packet, too
  for (std::size_t i = 0; i < said.words.size(); ++i) PutU16(&reply[2 * i], said.words[i]);
  std::vector<Bytes> packets = packer_.Pack(reply);
  if (said.kind != 0 || said.words.empty()) {
    PutU16(&packets[0][kFrameKindAt], said.kind != 0 ? said.kind : kOnly);
    PutU16(&packets[0][kFrameWordsAt], said.announced);
  }
  Push(packets, dueMs);
}

// A reply that is cut short replaces the true one, and the host must ask again. What does not look
// like a reply to the host's message comes before it: a host then reads on, for as long as it
// takes.
void ReplyPipe::PushGarbage(Garbage form, const Reply& reply, std::uint32_t dueMs) {
  Bytes packet = packer_.Pack(reply)[0];  // whose number is not taken back
  switch (form) {
    case Garbage::kKind:
      PutU16(&packet[kFrameKindAt], kUnknownKind);
      break;
    case Garbage::kRandom:
      packet = RandomPacket();
      break;
    case Garbage::kWords:
      PutU16(&packet[kFrameWordsAt], kTooManyWords);
      break;
    case Garbage::kEmpty:
      PutU16(&packet[kFrameKindAt], kOnly);  // else a host would wait for more of it
      PutU16(&packet[kFrameWordsAt], 0);
      break;
    case Garbage::kShort:
      Push(packer_.Pack(Reply(reply.begin(), reply.begin() + kReplyOkAt)), dueMs);
      return;
    case Garbage::kSplit:
      Push(packer_.Pack(reply, kSplitWords), dueMs);
      return;
    case Garbage::kOverlong: {
      Reply longer = reply;
      longer.resize(kOverlongBytes);
      Push(packer_.Pack(longer), dueMs);
      return;
    }
    case Garbage::kRestart: {
      Bytes middle(packet.size(), 0xFF);
      PutU16(&packet[kFrameKindAt], kFirst);
      PutU16(&middle[kFrameKindAt], kMiddle);
      PutU16(&middle[kFrameWordsAt], kPacketWords);
      Push({packet, middle}, dueMs);
      Push(packer_.Pack(reply), dueMs);
      return;
    }
  }
  Push({packet}, dueMs);
  Push(packer_.Pack(reply), dueMs);
}

// The frame is whole, all that it carries is random: the same in each run.
ReplyPipe::Bytes ReplyPipe::RandomPacket() {
  std::mt19937 random(triggers_->Messages());
  Reply reply(2 * (8 + random() % (kPacketWords - 8)));
  for (std::uint8_t& byte : reply) byte = Low8(random());
  return packer_.Pack(reply)[0];
}

void ReplyPipe::Push(const std::vector<Bytes>& packets, std::uint32_t dueMs) {
  for (const Bytes& packet : packets) packets_.push_back({packet, dueMs});
}

void ReplyPipe::Reopened() {
  packets_.clear();
  mute_ = false;
}

const std::vector<std::uint8_t>* ReplyPipe::Front(std::uint32_t nowMs,
                                                  std::uint32_t* lookAgainMs) const {
  *lookAgainMs = nowMs + kSilencePollMs;
  if (packets_.empty()) return nullptr;
  const Packet& packet = packets_.front();
  if (Until(packet.dueMs, nowMs) <= 0) return &packet.bytes;
  *lookAgainMs = packet.dueMs;
  return nullptr;
}

}  // namespace qrn::sim
