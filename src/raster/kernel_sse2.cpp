// The kernel for SSE2, which every processor has that runs the DLL.
#include "raster/kernels.h"

#ifdef __SSE2__

#include <emmintrin.h>

#include <cstring>

#include "job/print_out.h"
#include "job/row_layout.h"

namespace qrn {
namespace {

using Vector = __m128i;

Vector Load(const std::uint8_t* bytes) {
  return _mm_loadu_si128(reinterpret_cast<const Vector*>(bytes));
}
void Store(std::uint8_t* bytes, Vector a) { _mm_storeu_si128(reinterpret_cast<Vector*>(bytes), a); }
Vector All8(int value) { return _mm_set1_epi8(static_cast<char>(value)); }
Vector And(Vector a, Vector b) { return _mm_and_si128(a, b); }
Vector Or(Vector a, Vector b) { return _mm_or_si128(a, b); }
Vector Xor(Vector a, Vector b) { return _mm_xor_si128(a, b); }
bool IsZero(Vector a) {
  return _mm_movemask_epi8(_mm_cmpeq_epi8(a, _mm_setzero_si128())) == 0xFFFF;
}

// Shifts of 16-bit numbers: the masks of their users leave nothing that has crossed a byte.
template <int kBits>
Vector ShiftLeft(Vector a) {
  return _mm_slli_epi16(a, kBits);
}
template <int kBits>
Vector ShiftRight(Vector a) {
  return _mm_srli_epi16(a, kBits);
}

// Exchanges the kShift upper bits of a with the lower ones of b, in fields of mask.
template <int kShift>
void SwapBits(Vector& a, Vector& b, int mask) {
  const Vector differ = And(Xor(ShiftRight<kShift>(a), b), All8(mask));
  b = Xor(b, differ);
  a = Xor(a, ShiftLeft<kShift>(differ));
}

// ---- deinterleave

Vector HighHalf(Vector a) { return _mm_unpackhi_epi64(a, a); }

// Even and odd bytes of two vectors.
void SplitPair(Vector a, Vector b, Vector& even, Vector& odd) {
  even = _mm_packus_epi16(And(a, _mm_set1_epi16(0x00FF)), And(b, _mm_set1_epi16(0x00FF)));
  odd = _mm_packus_epi16(ShiftRight<8>(a), ShiftRight<8>(b));
}

// Of 48 bytes, byte i goes to place 16 x i mod 47: four times the shuffle that interleaves the
// first with the second half and so takes byte i to place 2 x i mod 47.
void SplitByThree(Vector (&v)[3]) {
  for (int round = 0; round < 4; ++round) {
    const Vector a = _mm_unpacklo_epi8(v[0], HighHalf(v[1]));
    const Vector b = _mm_unpacklo_epi8(HighHalf(v[0]), v[2]);
    const Vector c = _mm_unpacklo_epi8(v[1], HighHalf(v[2]));
    v[0] = a, v[1] = b, v[2] = c;
  }
}

// Interleaved streams of bytes into one vector for each stream.
template <std::uint32_t kStreams>
void SplitStreams(Vector (&v)[kStreams]) {
  if constexpr (kStreams == 3) {
    SplitByThree(v);
  } else if constexpr (kStreams % 2 == 0) {
    Vector even[kStreams / 2], odd[kStreams / 2];
    for (std::uint32_t i = 0; i < kStreams / 2; ++i)
      SplitPair(v[2 * i], v[2 * i + 1], even[i], odd[i]);
    SplitStreams(even);
    SplitStreams(odd);
    for (std::uint32_t i = 0; i < kStreams / 2; ++i) v[2 * i] = even[i], v[2 * i + 1] = odd[i];
  }
}

// Pixel kPixel of the group to place kTo of the run's byte.
template <std::uint32_t kPixel, std::uint32_t kTo, std::uint32_t kStreams>
Vector Pick(const Vector (&v)[kStreams]) {
  constexpr int kFromBit = 6 - 2 * static_cast<int>(kPixel % kPixelsPerByte), kToBit = 2 * kTo;
  const Vector bits = And(v[kPixel / kPixelsPerByte], All8(3 << kFromBit));
  if constexpr (kFromBit > kToBit) {
    return ShiftRight<kFromBit - kToBit>(bits);
  } else {
    return ShiftLeft<kToBit - kFromBit>(bits);
  }
}

// The run's byte of phase kPhase and of all after it.
template <std::uint32_t kPhases, std::uint32_t kPhase>
void PickPhases(const Vector (&v)[kPhases], Vector (&split)[kPhases]) {
  if constexpr (kPhase < kPhases) {
    split[kPhase] = Or(Or(Pick<kPhase, 0>(v), Pick<kPhase + kPhases, 1>(v)),
                       Or(Pick<kPhase + 2 * kPhases, 2>(v), Pick<kPhase + 3 * kPhases, 3>(v)));
    PickPhases<kPhases, kPhase + 1>(v, split);
  }
}

// The same where every byte has one pixel of each of four phases: 4 x 4 pixels transposed.
template <std::uint32_t kPhases>
void TransposePixels(const Vector (&v)[kPhases], Vector (&split)[kPhases]) {
  constexpr std::uint32_t kApart = kPhases / 4;
  for (std::uint32_t i = 0; i < kApart; ++i) {
    Vector p[4] = {v[i], v[i + kApart], v[i + 2 * kApart], v[i + 3 * kApart]};
    SwapBits<4>(p[0], p[2], 0x0F);
    SwapBits<4>(p[1], p[3], 0x0F);
    SwapBits<2>(p[0], p[1], 0x33);
    SwapBits<2>(p[2], p[3], 0x33);
    for (std::uint32_t k = 0; k < 4; ++k) split[4 * i + k] = p[3 - k];
  }
}

// A block of kPhases x 16 bytes gives 16 bytes of every run.
template <std::uint32_t kPhases>
unsigned DeinterleaveInto(const std::uint8_t* line, std::size_t vectors, std::uint8_t* runs,
                          std::size_t runsApart) {
  Vector ink[kPhases] = {};
  for (; vectors > 0; --vectors) {
    Vector v[kPhases];
    for (std::uint32_t i = 0; i < kPhases; ++i) v[i] = Load(line + i * kVectorBytes);
    SplitStreams(v);
    Vector split[kPhases];
    if constexpr (kPhases % 4 == 0) {
      TransposePixels(v, split);
    } else {
      PickPhases<kPhases, 0>(v, split);
    }
    for (std::uint32_t phase = 0; phase < kPhases; ++phase) {
      Store(runs + phase * runsApart, split[phase]);
      ink[phase] = Or(ink[phase], split[phase]);
    }
    line += kPhases * kVectorBytes;
    runs += kVectorBytes;
  }
  unsigned inked = 0;
  for (std::uint32_t phase = 0; phase < kPhases; ++phase) {
    if (!IsZero(ink[phase])) inked |= 1u << phase;
  }
  return inked;
}

unsigned Deinterleave(std::uint32_t phases, const std::uint8_t* line, std::size_t vectors,
                      std::uint8_t* runs, std::size_t runsApart) {
  switch (phases) {
    case 3:
      return DeinterleaveInto<3>(line, vectors, runs, runsApart);
    case 4:
      return DeinterleaveInto<4>(line, vectors, runs, runsApart);
    case 6:
      return DeinterleaveInto<6>(line, vectors, runs, runsApart);
    default:
      return DeinterleaveInto<8>(line, vectors, runs, runsApart);
  }
}

// ---- align

template <int kShift, bool kAdd>
void AlignBy(const std::uint8_t* const (&runs)[kGroupNozzles], std::uint8_t* rows) {
  for (std::uint32_t nozzle = 0; nozzle < kGroupNozzles; ++nozzle, rows += 2 * kJetBytes) {
    const std::uint8_t* run = runs[nozzle];
    if (run == nullptr) continue;
    for (std::uint32_t i = 0; i < kStripBytes; i += kVectorBytes) {
      Vector value = Load(run + i);
      // 64-bit shifts lose the bits that come in from the next byte: those are taken from there.
      if constexpr (kShift != 0) {
        value = Or(_mm_srli_epi64(value, kShift), _mm_slli_epi64(Load(run + i + 1), 8 - kShift));
      }
      if constexpr (kAdd) value = Or(value, Load(rows + i));
      Store(rows + i, value);
    }
  }
}

void Align(const std::uint8_t* const (&runs)[kGroupNozzles], unsigned shift, std::uint8_t* rows,
           bool add) {
  switch (shift) {
    case 0:
      return add ? AlignBy<0, true>(runs, rows) : AlignBy<0, false>(runs, rows);
    case 2:
      return add ? AlignBy<2, true>(runs, rows) : AlignBy<2, false>(runs, rows);
    case 4:
      return add ? AlignBy<4, true>(runs, rows) : AlignBy<4, false>(runs, rows);
    default:
      return add ? AlignBy<6, true>(runs, rows) : AlignBy<6, false>(runs, rows);
  }
}

// ---- pack
//
// One block is 16 bytes of every row, 64 columns. c0..c3: a byte's columns; a0, a1: plane 0, 1.
//
//   jet: row 0  | c3a0 c3a1 .. c0a0 c0a1 | x 16      bit 1 = c0a0: | row 7 .. row 0 | x 16
//        ..       one byte                     -->   bit 0 = c0a1: | row 7 .. row 0 | x 16
//        row 7  | c3a0 c3a1 .. c0a0 c0a1 | x 16      ..              what the jet fires in c0
//
//   bit 1: jet 0  | column 0 | 4 | 8 | .. | 60 |     column 0:  | jet 0 | 1 | .. | 15 | of plane 0
//          ..                                  -->   column 4:  | jet 0 | 1 | .. | 15 |
//          jet 15 | column 0 | 4 | 8 | .. | 60 |     ..

// Eight bits of every row byte: 2 x column + 1 is plane 0 of the byte's four columns, 2 x column
// plane 1.
constexpr std::uint32_t kBits = 8;

struct Transposed {
  Vector bits[kBits][kGroupJets];
};

// Of all pairs of rows kApart from each other.
template <int kApart>
void SwapRows(Vector (&r)[kNozzleRows], int mask) {
#pragma GCC unroll 8
  for (std::uint32_t i = 0; i < kNozzleRows; ++i) {
    if ((i & kApart) == 0) SwapBits<kApart>(r[i], r[i + kApart], mask);
  }
}

// Joins the nozzle rows of a jet: 8 x 8 bits transposed, so that bit b of row s becomes bit s of
// bits[b].
void JoinRows(const JetGroup& jets, std::uint32_t jet, std::uint32_t at, Transposed& transposed) {
  Vector r[kNozzleRows] = {};
  if (jets.occupancy[jet] != 0) {
    for (std::uint32_t row = 0; row < kNozzleRows; ++row) r[row] = Load(jets.rows[jet][row] + at);
    SwapRows<4>(r, 0x0F);
    SwapRows<2>(r, 0x33);
    SwapRows<1>(r, 0x55);
  }
  for (std::uint32_t bit = 0; bit < kBits; ++bit) transposed.bits[bit][jet] = r[bit];
}

// 16 x 16 bytes transposed: byte i of jet j becomes byte j of v[i].
void Transpose(Vector (&v)[kGroupJets]) {
#pragma GCC unroll 4
  for (int round = 0; round < 4; ++round) {
    Vector w[kGroupJets];
#pragma GCC unroll 8
    for (std::uint32_t i = 0; i < kGroupJets / 2; ++i) {
      w[2 * i] = _mm_unpacklo_epi8(v[i], v[i + kGroupJets / 2]);
      w[2 * i + 1] = _mm_unpackhi_epi8(v[i], v[i + kGroupJets / 2]);
    }
#pragma GCC unroll 16
    for (std::uint32_t i = 0; i < kGroupJets; ++i) v[i] = w[i];
  }
}

// A block of four columns for each byte. kWhole: all its columns, eight nozzles.
template <bool kWhole>
void PackBlock(const Transposed& transposed, std::uint32_t nozzles, std::uint32_t left,
               std::uint8_t* out, std::ptrdiff_t columnStep) {
  for (std::uint32_t bit = 0; bit < kBits; ++bit) {
    Vector v[kGroupJets];
#pragma GCC unroll 16
    for (std::uint32_t i = 0; i < kGroupJets; ++i) v[i] = transposed.bits[bit][i];
    Transpose(v);
    const std::uint32_t firstColumn = bit / 2;
    std::uint8_t* const plane = out + (bit % 2 == 1 ? 0 : kPlaneBytes);
#pragma GCC unroll 16
    for (std::uint32_t i = 0; i < kGroupJets; ++i) {
      const std::uint32_t column = 4 * i + firstColumn;
      if (!kWhole && column >= left) continue;
      std::uint8_t* const run = plane + static_cast<std::ptrdiff_t>(column) * columnStep;
      if (kWhole || nozzles == kGroupNozzles) {
        Store(run, v[i]);
      } else {
        _mm_storel_epi64(reinterpret_cast<Vector*>(run), v[i]);
      }
    }
  }
}

void Pack(const JetGroup& jets, std::uint32_t firstByte, std::uint32_t nozzles,
          std::uint32_t columns, std::uint8_t* out, std::ptrdiff_t columnStep) {
  constexpr std::uint32_t kBlockColumns = 4 * kVectorBytes;
  for (std::uint32_t column = 0; column < columns; column += kBlockColumns) {
    Transposed transposed;
    for (std::uint32_t jet = 0; jet < kGroupJets; ++jet)
      JoinRows(jets, jet, firstByte + column / 4, transposed);
    const std::uint32_t left = columns - column;
    std::uint8_t* const first = out + static_cast<std::ptrdiff_t>(column) * columnStep;
    if (nozzles == kGroupNozzles && left >= kBlockColumns) {
      PackBlock<true>(transposed, nozzles, left, first, columnStep);
    } else {
      PackBlock<false>(transposed, nozzles, left, first, columnStep);
    }
  }
}

// ---- stream

void Stream(std::uint8_t* to, const std::uint8_t* from, std::size_t bytes) {
  const std::size_t head = (0 - reinterpret_cast<std::uintptr_t>(to)) % kVectorBytes;
  if (bytes < head + kVectorBytes) {
    std::memcpy(to, from, bytes);
    return;
  }
  std::memcpy(to, from, head);
  std::size_t at = head;
  for (; at + kVectorBytes <= bytes; at += kVectorBytes)
    _mm_stream_si128(reinterpret_cast<Vector*>(to + at), Load(from + at));
  std::memcpy(to + at, from + at, bytes - at);
  _mm_sfence();  // other threads see it before what is stored from here on
}

}  // namespace

extern const Kernel kSse2Kernel;
constinit const Kernel kSse2Kernel = {
    .name = "sse2",
    .deinterleave = Deinterleave,
    .align = Align,
    .pack = Pack,
    .stream = Stream,
};

}  // namespace qrn

#endif  // __SSE2__
