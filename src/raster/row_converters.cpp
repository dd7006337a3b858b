#include "raster/row_converters.h"

#include <cstddef>

#include "params/feather_masks.h"

namespace qrn {
namespace {

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

// Moves one pixel from the line to the nozzle's byte: what is placed is cleared, what the mask
// holds back stays.
void MovePixel(std::uint8_t* source, Pick pick, std::uint8_t mask, std::uint8_t* out,
               std::uint8_t rowBit) {
  const std::uint32_t bits = source[pick.byte] & mask & (3u << pick.shift);
  if (bits == 0) return;
  PlaceDot(out, rowBit, bits >> pick.shift);
  source[pick.byte] = static_cast<std::uint8_t>(source[pick.byte] & ~bits);
}

template <class Mode>
std::uint32_t PhaseOf(const Job& job) {
  return job.passIndex / Mode::kPassesPerPhase;
}

// All groups of the lines of one nozzle. `feather` is the nozzle's mask index; kFeathered tells
// whether it has one.
template <class Mode, bool kReverse, bool kFeathered>
void ConvertNozzle(Job& job, ConvertParams& params, std::uint32_t feather) {
  constexpr std::uint32_t kPicks = kPixelsTaken<Mode>;
  constexpr std::uint32_t kReverseLeadBytes = Mode::kReverseLead * kColumnBytes;
  Pick picks[kPicks];
  for (std::uint32_t k = 0; k < kPicks; ++k) picks[k] = PickOf<Mode>(PhaseOf<Mode>(job), k);
  const std::uint8_t* masks = job.pFeatherMask + std::size_t{feather} * kFeatherMaskBytes;
  const std::uint32_t end = job.passRightByte;

  params.pLine2 = params.pLine + job.lineStride;
  params.outOffset = kReverse ? Mode::ReverseGroups(end - job.passLeftByte) * params.colStep : 0;
  for (std::uint32_t x = job.passLeftByte; x + Mode::kNeedBytes <= end; x += Mode::kGroupBytes) {
    for (std::uint32_t k = 0; k < kPicks; ++k) {
      const std::uint8_t mask =
          kFeathered ? masks[Mode::MaskByte(feather, x, picks[k].byte)] : std::uint8_t{0xFF};
      const std::uint32_t out = kReverse ? params.outOffset + kReverseLeadBytes - kColumnBytes * k
                                         : params.outOffset + kColumnBytes * k;
      MovePixel(params.pLine + x, picks[k], mask, job.pOutA + out, job.rowBitA);
      if constexpr (Mode::kLinesPerNozzle == 2)
        MovePixel(params.pLine2 + x, picks[k], mask, job.pOutB + out, job.rowBitB);
    }
    // Below the first column there is no further group: the value that wraps there is never used.
    params.outOffset += kReverse ? 0u - params.colStep : params.colStep;
  }
}

// The next nozzle: two lines further down, one pair of head bytes further on.
void NextNozzle(Job& job, ConvertParams& params) {
  params.pLine += 2 * std::size_t{job.lineStride};
  job.pOutA += 2;
  job.pOutB += 2;
}

template <class Mode, bool kReverse>
void FeatherZone(Job& job, ConvertParams& params, std::uint32_t firstNozzle) {
  for (std::uint32_t nozzle = firstNozzle; nozzle < kNozzles; ++nozzle) {
    ConvertNozzle<Mode, kReverse, true>(job, params, nozzle - firstNozzle);
    NextNozzle(job, params);
  }
}

template <class Mode, bool kReverse>
void ConvertRows(Job& job, ConvertParams& params) {
  if (PhaseOf<Mode>(job) >= Mode::kColumnPixels) return;
  for (std::uint32_t nozzle = 0; nozzle < params.nozzleCount; ++nozzle) {
    ConvertNozzle<Mode, kReverse, false>(job, params, 0);
    NextNozzle(job, params);
  }
  FeatherZone<Mode, kReverse>(job, params, params.nozzleCount);
}

}  // namespace

void Dual3Forward(Job& job, ConvertParams& params) { ConvertRows<Dual3, false>(job, params); }
void Dual3Reverse(Job& job, ConvertParams& params) { ConvertRows<Dual3, true>(job, params); }
void Dual4Forward(Job& job, ConvertParams& params) { ConvertRows<Dual4, false>(job, params); }
void Dual4Reverse(Job& job, ConvertParams& params) { ConvertRows<Dual4, true>(job, params); }
void Dual6Forward(Job& job, ConvertParams& params) { ConvertRows<Dual6, false>(job, params); }
void Dual6Reverse(Job& job, ConvertParams& params) { ConvertRows<Dual6, true>(job, params); }
void Dual8Forward(Job& job, ConvertParams& params) { ConvertRows<Dual8, false>(job, params); }
void Dual8Reverse(Job& job, ConvertParams& params) { ConvertRows<Dual8, true>(job, params); }

void SingleForward(Job& job, ConvertParams& params) { ConvertRows<Single, false>(job, params); }

// With an odd step the two passes of a phase start on rows of both parities by themselves. With an
// even one all passes start on even rows: the first pass of the pair then takes the odd lines,
// which forward passes never reach.
void SingleReverse(Job& job, ConvertParams& params) {
  if (job.passStep % 2 == 0 && job.passIndex % 2 == 0) params.pLine += job.lineStride;
  ConvertRows<Single, true>(job, params);
}

}  // namespace qrn
