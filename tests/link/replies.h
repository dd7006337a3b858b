// Reply packets as a printer sends them, made by hand for tests of the link.
#ifndef QRN_TESTS_LINK_REPLIES_H_
#define QRN_TESTS_LINK_REPLIES_H_

#include <cstdint>
#include <vector>

#include "base/bytes.h"

namespace qrn {

using Bytes = std::vector<std::uint8_t>;

// One packet of a kind that announces `words` words and holds `payload`.
inline Bytes Packet(std::uint16_t kind, std::uint16_t words, const Bytes& payload) {
  Bytes packet(128, 0xEE);
  PutU16(&packet[16], kind);
  PutU16(&packet[22], words);
  std::copy(payload.begin(), payload.end(), packet.begin() + 32);
  return packet;
}

inline Bytes Words(std::initializer_list<std::uint16_t> words) {
  Bytes bytes;
  for (const std::uint16_t word : words) {
    bytes.push_back(Low8(word));
    bytes.push_back(Low8(word >> 8));
  }
  return bytes;
}

// A whole reply in one packet.
inline Bytes Reply(std::initializer_list<std::uint16_t> words) {
  return Packet(0xF008, static_cast<std::uint16_t>(words.size()), Words(words));
}

}  // namespace qrn

#endif  // QRN_TESTS_LINK_REPLIES_H_
