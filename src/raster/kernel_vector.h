// The kernel for vectors of one or two lanes of 16 bytes. Isa names the operations of an
// instruction set; every one works within the lanes. Only the files of the kernels include this:
// they are compiled for their instruction set, so nothing here may be shared with other files.
#ifndef QRN_RASTER_KERNEL_VECTOR_H_
#define QRN_RASTER_KERNEL_VECTOR_H_

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "raster/kernels.h"
#include "raster/print_out.h"

namespace qrn {

template <class Isa>
class VectorKernel {
 public:
  static unsigned Sort(std::uint32_t phases, const std::uint8_t* line, std::size_t vectors,
                       std::uint8_t* runs, std::size_t runBytes) {
    switch (phases) {
      case 3:
        return SortInto<3>(line, vectors, runs, runBytes);
      case 4:
        return SortInto<4>(line, vectors, runs, runBytes);
      case 6:
        return SortInto<6>(line, vectors, runs, runBytes);
      case 8:
        return SortInto<8>(line, vectors, runs, runBytes);
      default:
        return 0;
    }
  }

  static void Align(const std::uint8_t* const (&runs)[kGroupNozzles], unsigned shift,
                    std::uint8_t* rows, bool add) {
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

  static void Lay(const JetRows& jets, std::uint32_t firstByte, std::uint32_t nozzles,
                  std::uint32_t columns, std::uint8_t* out, std::ptrdiff_t columnStep) {
    constexpr std::uint32_t kBlockColumns = 4 * Isa::kBytes;
    for (std::uint32_t column = 0; column < columns; column += kBlockColumns) {
      Turned turned;
      for (std::uint32_t jet = 0; jet < kGroupJets; ++jet)
        JoinRows(jets, jet, firstByte + column / 4, turned);
      const std::uint32_t left = columns - column;
      std::uint8_t* const first = out + static_cast<std::ptrdiff_t>(column) * columnStep;
      if (nozzles == kGroupNozzles && left >= kBlockColumns) {
        LayBlock<true>(turned, nozzles, left, first, columnStep);
      } else {
        LayBlock<false>(turned, nozzles, left, first, columnStep);
      }
    }
  }

  static void Stream(std::uint8_t* to, const std::uint8_t* from, std::size_t bytes) {
    const std::size_t head = (0 - reinterpret_cast<std::uintptr_t>(to)) % Isa::kBytes;
    if (bytes < head + Isa::kBytes) {
      std::memcpy(to, from, bytes);
      return;
    }
    std::memcpy(to, from, head);
    std::size_t at = head;
    for (; at + Isa::kBytes <= bytes; at += Isa::kBytes) Isa::Stream(to + at, Isa::Load(from + at));
    std::memcpy(to + at, from + at, bytes - at);
    Isa::StreamEnd();
  }

 private:
  using Vector = typename Isa::Vector;

  // ---- sort

  // Even and odd bytes of two vectors.
  static void SplitPair(Vector a, Vector b, Vector& even, Vector& odd) {
    even = Isa::Pack(Isa::And(a, Isa::Set16(0x00FF)), Isa::And(b, Isa::Set16(0x00FF)));
    odd = Isa::Pack(Isa::template ShiftRight<8>(a), Isa::template ShiftRight<8>(b));
  }

  // Of 48 bytes, byte i goes to place 16 x i mod 47: four times the shuffle that interleaves the
  // first with the second half and so takes byte i to place 2 x i mod 47.
  static void SplitByThree(Vector (&v)[3]) {
    for (int turn = 0; turn < 4; ++turn) {
      const Vector a = Isa::UnpackLow(v[0], Isa::HighHalf(v[1]));
      const Vector b = Isa::UnpackLow(Isa::HighHalf(v[0]), v[2]);
      const Vector c = Isa::UnpackLow(v[1], Isa::HighHalf(v[2]));
      v[0] = a, v[1] = b, v[2] = c;
    }
  }

  // Interleaved streams of bytes into one vector for each stream.
  template <std::uint32_t kStreams>
  static void Deinterleave(Vector (&v)[kStreams]) {
    if constexpr (kStreams == 3) {
      SplitByThree(v);
    } else if constexpr (kStreams % 2 == 0) {
      Vector even[kStreams / 2], odd[kStreams / 2];
      for (std::uint32_t i = 0; i < kStreams / 2; ++i)
        SplitPair(v[2 * i], v[2 * i + 1], even[i], odd[i]);
      Deinterleave(even);
      Deinterleave(odd);
      for (std::uint32_t i = 0; i < kStreams / 2; ++i) v[2 * i] = even[i], v[2 * i + 1] = odd[i];
    }
  }

  // Pixel kPixel of the group to place kTo of the sorted byte.
  template <std::uint32_t kPixel, std::uint32_t kTo, std::uint32_t kStreams>
  static Vector Pick(const Vector (&v)[kStreams]) {
    constexpr int kFromBit = 6 - 2 * static_cast<int>(kPixel % 4), kToBit = 2 * kTo;
    const Vector bits = Isa::And(v[kPixel / 4], Isa::Set8(3 << kFromBit));
    if constexpr (kFromBit > kToBit)
      return Isa::template ShiftRight<kFromBit - kToBit>(bits);
    else
      return Isa::template ShiftLeft<kToBit - kFromBit>(bits);
  }

  // The sorted byte of phase kPhase and of all after it.
  template <std::uint32_t kPhases, std::uint32_t kPhase>
  static void PickPhases(const Vector (&v)[kPhases], Vector (&sorted)[kPhases]) {
    if constexpr (kPhase < kPhases) {
      sorted[kPhase] =
          Isa::Or(Isa::Or(Pick<kPhase, 0>(v), Pick<kPhase + kPhases, 1>(v)),
                  Isa::Or(Pick<kPhase + 2 * kPhases, 2>(v), Pick<kPhase + 3 * kPhases, 3>(v)));
      PickPhases<kPhases, kPhase + 1>(v, sorted);
    }
  }

  // The same where every byte has one pixel of each of four phases: 4 x 4 pixels turned.
  template <std::uint32_t kPhases>
  static void TurnPixels(const Vector (&v)[kPhases], Vector (&sorted)[kPhases]) {
    constexpr std::uint32_t kApart = kPhases / 4;
    for (std::uint32_t i = 0; i < kApart; ++i) {
      Vector p[4] = {v[i], v[i + kApart], v[i + 2 * kApart], v[i + 3 * kApart]};
      SwapBits<4>(p[0], p[2], 0x0F);
      SwapBits<4>(p[1], p[3], 0x0F);
      SwapBits<2>(p[0], p[1], 0x33);
      SwapBits<2>(p[2], p[3], 0x33);
      for (std::uint32_t k = 0; k < 4; ++k) sorted[4 * i + k] = p[3 - k];
    }
  }

  // Each lane takes a block of kPhases x 16 bytes and gives 16 bytes of every run.
  template <std::uint32_t kPhases>
  static unsigned SortInto(const std::uint8_t* line, std::size_t vectors, std::uint8_t* runs,
                           std::size_t runBytes) {
    constexpr std::size_t kBlockBytes = kPhases * kVectorBytes;
    Vector ink[kPhases] = {};
    while (vectors >= Isa::kLanes) {
      Vector v[kPhases];
      for (std::uint32_t i = 0; i < kPhases; ++i)
        v[i] = Isa::LoadLanes(line + i * kVectorBytes, kBlockBytes);
      Deinterleave(v);
      Vector sorted[kPhases];
      if constexpr (kPhases % 4 == 0)
        TurnPixels(v, sorted);
      else
        PickPhases<kPhases, 0>(v, sorted);
      for (std::uint32_t phase = 0; phase < kPhases; ++phase) {
        Isa::Store(runs + phase * runBytes, sorted[phase]);
        ink[phase] = Isa::Or(ink[phase], sorted[phase]);
      }
      line += Isa::kLanes * kBlockBytes;
      runs += Isa::kBytes;
      vectors -= Isa::kLanes;
    }
    unsigned inked = 0;
    for (std::uint32_t phase = 0; phase < kPhases; ++phase) {
      if (!Isa::IsZero(ink[phase])) inked |= 1u << phase;
    }
    if constexpr (Isa::kLanes > 1) {
      if (vectors > 0)
        inked |= VectorKernel<typename Isa::OneLane>::Sort(kPhases, line, vectors, runs, runBytes);
    }
    return inked;
  }

  // ---- align

  template <int kShift, bool kAdd>
  static void AlignBy(const std::uint8_t* const (&runs)[kGroupNozzles], std::uint8_t* rows) {
    for (std::uint32_t nozzle = 0; nozzle < kGroupNozzles; ++nozzle, rows += 2 * kJetBytes) {
      const std::uint8_t* run = runs[nozzle];
      if (run == nullptr) continue;
      for (std::uint32_t i = 0; i < kStripBytes; i += Isa::kBytes) {
        Vector value = Isa::Load(run + i);
        // 64-bit shifts lose the bits that come in from the next byte: those are taken from there.
        if constexpr (kShift != 0) {
          value = Isa::Or(Isa::template ShiftRight64<kShift>(value),
                          Isa::template ShiftLeft64<8 - kShift>(Isa::Load(run + i + 1)));
        }
        if constexpr (kAdd) value = Isa::Or(value, Isa::Load(rows + i));
        Isa::Store(rows + i, value);
      }
    }
  }

  // ---- lay

  // Eight bits of every row byte: 2 x column + 1 is plane 0 of the byte's four columns, 2 x column
  // plane 1.
  static constexpr std::uint32_t kBits = 8;
  struct Turned {
    Vector bits[kBits][kGroupJets];
  };

  // Exchanges the kShift upper bits of a with the lower ones of b, in fields of mask.
  template <int kShift>
  static void SwapBits(Vector& a, Vector& b, int mask) {
    const Vector differ =
        Isa::And(Isa::Xor(Isa::template ShiftRight<kShift>(a), b), Isa::Set8(mask));
    b = Isa::Xor(b, differ);
    a = Isa::Xor(a, Isa::template ShiftLeft<kShift>(differ));
  }

  // Of all pairs of rows kApart from each other.
  template <int kApart>
  static void SwapRows(Vector (&r)[kJetRows], int mask) {
#pragma GCC unroll 8
    for (std::uint32_t i = 0; i < kJetRows; ++i) {
      if ((i & kApart) == 0) SwapBits<kApart>(r[i], r[i + kApart], mask);
    }
  }

  // Joins the nozzle rows of a jet: 8 x 8 bits turned, so that bit b of row s becomes bit s of
  // bits[b].
  static void JoinRows(const JetRows& jets, std::uint32_t jet, std::uint32_t at, Turned& turned) {
    Vector r[kJetRows] = {};
    if (jets.ink[jet] != 0) {
      for (std::uint32_t row = 0; row < kJetRows; ++row)
        r[row] = Isa::Load(jets.rows[jet][row] + at);
      SwapRows<4>(r, 0x0F);
      SwapRows<2>(r, 0x33);
      SwapRows<1>(r, 0x55);
    }
    for (std::uint32_t bit = 0; bit < kBits; ++bit) turned.bits[bit][jet] = r[bit];
  }

  // 16 x 16 bytes turned: byte i of jet j becomes byte j of v[i].
  static void Turn(Vector (&v)[kGroupJets]) {
#pragma GCC unroll 4
    for (int turn = 0; turn < 4; ++turn) {
      Vector w[kGroupJets];
#pragma GCC unroll 8
      for (std::uint32_t i = 0; i < kGroupJets / 2; ++i) {
        w[2 * i] = Isa::UnpackLow(v[i], v[i + kGroupJets / 2]);
        w[2 * i + 1] = Isa::UnpackHigh(v[i], v[i + kGroupJets / 2]);
      }
#pragma GCC unroll 16
      for (std::uint32_t i = 0; i < kGroupJets; ++i) v[i] = w[i];
    }
  }

  // A block of four columns for each byte. kWhole: all its columns, eight nozzles.
  template <bool kWhole>
  static void LayBlock(Turned& turned, std::uint32_t nozzles, std::uint32_t left, std::uint8_t* out,
                       std::ptrdiff_t columnStep) {
    for (std::uint32_t bit = 0; bit < kBits; ++bit) {
      Vector v[kGroupJets];
#pragma GCC unroll 16
      for (std::uint32_t i = 0; i < kGroupJets; ++i) v[i] = turned.bits[bit][i];
      Turn(v);
      const std::uint32_t firstColumn = bit / 2;
      std::uint8_t* const plane = out + (bit % 2 == 1 ? 0 : kPlaneBytes);
#pragma GCC unroll 16
      for (std::uint32_t i = 0; i < kGroupJets; ++i) {
        for (std::uint32_t lane = 0; lane < Isa::kLanes; ++lane) {
          const std::uint32_t column = 4 * (lane * kVectorBytes + i) + firstColumn;
          if (!kWhole && column >= left) continue;
          std::uint8_t* const run = plane + static_cast<std::ptrdiff_t>(column) * columnStep;
          if (kWhole || nozzles == kGroupNozzles)
            Isa::StoreLane(run, v[i], lane);
          else
            Isa::StoreHalfLane(run, v[i], lane);
        }
      }
    }
  }
};

}  // namespace qrn

#endif  // QRN_RASTER_KERNEL_VECTOR_H_
