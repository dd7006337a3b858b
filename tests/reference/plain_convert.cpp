#include "reference/plain_convert.h"

#include <cstddef>

#include "params/feather_masks.h"
#include "raster/convert.h"

namespace qrn::plain {
namespace {

constexpr std::uint32_t kPixelsPerByte = 4, kHeadLines = 2 * kNozzles, kSingleColumnPixels = 3;

// The walk of the nozzle rows of one colour.
struct Walk {
  std::uint8_t* pLine;          // first line of the current nozzle pair
  std::uint8_t* pLine2;         // second line of it
  std::uint8_t *pOutA, *pOutB;  // the byte of the nozzle, plane 0, column 0 of row A and of row B
  std::uint16_t nozzleCount;    // nozzles in front of the feathered ones
  std::uint32_t outOffset;      // first output column of the current group, in bytes
};

// What differs between the modes. A group is the bytes that yield a whole number of columns; it is
// walked while kNeedBytes of it lie in front of the line's end. In reverse the columns start
// ReverseGroups groups from the left, and the first pixel of a group lands kReverseLead columns
// behind the group's start. MaskByte: byte of feather mask i over byte `byte` of the group at x.
struct Dual3 {
  static constexpr std::uint32_t kColumnPixels = 3, kPassesPerPhase = 1, kLinesPerNozzle = 2;
  static constexpr std::uint32_t kGroupBytes = 3, kNeedBytes = 3, kReverseLead = 3;
  static std::uint32_t ReverseGroups(std::uint32_t bytes) { return (bytes + 2) / 3; }
  static std::uint32_t MaskByte(std::uint32_t i, std::uint32_t x, std::uint32_t byte) {
    return 4 * ((i + x) % 64) + byte;
  }
};
struct MaskByBytes {
  static std::uint32_t MaskByte(std::uint32_t i, std::uint32_t x, std::uint32_t) {
    return (i + x) % 256;
  }
};
struct Dual4 : MaskByBytes {
  static constexpr std::uint32_t kColumnPixels = 4, kPassesPerPhase = 1, kLinesPerNozzle = 2;
  static constexpr std::uint32_t kGroupBytes = 1, kNeedBytes = 1, kReverseLead = 0;
  static std::uint32_t ReverseGroups(std::uint32_t bytes) { return bytes; }
};
struct Dual6 : MaskByBytes {
  static constexpr std::uint32_t kColumnPixels = 6, kPassesPerPhase = 1, kLinesPerNozzle = 2;
  static constexpr std::uint32_t kGroupBytes = 3, kNeedBytes = 3, kReverseLead = 0;
  static std::uint32_t ReverseGroups(std::uint32_t bytes) { return bytes / 3; }
};
struct Dual8 : MaskByBytes {
  static constexpr std::uint32_t kColumnPixels = 8, kPassesPerPhase = 1, kLinesPerNozzle = 2;
  static constexpr std::uint32_t kGroupBytes = 2, kNeedBytes = 1, kReverseLead = 0;
  static std::uint32_t ReverseGroups(std::uint32_t bytes) { return bytes / 2; }
};
struct Single {
  static constexpr std::uint32_t kColumnPixels = kSingleColumnPixels, kPassesPerPhase = 2;
  static constexpr std::uint32_t kLinesPerNozzle = 1;
  static constexpr std::uint32_t kGroupBytes = 3, kNeedBytes = 3, kReverseLead = 3;
  static std::uint32_t ReverseGroups(std::uint32_t bytes) { return (bytes + 2) / 3 - 1; }
  static std::uint32_t MaskByte(std::uint32_t i, std::uint32_t x, std::uint32_t) {
    return (x / kGroupBytes + i) % 256;
  }
};

// One pixel of a phase within a group.
struct Pick {
  std::uint8_t byte;   // of the group
  std::uint8_t shift;  // of the pixel's two bits in that byte
};

template <class Mode>
Pick PickOf(std::uint32_t phase, std::uint32_t k) {
  const std::uint32_t pixel = k * Mode::kColumnPixels + phase;
  return {static_cast<std::uint8_t>(pixel / kPixelsPerByte),
          static_cast<std::uint8_t>(6 - 2 * (pixel % kPixelsPerByte))};
}

void PlaceDot(std::uint8_t* out, std::uint8_t rowBit, std::uint32_t level) {
  if ((level & 2u) != 0) out[0] = static_cast<std::uint8_t>(out[0] | rowBit);
  if ((level & 1u) != 0) out[kPlaneBytes] = static_cast<std::uint8_t>(out[kPlaneBytes] | rowBit);
}

// What is placed is cleared, what the mask holds back stays.
void MovePixel(std::uint8_t* source, Pick pick, std::uint8_t mask, std::uint8_t* out,
               std::uint8_t rowBit) {
  const std::uint32_t bits = source[pick.byte] & mask & (3u << pick.shift);
  if (bits == 0) return;
  PlaceDot(out, rowBit, bits >> pick.shift);
  source[pick.byte] = static_cast<std::uint8_t>(source[pick.byte] & ~bits);
}

// All groups of the lines of one nozzle. `feather` is its mask's index; kFeathered: it has one.
template <class Mode, bool kReverse, bool kFeathered>
void ConvertNozzle(Job& job, Walk& walk, std::uint32_t feather) {
  constexpr std::uint32_t kPicks = Mode::kGroupBytes * kPixelsPerByte / Mode::kColumnPixels;
  constexpr std::uint32_t kColStep = kPicks * kColumnBytes;
  constexpr std::uint32_t kReverseLeadBytes = Mode::kReverseLead * kColumnBytes;
  Pick picks[kPicks];
  const std::uint32_t phase = job.passIndex / Mode::kPassesPerPhase;
  for (std::uint32_t k = 0; k < kPicks; ++k) picks[k] = PickOf<Mode>(phase, k);
  const std::uint8_t* masks = job.pFeatherMask + std::size_t{feather} * kFeatherMaskBytes;
  const std::uint32_t end = job.passRightByte;

  walk.pLine2 = walk.pLine + job.lineStride;
  walk.outOffset = kReverse ? Mode::ReverseGroups(end - job.passLeftByte) * kColStep : 0;
  for (std::uint32_t x = job.passLeftByte; x + Mode::kNeedBytes <= end; x += Mode::kGroupBytes) {
    for (std::uint32_t k = 0; k < kPicks; ++k) {
      const std::uint8_t mask =
          kFeathered ? masks[Mode::MaskByte(feather, x, picks[k].byte)] : std::uint8_t{0xFF};
      const std::uint32_t out = kReverse ? walk.outOffset + kReverseLeadBytes - kColumnBytes * k
                                         : walk.outOffset + kColumnBytes * k;
      MovePixel(walk.pLine + x, picks[k], mask, walk.pOutA + out, job.rowBitA);
      if constexpr (Mode::kLinesPerNozzle == 2)
        MovePixel(walk.pLine2 + x, picks[k], mask, walk.pOutB + out, job.rowBitB);
    }
    walk.outOffset += kReverse ? 0u - kColStep : kColStep;
  }
}

// The next nozzle: two lines further down, one pair of head bytes further on.
void NextNozzle(const Job& job, Walk& walk) {
  walk.pLine += 2 * std::size_t{job.lineStride};
  walk.pOutA += 2;
  walk.pOutB += 2;
}

template <class Mode, bool kReverse>
void ConvertRows(Job& job, std::uint32_t head, std::uint8_t* source) {
  if (job.passIndex / Mode::kPassesPerPhase >= Mode::kColumnPixels) return;
  std::uint8_t* const out = job.PrintOutBuf + head;
  Walk walk{source,
            nullptr,
            out + std::size_t{kColumnBytes} * job.rowColA,
            out + std::size_t{kColumnBytes} * job.rowColB,
            static_cast<std::uint16_t>(kNozzles - job.featherRows),
            0};
  for (std::uint32_t nozzle = 0; nozzle < walk.nozzleCount; ++nozzle) {
    ConvertNozzle<Mode, kReverse, false>(job, walk, 0);
    NextNozzle(job, walk);
  }
  for (std::uint32_t nozzle = walk.nozzleCount; nozzle < kNozzles; ++nozzle) {
    ConvertNozzle<Mode, kReverse, true>(job, walk, nozzle - walk.nozzleCount);
    NextNozzle(job, walk);
  }
}

template <class Mode>
void Convert(Job& job, std::uint32_t head, std::uint8_t* source) {
  job.passDir == 0 ? ConvertRows<Mode, false>(job, head, source)
                   : ConvertRows<Mode, true>(job, head, source);
}

void ConvertDual(Job& job, std::uint8_t* source) {
  const std::uint32_t head = LocateRowsDual(job);
  // PHA prints lines that lie further down the page than PHB's.
  const std::size_t rows = head == 1 ? 0 : kHeadLines - job.headGapY;
  source += rows * job.lineStride;
  if (job.passCount == 3) Convert<Dual3>(job, head, source);
  if (job.passCount == 4) Convert<Dual4>(job, head, source);
  if (job.passCount == 6) Convert<Dual6>(job, head, source);
  if (job.passCount == 8) Convert<Dual8>(job, head, source);
}

// With an even step all passes start on even rows: in reverse, the first pass of a pair then takes
// the odd lines.
void ConvertSingle(Job& job, std::uint8_t* source) {
  LocateRowsSingle(job.singleHead, job);
  if (job.rowBitA == 0) return;
  const bool oddLines = job.passDir == 1 && job.passStep % 2 == 0 && job.passIndex % 2 == 0;
  Convert<Single>(job, job.singleHead, source + (oddLines ? job.lineStride : 0));
}

}  // namespace

std::uint32_t ColumnPixels(const Job& job) {
  return job.dualHead == 1 ? job.passCount : kSingleColumnPixels;
}

void ConvertColor(Job& job, std::uint8_t* source) {
  job.dualHead == 1 ? ConvertDual(job, source) : ConvertSingle(job, source);
}

}  // namespace qrn::plain
