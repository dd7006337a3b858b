#include "raster/pass_size.h"

#include <algorithm>

#include "base/bytes.h"
#include "job/print_out.h"
#include "raster/column_modes.h"

namespace qrn {
namespace {

constexpr std::uint32_t kExtraColumns = 128;  // of every pass, after image and row stagger
constexpr std::uint32_t kPixelBits = 8 / kPixelsPerByte;

constexpr std::uint64_t WholeUnits(std::uint64_t bytes) {
  return DivUp<std::uint64_t>(bytes, kSwathUnitBytes) * kSwathUnitBytes;
}

// The largest swath of one head: it has twice the passes, but not fewer columns. Four for every
// three bytes of a line, the last of which may be incomplete.
std::uint64_t SingleSwathBytes(const Job& job) {
  const std::uint64_t lineBytes = DivUp<std::uint64_t>(job.nLineBits, 8);
  const std::uint64_t columns =
      4 * DivUp<std::uint64_t>(lineBytes, 3) + job.rowOffset[0] + kExtraColumns;
  return WholeUnits(columns * kColumnBytes);
}

}  // namespace

// 640 mm of dots leave room for the head distance, the row stagger, the extra columns and the
// rounding. In 64 bits nothing can wrap: all factors together have fewer than 60.
std::uint64_t PrintOutBytes(const Job& job) {
  const std::uint64_t dots640Mm = job.nResX * 6400u / 254u;
  const std::uint64_t bytes =
      (dots640Mm + 8 * std::uint64_t{job.lineStride}) * (kColumnBytes / kPixelBits) / job.passCount;
  return job.dualHead == 1 ? bytes : std::max(bytes, SingleSwathBytes(job));
}

void SetPassSize(Job& job) {
  // The second head fires its last column a head distance after the first.
  if (job.dualHead == 1) {
    job.passRightByte += static_cast<std::uint32_t>(job.headGapX) * job.passCount / 4;
    job.passBits = 8 * (job.passRightByte - job.passLeftByte);
  }
  job.passRowPad = Low16(static_cast<std::uint32_t>(job.rowOffset[0]) * job.passCount / 2);
  const std::uint32_t pixels = PhasesOf(job);
  const std::uint64_t stagger = job.rowOffset[0] * pixels / 2;  // half of it, in dots
  const std::uint64_t bits =
      job.passBits + 2 * kPixelBits * stagger + std::uint64_t{kExtraColumns} * pixels * kPixelBits;
  job.passDataSize = Low32(bits * (kColumnBytes / kPixelBits) / pixels);
}

std::uint32_t SwathDataSize(const Job& job) { return Low32(WholeUnits(job.passDataSize)); }

}  // namespace qrn
