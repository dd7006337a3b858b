#include "link/frame.h"

#include <algorithm>
#include <iterator>

#include "base/bytes.h"

namespace qrn {
namespace {

constexpr std::uint32_t kCheckedWords = offsetof(FrameHeader, check) / 2;

}  // namespace

std::uint16_t WordSum16(const std::uint8_t* bytes, std::uint32_t words) {
  std::uint32_t sum = 0;
  for (std::uint32_t i = 0; i < words; ++i) sum += U16(bytes + 2 * std::size_t{i});
  return Low16(sum);
}

ChunkKind ChunkKindOf(std::uint32_t index, std::uint32_t count, std::uint32_t remaining,
                      std::uint32_t max) {
  if (count == 1) return CHUNK_ONLY;
  if (remaining <= max) return CHUNK_LAST;
  return index == 0 ? CHUNK_FIRST : CHUNK_MIDDLE;
}

FrameHeader MessageHeader(std::uint16_t type, std::uint16_t sequence, std::uint32_t words,
                          std::uint32_t max) {
  FrameHeader header{};
  std::copy(std::begin(kFrameStart), std::end(kFrameStart), header.start);
  header.type = type;
  header.sequence = sequence;
  header.chunkCount = Low16(words / max + (words % max != 0 ? 1u : 0u));
  header.lengthHigh = Low16(words >> 16);
  header.lengthLow = Low16(words);
  return header;
}

void EncodeFrame(const FrameHeader& header, std::uint8_t* bytes) {
  for (std::size_t i = 0; i < std::size(header.start); ++i) PutU16(bytes + 2 * i, header.start[i]);
  PutU16(bytes + offsetof(FrameHeader, type), header.type);
  PutU16(bytes + offsetof(FrameHeader, kind), header.kind);
  PutU16(bytes + offsetof(FrameHeader, sequence), header.sequence);
  PutU16(bytes + offsetof(FrameHeader, index), header.index);
  PutU16(bytes + offsetof(FrameHeader, chunkWords), header.chunkWords);
  PutU16(bytes + offsetof(FrameHeader, chunkCount), header.chunkCount);
  PutU16(bytes + offsetof(FrameHeader, lengthHigh), header.lengthHigh);
  PutU16(bytes + offsetof(FrameHeader, lengthLow), header.lengthLow);
  PutU16(bytes + offsetof(FrameHeader, check), WordSum16(bytes, kCheckedWords));
}

}  // namespace qrn
