#include "params/feather_masks.h"

#include <cstring>

#include "base/bytes.h"

namespace qrn {

const std::uint16_t kFeatherKept[kFeatherMasks] = {
    1023, 1021, 1018, 1015, 1011, 1007, 1003, 998, 993, 988, 982, 977, 971, 964, 958, 951, 944, 937,
    930,  922,  915,  907,  898,  890,  882,  873, 864, 855, 846, 837, 828, 818, 808, 798, 788, 778,
    768,  757,  747,  736,  725,  714,  703,  692, 681, 669, 657, 646, 634, 622, 610, 597, 585, 573,
    560,  547,  534,  521,  508,  495,  482,  469, 455, 441, 428, 414, 400, 386, 372, 358, 343, 329,
    314,  300,  285,  270,  255,  240,  225,  210, 195, 179, 164, 148, 132, 117, 101, 85,  69,  53};

namespace {

constexpr std::uint32_t kCellBits = 10;  // 1024 cells

// The job's masks. One buffer for all jobs: only one runs at a time.
std::uint8_t featherMaskTable[kFeatherMasks][kFeatherMaskBytes];

// A well-mixed bit for each place of the scramble (Murmur3's finalizer).
std::uint32_t Scramble(std::uint32_t value) {
  value ^= value >> 16;
  value *= 0x85EBCA6Bu;
  value ^= value >> 13;
  value *= 0xC2B2AE35u;
  value ^= value >> 16;
  return value & 1u;
}

// The cell that comes `rank`-th in mask k: a van der Corput sequence with nested scrambling. Any
// 2^m cells in a row that start at a multiple of 2^m hold the same share of the first ranks, to
// within one cell, yet no stripe shows.
std::uint32_t CellOfRank(std::uint32_t rank, std::uint32_t k) {
  std::uint32_t cell = 0;
  for (std::uint32_t depth = 0; depth < kCellBits; ++depth) {
    const std::uint32_t node = (1u << depth) | cell;  // the tree node that the bits so far lead to
    cell = (cell << 1) | (((rank >> depth) & 1u) ^ Scramble(node + (k << kCellBits)));
  }
  return cell;
}

}  // namespace

void FillFeatherMask(std::uint32_t k, std::uint8_t (&mask)[kFeatherMaskBytes]) {
  std::memset(mask, 0, sizeof mask);
  for (std::uint32_t rank = 0; rank < kFeatherKept[k]; ++rank) {
    const std::uint32_t cell = CellOfRank(rank, k);
    std::uint8_t& target = mask[cell / kPixelsPerByte];
    target = Low8(target | (3u << (6 - 2 * (cell % kPixelsPerByte))));
  }
}

void BuildFeatherMasks(Job& job) {
  if (job.featherPercent > 100) job.featherPercent = 0;
  job.featherRows = static_cast<std::uint8_t>(job.featherPercent * kFeatherMasks / 100);
  for (std::uint32_t i = 0; i < job.featherRows; ++i) {
    FillFeatherMask(i * kFeatherMasks / job.featherRows, featherMaskTable[i]);
  }
  job.pFeatherMask = featherMaskTable[0];
}

}  // namespace qrn
