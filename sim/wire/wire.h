// The wire as the printer's USB function sees it: takes bulk writes apart, as strictly as the
// frames allow, into messages, and packs replies into packets. It shares nothing with the driver's
// own framing.
#ifndef QRN_SIM_WIRE_WIRE_H_
#define QRN_SIM_WIRE_WIRE_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qrn::sim {

struct WireMessage {
  bool isData = false;  // swath data, else a command block
  std::vector<std::uint8_t> bytes;
};

class WireReceiver {
 public:
  // Takes one bulk write; the message that it completes, if any, is appended.
  void Take(const std::uint8_t* data, std::size_t bytes, std::vector<WireMessage>* messages);
  // The link was opened anew: a message that was not complete comes again from its start.
  void Reopened() { partial_ = Partial{}; }
  // The first violation with its place; "" if none.
  const std::string& Violation() const { return violation_; }

 private:
  struct Frame {
    std::uint16_t type, kind, sequence, index, chunkWords, chunkCount;
    std::uint32_t lengthWords;
  };
  struct Partial {  // the message in progress
    bool open = false;
    Frame first{};
    std::uint16_t nextIndex = 0;
    std::vector<std::uint8_t> bytes;
  };

  bool Fail(const std::string& what);
  bool ReadFrame(const std::uint8_t* bytes, std::size_t place, Frame* frame);
  bool TakePacket(const std::uint8_t* data, std::size_t bytes, std::vector<WireMessage>* messages);
  bool TakeGroup(const std::uint8_t* data, std::size_t bytes, std::vector<WireMessage>* messages);
  bool CheckChunk(const Frame& frame, std::uint32_t words, std::uint32_t wordsMax);
  void Append(const Frame& frame, const std::uint8_t* payload, std::uint32_t words,
              std::vector<WireMessage>* messages);

  Partial partial_;
  bool numbered_ = false;  // a first message has come
  std::uint16_t nextSequence_ = 0;
  std::uint64_t writes_ = 0;
  std::string violation_;
};

constexpr std::size_t kPacketBytes = 128;
constexpr std::uint32_t kPacketWords = 47;  // that one carries, of the 48 it has room for
// The kind of a frame: its place in the message.
constexpr std::uint16_t kFirst = 0xF001, kLast = 0xF002, kMiddle = 0xF004, kOnly = 0xF008;
// Places in a frame, u16 each up to the payload.
constexpr std::size_t kFrameTypeAt = 14, kFrameKindAt = 16, kFrameSequenceAt = 18,
                      kFrameIndexAt = 20, kFrameWordsAt = 22, kFrameChunksAt = 24,
                      kFrameLengthHighAt = 26, kFrameLengthLowAt = 28, kFrameCheckAt = 30,
                      kFramePayloadAt = 32;

// True when this bulk write carries a command packet, false when it carries swath data.
bool IsCommandWrite(const std::uint8_t* data, std::size_t bytes);

// Packs one reply into 128-byte packets of up to `packetWords` words.
class ReplyPacker {
 public:
  std::vector<std::vector<std::uint8_t>> Pack(const std::vector<std::uint8_t>& reply,
                                              std::uint32_t packetWords = kPacketWords);

 private:
  std::uint16_t sequence_ = 1;
};

// Puts replies together from the packets that a host reads, as a host does.
class ReplyJoiner {
 public:
  // The reply that ends with this packet of 128 bytes, if one does.
  std::optional<std::vector<std::uint8_t>> Take(const std::uint8_t* packet);
  // The read of the next packet failed: the host begins anew.
  void Drop() { reply_.clear(); }

 private:
  std::vector<std::uint8_t> reply_;
};

}  // namespace qrn::sim

#endif  // QRN_SIM_WIRE_WIRE_H_
