// AVX2, two lanes.
#ifndef QRN_RASTER_ISA_AVX2_H_
#define QRN_RASTER_ISA_AVX2_H_

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

#include "raster/isa_sse2.h"

namespace qrn {
namespace {

struct Avx2 {
  using Vector = __m256i;
  using OneLane = Sse2;
  static constexpr std::uint32_t kBytes = 32, kLanes = 2;

  static Vector Load(const std::uint8_t* bytes) {
    return _mm256_loadu_si256(reinterpret_cast<const Vector*>(bytes));
  }
  static Vector LoadLanes(const std::uint8_t* bytes, std::size_t apart) {
    return _mm256_set_m128i(Sse2::Load(bytes + apart), Sse2::Load(bytes));
  }
  static void Store(std::uint8_t* bytes, Vector a) {
    _mm256_storeu_si256(reinterpret_cast<Vector*>(bytes), a);
  }
  static __m128i Lane(Vector a, std::uint32_t lane) {
    return lane == 0 ? _mm256_castsi256_si128(a) : _mm256_extracti128_si256(a, 1);
  }
  // Past the caches; `bytes` aligned to a vector.
  static void Stream(std::uint8_t* bytes, Vector a) {
    _mm256_stream_si256(reinterpret_cast<Vector*>(bytes), a);
  }
  // Other threads see what was streamed before what is stored from here on.
  static void StreamEnd() { _mm_sfence(); }
  static void StoreLane(std::uint8_t* bytes, Vector a, std::uint32_t lane) {
    Sse2::StoreLane(bytes, Lane(a, lane), 0);
  }
  static void StoreHalfLane(std::uint8_t* bytes, Vector a, std::uint32_t lane) {
    Sse2::StoreHalfLane(bytes, Lane(a, lane), 0);
  }
  static bool IsZero(Vector a) { return _mm256_testz_si256(a, a) != 0; }
  static Vector Set8(int value) { return _mm256_set1_epi8(static_cast<char>(value)); }
  static Vector Set16(short value) { return _mm256_set1_epi16(value); }
  static Vector And(Vector a, Vector b) { return _mm256_and_si256(a, b); }
  static Vector Or(Vector a, Vector b) { return _mm256_or_si256(a, b); }
  static Vector Xor(Vector a, Vector b) { return _mm256_xor_si256(a, b); }
  // Of 16-bit numbers.
  template <int kBits>
  static Vector ShiftLeft(Vector a) {
    return _mm256_slli_epi16(a, kBits);
  }
  template <int kBits>
  static Vector ShiftRight(Vector a) {
    return _mm256_srli_epi16(a, kBits);
  }
  template <int kBits>
  static Vector ShiftLeft64(Vector a) {
    return _mm256_slli_epi64(a, kBits);
  }
  template <int kBits>
  static Vector ShiftRight64(Vector a) {
    return _mm256_srli_epi64(a, kBits);
  }
  static Vector Pack(Vector a, Vector b) { return _mm256_packus_epi16(a, b); }
  static Vector UnpackLow(Vector a, Vector b) { return _mm256_unpacklo_epi8(a, b); }
  static Vector UnpackHigh(Vector a, Vector b) { return _mm256_unpackhi_epi8(a, b); }
  static Vector HighHalf(Vector a) { return _mm256_unpackhi_epi64(a, a); }
};

}  // namespace
}  // namespace qrn

#endif  // QRN_RASTER_ISA_AVX2_H_
