#include "raster/band.h"

#include <algorithm>
#include <cstring>

#include "params/printer_params.h"
#include "platform/bytes.h"
#include "raster/column_modes.h"
#include "raster/convert.h"
#include "raster/pass_rows.h"
#include "raster/print_out.h"
#include "raster/swath_builder.h"

namespace qrn {
namespace {

constexpr std::uint32_t kShiftRows = 720;        // two head heights, whatever the band's height is
constexpr std::uint32_t kExtraColumns = 4 * 64;  // quarter columns behind image and row stagger
constexpr std::uint32_t kBytesPerQuarterBit = 360;

// Columns of the pass in bytes: the image, the row stagger and 128 columns more. In 64 bits, and at
// most what the buffers hold: their size was checked against the same widths.
std::uint32_t PassDataSize(const Job& job) {
  const std::uint32_t pixels = ColumnPixels(job);
  const std::uint64_t staggerDots = job.rowOffset[0] * pixels / 2;
  const std::uint64_t quarters = std::uint64_t{kExtraColumns} * pixels + 4 * staggerDots;
  return Low32((job.passBits + quarters) * kBytesPerQuarterBit / pixels);
}

// Zeros in front of what a worker has written and behind it, as far as the swath carries.
void ClearMargins(Job& job, const ConvertParams& params) {
  const std::size_t end = SwathDataSize(job);
  const std::size_t first = std::min(params.firstByte, end);
  const std::size_t last = std::min(params.endByte, end);
  std::memset(job.PrintOutBuf, 0, first);
  std::memset(job.PrintOutBuf + last, 0, end - last);
}

}  // namespace

int CompleteBand(Job& job) {
  if (!RunPasses(job)) return 0;
  job.feedLine = job.linesReceived;
  ShiftPassBuffers(job);
  return 1;
}

bool RunPasses(Job& job) {
  for (std::uint32_t i = 0; i < job.passCount; ++i) {
    job.passDir = NextSwathDir(job);
    ConvertPass(job);
    ++job.passNo;
    if (!PutSwath(job)) return false;
  }
  return true;
}

void ConvertPass(Job& job) {
  if (job.swathCount >= job.nSwathLimit) {
    job.passEmpty = 1;
    return;
  }
  job.passIndex = Low8(job.passNo % job.passCount);
  job.passRow = Low16(static_cast<std::uint32_t>(job.passStep) * job.passIndex);
  job.passEmpty = IsPassBlank(job) ? 1 : 0;
  if (job.passEmpty == 1) return;

  ConvertParams params{};
  for (std::uint8_t color = 0; color < job.nColors; ++color) {
    job.curColor = color;
    ConvertColor(job, params);
  }
  RunWorker(job, params);
  // The second head fires its last column a head distance behind the first.
  if (job.dualHead == 1) {
    job.passRightByte += static_cast<std::uint32_t>(job.headGapX) * job.passCount / 4;
    job.passBits = 8 * (job.passRightByte - job.passLeftByte);
  }
  job.passRowPad = Low16(static_cast<std::uint32_t>(job.rowOffset[0]) * job.passCount / 2);
  job.passDataSize = PassDataSize(job);
  ClearMargins(job, params);
}

bool IsPassBlank(Job& job) {
  if (AreRowsBlank(job, job.passRow, job.checkRows)) return true;
  job.passLeftByte = 0;
  job.passBits = job.nLineBits;
  job.passRightByte = job.nLineBits / 8;
  return false;
}

// The rows stay where they are, the ring's first row moves on. Rows behind the 720 that a band
// carries on are blank, and so are all from the new band's first on.
void ShiftPassBuffers(Job& job) {
  job.Mem.firstRow = RingIndex(job, job.swathH);
  const std::uint32_t kept = std::min<std::uint32_t>(kShiftRows, job.historyRows);
  ClearRows(job, kept, job.Mem.layout.rows - kept);
}

}  // namespace qrn
