#include "raster/band.h"

#include <cstring>

#include "params/printer_params.h"
#include "platform/bytes.h"
#include "raster/convert.h"
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

bool IsZero(const std::uint8_t* bytes, std::size_t count) {
  // A row is blank when its first byte is zero and every byte equals the one before it.
  return count == 0 || (bytes[0] == 0 && std::memcmp(bytes, bytes + 1, count - 1) == 0);
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
    std::memset(job.PrintOutBuf, 0, job.printOutBufSize);
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

  const std::size_t firstRow = std::size_t{job.passRow} * job.lineStride;
  for (std::uint8_t color = 0; color < job.nColors; ++color) {
    job.curColor = color;
    job.pPassSrc = job.Mem.pPassBuffer[color] + firstRow;
    ConvertColor(job);
  }
  // The second head fires its last column a head distance behind the first.
  if (job.dualHead == 1) {
    job.passRightByte += static_cast<std::uint32_t>(job.headGapX) * job.passCount / 4;
    job.passBits = 8 * (job.passRightByte - job.passLeftByte);
  }
  job.passRowPad = Low16(static_cast<std::uint32_t>(job.rowOffset[0]) * job.passCount / 2);
  job.passDataSize = PassDataSize(job);
}

bool IsPassBlank(Job& job) {
  const std::size_t first = std::size_t{job.passRow} * job.lineStride;
  const std::size_t count = std::size_t{job.checkRows} * job.lineStride;
  bool blank = true;
  for (std::uint32_t plane = 0; plane < kPlanes && blank; ++plane) {
    blank = IsZero(job.Mem.pPassBuffer[plane] + first, count);
  }
  if (blank) return true;
  job.passLeftByte = 0;
  job.passBits = job.nLineBits;
  job.passRightByte = job.nLineBits / 8;
  return false;
}

void ShiftPassBuffers(Job& job) {
  const std::size_t bytes = std::size_t{kShiftRows} * job.lineStride;
  for (std::uint8_t* buffer : job.Mem.pPassBuffer) {
    std::memmove(buffer, buffer + std::size_t{job.swathH} * job.lineStride, bytes);
    std::memset(buffer + std::size_t{job.historyRows} * job.lineStride, 0, bytes);
  }
}

}  // namespace qrn
