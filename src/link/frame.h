// The frame header that precedes every chunk on the USB link. All words are little-endian; lengths
// count 16-bit words. Plain data and arithmetic; any thread.
#ifndef QRN_LINK_FRAME_H_
#define QRN_LINK_FRAME_H_

#include <cstddef>
#include <cstdint>

namespace qrn {

// Data types of a message.
constexpr int kTypeCmm = 0;   // command block
constexpr int kTypeData = 1;  // swath data

enum ChunkKind : std::uint16_t {
  CHUNK_FIRST = 0xF001,
  CHUNK_LAST = 0xF002,
  CHUNK_MIDDLE = 0xF004,
  CHUNK_ONLY = 0xF008,
};

constexpr std::uint16_t kFrameStart[7] = {0xABCD, 0xEC38, 0xB92B, 0x7CAE, 0x9899, 0xC2F0, 0xDC35};
constexpr std::uint16_t kFrameTypeCmm = 0x0BAA;
constexpr std::uint16_t kFrameTypeData = 0x85B5;

// Sixteen words; the wire carries them in this order.
struct FrameHeader {
  std::uint16_t start[7];    // 0  kFrameStart
  std::uint16_t type;        // 14 kFrameTypeCmm or kFrameTypeData
  std::uint16_t kind;        // 16 ChunkKind
  std::uint16_t sequence;    // 18 number of the message
  std::uint16_t index;       // 20 of the chunk in the message
  std::uint16_t chunkWords;  // 22 CMM: 47; DATA: words in this chunk - 1; replies: payload words
  std::uint16_t chunkCount;  // 24 chunks in the message
  std::uint16_t lengthHigh;  // 26 words in the message
  std::uint16_t lengthLow;   // 28
  std::uint16_t check;       // 30 sum of the 15 words before
};
constexpr std::uint32_t kFrameBytes = 32;
static_assert(sizeof(FrameHeader) == kFrameBytes && offsetof(FrameHeader, type) == 14);
static_assert(offsetof(FrameHeader, chunkWords) == 22 && offsetof(FrameHeader, check) == 30);

// A CMM packet: header, 47 words at most, zero fill, packet check.
constexpr std::uint32_t kPacketBytes = 128;
constexpr std::uint32_t kPacketChunkWords = 47;
constexpr std::uint32_t kPacketCheckAt = 126;
static_assert(kFrameBytes + 2 * kPacketChunkWords == kPacketCheckAt &&
              kPacketCheckAt + 2 == kPacketBytes);
// What a received packet can hold.
constexpr std::uint32_t kPacketRoomWords = (kPacketBytes - kFrameBytes) / 2;

// A DATA slot: header, 4064 words at most, 32 zero bytes. Slots are written seven at a time.
constexpr std::uint32_t kSlotBytes = 8192;
constexpr std::uint32_t kSlotChunkWords = 4064;
constexpr std::uint32_t kSlotTailBytes = 32;
constexpr std::uint32_t kGroupSlots = 7;
static_assert(kFrameBytes + 2 * kSlotChunkWords + kSlotTailBytes == kSlotBytes);

// Sum of little-endian words, modulo 65536.
std::uint16_t WordSum16(const std::uint8_t* bytes, std::uint32_t words);

// Kind of chunk `index` of `count` chunks, with `remaining` words still to send and room for `max`
// words in a chunk.
ChunkKind ChunkKindOf(std::uint32_t index, std::uint32_t count, std::uint32_t remaining,
                      std::uint32_t max);

// The header of a message of `words` words, cut into chunks of at most `max`; the chunk's own
// fields are zero.
FrameHeader MessageHeader(std::uint16_t type, std::uint16_t sequence, std::uint32_t words,
                          std::uint32_t max);

// Writes the header with its check to 32 bytes.
void EncodeFrame(const FrameHeader& header, std::uint8_t* bytes);

}  // namespace qrn

#endif  // QRN_LINK_FRAME_H_
