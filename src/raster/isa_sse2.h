// SSE2, one lane.
#ifndef QRN_RASTER_ISA_SSE2_H_
#define QRN_RASTER_ISA_SSE2_H_

#include <emmintrin.h>

#include <cstddef>
#include <cstdint>

namespace qrn {
namespace {

struct Sse2 {
  using Vector = __m128i;
  static constexpr std::uint32_t kBytes = 16, kLanes = 1;

  static Vector Load(const std::uint8_t* bytes) {
    return _mm_loadu_si128(reinterpret_cast<const Vector*>(bytes));
  }
  static Vector LoadLanes(const std::uint8_t* bytes, std::size_t) { return Load(bytes); }
  static void Store(std::uint8_t* bytes, Vector a) {
    _mm_storeu_si128(reinterpret_cast<Vector*>(bytes), a);
  }
  // Past the caches; `bytes` aligned to a vector.
  static void Stream(std::uint8_t* bytes, Vector a) {
    _mm_stream_si128(reinterpret_cast<Vector*>(bytes), a);
  }
  // Other threads see what was streamed before what is stored from here on.
  static void StreamEnd() { _mm_sfence(); }
  static void StoreLane(std::uint8_t* bytes, Vector a, std::uint32_t) { Store(bytes, a); }
  static void StoreHalfLane(std::uint8_t* bytes, Vector a, std::uint32_t) {
    _mm_storel_epi64(reinterpret_cast<Vector*>(bytes), a);
  }
  static bool IsZero(Vector a) {
    return _mm_movemask_epi8(_mm_cmpeq_epi8(a, _mm_setzero_si128())) == 0xFFFF;
  }
  static Vector Set8(int value) { return _mm_set1_epi8(static_cast<char>(value)); }
  static Vector Set16(short value) { return _mm_set1_epi16(value); }
  static Vector And(Vector a, Vector b) { return _mm_and_si128(a, b); }
  static Vector Or(Vector a, Vector b) { return _mm_or_si128(a, b); }
  static Vector Xor(Vector a, Vector b) { return _mm_xor_si128(a, b); }
  // Of 16-bit numbers.
  template <int kBits>
  static Vector ShiftLeft(Vector a) {
    return _mm_slli_epi16(a, kBits);
  }
  template <int kBits>
  static Vector ShiftRight(Vector a) {
    return _mm_srli_epi16(a, kBits);
  }
  template <int kBits>
  static Vector ShiftLeft64(Vector a) {
    return _mm_slli_epi64(a, kBits);
  }
  template <int kBits>
  static Vector ShiftRight64(Vector a) {
    return _mm_srli_epi64(a, kBits);
  }
  static Vector Pack(Vector a, Vector b) { return _mm_packus_epi16(a, b); }
  static Vector UnpackLow(Vector a, Vector b) { return _mm_unpacklo_epi8(a, b); }
  static Vector UnpackHigh(Vector a, Vector b) { return _mm_unpackhi_epi8(a, b); }
  static Vector HighHalf(Vector a) { return _mm_unpackhi_epi64(a, a); }
};

}  // namespace
}  // namespace qrn

#endif  // QRN_RASTER_ISA_SSE2_H_
