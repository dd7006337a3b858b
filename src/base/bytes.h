// Little-endian access to bytes that travel, independent of the machine's byte order and alignment,
// and the named cuts of wider values. The caller has checked the length.
#ifndef QRN_BASE_BYTES_H_
#define QRN_BASE_BYTES_H_

#include <cstdint>

namespace qrn {

constexpr std::uint8_t Low8(std::uint64_t value) {
  return static_cast<std::uint8_t>(value & 0xFFu);
}
constexpr std::uint16_t Low16(std::uint64_t value) {
  return static_cast<std::uint16_t>(value & 0xFFFFu);
}
constexpr std::uint32_t Low32(std::uint64_t value) {
  return static_cast<std::uint32_t>(value & 0xFFFFFFFFu);
}

constexpr std::uint16_t U16(const std::uint8_t* bytes) { return Low16(bytes[0] | (bytes[1] << 8)); }
constexpr std::uint32_t U32(const std::uint8_t* bytes) {
  return U16(bytes) | (static_cast<std::uint32_t>(U16(bytes + 2)) << 16);
}
constexpr void PutU16(std::uint8_t* bytes, std::uint16_t value) {
  bytes[0] = Low8(value);
  bytes[1] = Low8(value >> 8);
}
constexpr void PutU32(std::uint8_t* bytes, std::uint32_t value) {
  PutU16(bytes, Low16(value));
  PutU16(bytes + 2, Low16(value >> 16));
}

template <class T>
constexpr T DivUp(T value, T divisor) {
  return (value + divisor - 1) / divisor;
}

// Truncates toward zero and keeps the low 16 bits, defined for every input (a plain cast is not):
// values that no 64-bit integer holds, and NaN, give 0.
constexpr std::uint16_t TruncateLow16(double value) {
  constexpr double kLimit = 9.2e18;
  if (!(value > -kLimit && value < kLimit)) return 0;
  return Low16(static_cast<std::uint64_t>(static_cast<std::int64_t>(value)));
}

}  // namespace qrn

#endif  // QRN_BASE_BYTES_H_
