#include "raster/feather_runs.h"

#include "base/bytes.h"
#include "raster/column_modes.h"

namespace qrn {
namespace {

// The cell of a mask over the pixel of one column, 0 or 3.
unsigned CellOf(const ColumnMode& mode, const std::uint8_t* mask, std::uint32_t i,
                std::uint32_t phase, std::uint32_t column) {
  const std::uint32_t pixel = column * mode.phases + phase;
  const std::uint32_t byte = pixel / kPixelsPerByte;
  const std::uint32_t inGroup = byte % mode.groupBytes;
  const std::uint8_t cells = mask[mode.maskByte(i, byte - inGroup, inGroup)];
  return cells >> (6 - 2 * (pixel % kPixelsPerByte)) & 3u;
}

}  // namespace

std::size_t FeatherRunsBytes(const Job& job) {
  return std::size_t{job.Mem.layout.phases} * job.featherRows * kFeatherRunBytes;
}

void BuildFeatherRuns(const Job& job, std::uint8_t* runs) {
  const ColumnMode* mode = ModeOf(job);
  for (std::uint32_t phase = 0; phase < job.Mem.layout.phases; ++phase) {
    for (std::uint32_t i = 0; i < job.featherRows; ++i, runs += kFeatherRunBytes) {
      const std::uint8_t* mask = job.pFeatherMask + std::size_t{i} * kFeatherMaskBytes;
      for (std::uint32_t byte = 0; byte < kFeatherPeriodBytes; ++byte) {
        unsigned cells = 0;
        for (std::uint32_t k = 0; k < kPixelsPerByte; ++k)
          cells |= CellOf(*mode, mask, i, phase, byte * kPixelsPerByte + k) << (2 * k);
        runs[byte] = Low8(cells);
      }
      for (std::uint32_t byte = kFeatherPeriodBytes; byte < kFeatherRunBytes; ++byte)
        runs[byte] = runs[byte - kFeatherPeriodBytes];
    }
  }
}

}  // namespace qrn
