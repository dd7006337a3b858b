// Commands and frames as a host writes them, put together by hand.
#ifndef QRN_TESTS_SUPPORT_WIRE_BYTES_H_
#define QRN_TESTS_SUPPORT_WIRE_BYTES_H_

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <utility>
#include <vector>

#include "base/bytes.h"

namespace qrn::sim {

using Bytes = std::vector<std::uint8_t>;

// A packet with words at some offsets.
inline Bytes Command(std::uint8_t code,
                     std::initializer_list<std::pair<std::size_t, std::uint16_t>> words = {}) {
  Bytes packet(64);
  packet[0] = code;
  for (const auto& [at, word] : words) PutU16(&packet[at], word);
  return packet;
}

inline Bytes Connect() { return Command(2, {{32, 0x1111}, {34, 0x2013}}); }

// A job create, or what has the same fields under another code.
inline Bytes InJob(std::uint8_t code) {
  return Command(code, {{6, 0xCF}, {8, 4}, {10, 0x0119}, {14, 1800}, {16, 1440}, {34, 0x2015}});
}
inline Bytes JobCreate() { return InJob(3); }

inline Bytes Swath(std::uint32_t number, std::uint32_t bytes) {
  Bytes packet = Command(4, {{36, 377}});
  PutU32(&packet[8], bytes);
  PutU32(&packet[48], number);
  return packet;
}

inline Bytes BufferQuery(std::uint32_t bytes) {
  return Command(12, {{8, Low16(bytes)}, {10, Low16(bytes >> 16)}});
}

inline void Sign(Bytes* packet) {
  const auto sum = [packet](std::size_t words) {
    std::uint32_t total = 0;
    for (std::size_t i = 0; i < words; ++i) total += U16(&(*packet)[2 * i]);
    return Low16(total);
  };
  PutU16(&(*packet)[30], sum(15));
  if (packet->size() == 128 && U16(&(*packet)[14]) == 0x0BAA) PutU16(&(*packet)[126], sum(63));
}

inline Bytes Frame(std::uint16_t type, std::uint16_t kind, std::uint16_t number,
                   std::uint16_t index, std::uint16_t word22, std::uint16_t count,
                   std::uint32_t words, std::size_t size) {
  Bytes bytes(size);
  const std::uint16_t header[15] = {
      0xABCD,      0xEC38, 0xB92B, 0x7CAE, 0x9899, 0xC2F0, 0xDC35,
      type,        kind,   number, index,  word22, count,  Low16(words >> 16),
      Low16(words)};
  for (std::size_t i = 0; i < 15; ++i) PutU16(&bytes[2 * i], header[i]);
  Sign(&bytes);
  return bytes;
}

inline Bytes CommandWrite(std::uint16_t number) {
  return Frame(0x0BAA, 0xF008, number, 0, 47, 1, 32, 128);
}

}  // namespace qrn::sim

#endif  // QRN_TESTS_SUPPORT_WIRE_BYTES_H_
