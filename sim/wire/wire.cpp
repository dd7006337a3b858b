#include "sim/wire/wire.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

#include "base/bytes.h"

namespace qrn::sim {
namespace {

constexpr std::array<std::uint16_t, 7> kMarks = {0xABCD, 0xEC38, 0xB92B, 0x7CAE,
                                                 0x9899, 0xC2F0, 0xDC35};
constexpr std::uint16_t kCmm = 0x0BAA, kData = 0x85B5;
constexpr std::size_t kSlotBytes = 8192, kTailBytes = 32, kGroupSlots = 7;
constexpr std::uint32_t kSlotWords = 4064;
constexpr std::size_t kPacketCheckAt = 126, kCheckedWords = kFrameCheckAt / 2;

std::uint16_t Sum(const std::uint8_t* bytes, std::size_t words) {
  std::uint16_t sum = 0;
  for (std::size_t i = 0; i < words; ++i) sum = Low16(sum + std::uint32_t{U16(bytes + 2 * i)});
  return sum;
}

bool AllZero(const std::uint8_t* begin, const std::uint8_t* end) {
  return std::all_of(begin, end, [](std::uint8_t byte) { return byte == 0; });
}

std::string Format(const char* format, unsigned a, unsigned b) {
  char text[160];
  std::snprintf(text, sizeof text, format, a, b);
  return text;
}

std::uint16_t KindOf(std::uint32_t index, std::uint32_t count) {
  if (count == 1) return kOnly;
  return index == 0 ? kFirst : index + 1 == count ? kLast : kMiddle;
}

}  // namespace

bool WireReceiver::Fail(const std::string& what) {
  if (violation_.empty()) violation_ = "write " + std::to_string(writes_) + ": " + what;
  return false;
}

void WireReceiver::Take(const std::uint8_t* data, std::size_t bytes,
                        std::vector<WireMessage>* messages) {
  ++writes_;
  if (bytes < kFramePayloadAt) {
    Fail(Format("%u bytes hold no frame header (%u)", static_cast<unsigned>(bytes),
                kFramePayloadAt));
    return;
  }
  // A frame that breaks the rules is reported once and read no further: hardware would drop it.
  if (!(IsCommandWrite(data, bytes) ? TakePacket(data, bytes, messages)
                                    : TakeGroup(data, bytes, messages)))
    partial_ = Partial{};
}

bool WireReceiver::ReadFrame(const std::uint8_t* bytes, std::size_t place, Frame* frame) {
  const auto at = static_cast<unsigned>(place);
  for (std::size_t i = 0; i < kMarks.size(); ++i) {
    if (U16(bytes + 2 * i) != kMarks[i]) {
      return Fail(
          Format("constant word %u of the header at byte %u", static_cast<unsigned>(i), at));
    }
  }
  if (Sum(bytes, kCheckedWords) != U16(bytes + kFrameCheckAt)) {
    return Fail(Format("header check %04X at byte %u", U16(bytes + kFrameCheckAt), at));
  }
  *frame = {
      U16(bytes + kFrameTypeAt),
      U16(bytes + kFrameKindAt),
      U16(bytes + kFrameSequenceAt),
      U16(bytes + kFrameIndexAt),
      U16(bytes + kFrameWordsAt),
      U16(bytes + kFrameChunksAt),
      (std::uint32_t{U16(bytes + kFrameLengthHighAt)} << 16) | U16(bytes + kFrameLengthLowAt)};
  return true;
}

// What must hold between a chunk, its message and the message before.
bool WireReceiver::CheckChunk(const Frame& frame, std::uint32_t words, std::uint32_t wordsMax) {
  const std::uint32_t count =
      frame.lengthWords / wordsMax + (frame.lengthWords % wordsMax != 0 ? 1 : 0);
  if (frame.chunkCount != Low16(count) || count == 0) {
    return Fail(Format("%u chunks announced for %u words", frame.chunkCount, frame.lengthWords));
  }
  if (frame.index >= count || frame.kind != KindOf(frame.index, count)) {
    return Fail(Format("chunk kind %04X for index %u", frame.kind, frame.index));
  }
  const std::uint32_t expectedWords =
      std::min(frame.lengthWords - frame.index * wordsMax, wordsMax);
  if (words != expectedWords)
    return Fail(Format("%u words in a chunk of %u", words, expectedWords));
  if (partial_.open) {
    const Frame& first = partial_.first;
    if (frame.index != partial_.nextIndex)
      return Fail(Format("chunk %u instead of %u", frame.index, partial_.nextIndex));
    if (frame.type != first.type || frame.sequence != first.sequence ||
        frame.lengthWords != first.lengthWords) {
      return Fail(
          Format("chunk %u belongs to another message, number %u", frame.index, frame.sequence));
    }
    return true;
  }
  if (frame.index != 0)
    return Fail(Format("message %u starts with chunk %u", frame.sequence, frame.index));
  if (numbered_ && frame.sequence != nextSequence_) {
    return Fail(Format("message number %u instead of %u", frame.sequence, nextSequence_));
  }
  return true;
}

void WireReceiver::Append(const Frame& frame, const std::uint8_t* payload, std::uint32_t words,
                          std::vector<WireMessage>* messages) {
  if (!partial_.open) {
    partial_ = Partial{};
    partial_.open = true;
    partial_.first = frame;
    partial_.bytes.reserve(2 * std::size_t{frame.lengthWords});
  }
  partial_.bytes.insert(partial_.bytes.end(), payload, payload + 2 * std::size_t{words});
  ++partial_.nextIndex;
  if (frame.kind != kOnly && frame.kind != kLast) return;
  messages->push_back({frame.type == kData, std::move(partial_.bytes)});
  partial_ = Partial{};
  numbered_ = true;
  nextSequence_ = Low16(frame.sequence + 1u);
}

bool WireReceiver::TakePacket(const std::uint8_t* data, std::size_t bytes,
                              std::vector<WireMessage>* messages) {
  if (bytes != kPacketBytes) {
    return Fail(
        Format("command packet of %u bytes, not %u", static_cast<unsigned>(bytes), kPacketBytes));
  }
  Frame frame{};
  if (!ReadFrame(data, 0, &frame)) return false;
  if (Sum(data, kPacketCheckAt / 2) != U16(data + kPacketCheckAt)) {
    return Fail(Format("packet check %04X, index %u", U16(data + kPacketCheckAt), frame.index));
  }
  if (frame.chunkWords != kPacketWords)
    return Fail(Format("word 22 is %u, not %u", frame.chunkWords, kPacketWords));
  const std::uint32_t before = frame.index * kPacketWords;
  const std::uint32_t words =
      frame.lengthWords > before ? std::min(frame.lengthWords - before, kPacketWords) : 0;
  if (!CheckChunk(frame, words, kPacketWords)) return false;
  const std::uint8_t* fill = data + kFramePayloadAt + 2 * std::size_t{words};
  if (!AllZero(fill, data + kPacketCheckAt))
    return Fail(Format("packet %u is not zero after word %u", frame.index, words));
  Append(frame, data + kFramePayloadAt, words, messages);
  return true;
}

// Up to seven slots. All but the message's last are full; the last ends the write after its words,
// unless it is the seventh.
bool WireReceiver::TakeGroup(const std::uint8_t* data, std::size_t bytes,
                             std::vector<WireMessage>* messages) {
  for (std::size_t slot = 0; slot < kGroupSlots; ++slot) {
    const std::size_t place = slot * kSlotBytes;
    if (bytes < place + kFramePayloadAt) {
      return Fail(Format("group of %u bytes ends in slot %u", static_cast<unsigned>(bytes),
                         static_cast<unsigned>(slot)));
    }
    Frame frame{};
    if (!ReadFrame(data + place, place, &frame)) return false;
    if (frame.type != kData)
      return Fail(Format("type word %04X at byte %u", frame.type, static_cast<unsigned>(place)));
    const std::uint32_t words = frame.chunkWords + 1u;
    if (words > kSlotWords) return Fail(Format("%u words in a slot of %u", words, kSlotWords));
    if (!CheckChunk(frame, words, kSlotWords)) return false;
    const bool last = frame.kind == kLast || frame.kind == kOnly;
    const std::size_t used = place + kFramePayloadAt + 2 * std::size_t{words};
    const bool shortGroup = last && slot + 1 < kGroupSlots;
    const std::size_t expected = shortGroup ? used : kGroupSlots * kSlotBytes;
    if ((last && bytes != expected) || bytes < (shortGroup ? used : used + kTailBytes)) {
      return Fail(Format("group of %u bytes, not %u", static_cast<unsigned>(bytes),
                         static_cast<unsigned>(expected)));
    }
    if (!shortGroup && !AllZero(data + used, data + used + kTailBytes)) {
      return Fail(Format("slot %u is not zero after word %u", static_cast<unsigned>(slot), words));
    }
    Append(frame, data + place + kFramePayloadAt, words, messages);
    if (last) return true;
  }
  if (bytes != kGroupSlots * kSlotBytes) {
    return Fail(Format("group of %u bytes, not %u", static_cast<unsigned>(bytes),
                       kGroupSlots * kSlotBytes));
  }
  return true;
}

bool IsCommandWrite(const std::uint8_t* data, std::size_t bytes) {
  return bytes >= kFramePayloadAt && U16(data + kFrameTypeAt) == kCmm;
}

std::vector<std::vector<std::uint8_t>> ReplyPacker::Pack(const std::vector<std::uint8_t>& reply,
                                                         std::uint32_t packetWords) {
  const auto words = static_cast<std::uint32_t>(reply.size() / 2);
  const std::uint32_t count = DivUp(words, packetWords);
  std::vector<std::vector<std::uint8_t>> packets;
  for (std::uint32_t index = 0; index < count; ++index) {
    const std::uint32_t chunk = std::min(words - index * packetWords, packetWords);
    std::vector<std::uint8_t> packet(kPacketBytes);
    for (std::size_t i = 0; i < kMarks.size(); ++i) PutU16(&packet[2 * i], kMarks[i]);
    PutU16(&packet[kFrameTypeAt], kCmm);
    PutU16(&packet[kFrameKindAt], KindOf(index, count));
    PutU16(&packet[kFrameSequenceAt], sequence_);
    PutU16(&packet[kFrameIndexAt], Low16(index));
    PutU16(&packet[kFrameWordsAt], Low16(chunk));
    PutU16(&packet[kFrameChunksAt], Low16(count));
    PutU16(&packet[kFrameLengthHighAt], Low16(words >> 16));
    PutU16(&packet[kFrameLengthLowAt], Low16(words));
    PutU16(&packet[kFrameCheckAt], Sum(packet.data(), kCheckedWords));
    std::copy_n(reply.begin() + 2 * index * packetWords, 2 * chunk,
                packet.begin() + kFramePayloadAt);
    PutU16(&packet[kPacketCheckAt], Sum(packet.data(), kPacketCheckAt / 2));
    packets.push_back(std::move(packet));
  }
  ++sequence_;
  return packets;
}

std::optional<std::vector<std::uint8_t>> ReplyJoiner::Take(const std::uint8_t* packet) {
  const std::uint16_t kind = U16(packet + kFrameKindAt);
  const std::size_t bytes = 2 * std::size_t{U16(packet + kFrameWordsAt)};
  const bool starts = kind == kFirst || kind == kOnly, ends = kind == kLast || kind == kOnly;
  const bool known = starts || ends || kind == kMiddle;
  if (starts || !known) reply_.clear();
  if (!known || kFramePayloadAt + bytes > kPacketBytes) return std::nullopt;
  reply_.insert(reply_.end(), packet + kFramePayloadAt, packet + kFramePayloadAt + bytes);
  if (!ends) return std::nullopt;
  return std::exchange(reply_, {});
}

}  // namespace qrn::sim
