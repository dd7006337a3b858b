#include "reference/plain_raster.h"

#include <algorithm>
#include <cstring>

#include "params/printer_params.h"
#include "reference/plain_convert.h"

namespace qrn::plain {
namespace {

constexpr std::uint32_t kShiftRows = 720;
constexpr int kFlushCyclesSingle = 4, kFlushCyclesDual = 5;

// Columns of the pass in bytes: the image, the row stagger and 128 columns more.
std::uint32_t PassDataSize(const Job& job) {
  const std::uint32_t pixels = ColumnPixels(job);
  const std::uint64_t staggerDots = job.rowOffset[0] * pixels / 2;
  const std::uint64_t quarters = std::uint64_t{4 * 64} * pixels + 4 * staggerDots;
  return static_cast<std::uint32_t>((job.passBits + quarters) * 360 / pixels);
}

}  // namespace

PlainRaster::PlainRaster(const Job& job) : job_(job), printOut_(job.printOutBufSize) {
  // One byte more: lines of no bytes have a place, too.
  for (auto& plane : planes_) plane.resize(std::size_t{Rows()} * job_.lineStride + 1);
  job_.PrintOutBuf = printOut_.data();
  job_.Mem = JobMem{};  // nobody else's rows
}

void PlainRaster::AddLine(std::uint32_t color, std::uint32_t bytes, const std::uint8_t* line,
                          const TakePass& take) {
  if (job_.linesReceived >= job_.nHeight) return;
  std::memcpy(Row(color, std::uint32_t{job_.historyRows} + job_.bandLine), line,
              std::min(bytes, job_.lineStride));
  if (color + 1 != job_.nColors) return;
  ++job_.linesReceived;
  if (++job_.bandLine != job_.swathH) return;
  RunPasses(take);
  job_.feedLine = job_.linesReceived;
  Shift();
  job_.bandLine = 0;
}

void PlainRaster::Flush(const TakePass& take) {
  const int cycles = job_.dualHead == 1 ? kFlushCyclesDual : kFlushCyclesSingle;
  for (int cycle = 0; cycle < cycles; ++cycle) {
    RunPasses(take);
    Shift();
  }
}

void PlainRaster::RunPasses(const TakePass& take) {
  for (std::uint32_t i = 0; i < job_.passCount; ++i) {
    job_.passDir = NextSwathDir(job_);
    ConvertPass();
    ++job_.passNo;
    take(*this);
  }
}

void PlainRaster::ConvertPass() {
  std::memset(printOut_.data(), 0, printOut_.size());
  job_.passIndex = static_cast<std::uint8_t>(job_.passNo % job_.passCount);
  job_.passRow = static_cast<std::uint16_t>(job_.passStep * job_.passIndex);
  job_.passEmpty = IsPassBlank() ? 1 : 0;
  if (job_.passEmpty == 1) return;

  for (std::uint8_t color = 0; color < job_.nColors; ++color) {
    job_.curColor = color;
    ConvertColor(job_, Row(color, job_.passRow));
  }
  // The second head fires its last column a head distance behind the first.
  if (job_.dualHead == 1) {
    job_.passRightByte += static_cast<std::uint32_t>(job_.headGapX) * job_.passCount / 4;
    job_.passBits = 8 * (job_.passRightByte - job_.passLeftByte);
  }
  job_.passRowPad = static_cast<std::uint16_t>(job_.rowOffset[0] * job_.passCount / 2);
  job_.passDataSize = PassDataSize(job_);
}

bool PlainRaster::IsPassBlank() {
  const std::size_t count = std::size_t{job_.checkRows} * job_.lineStride;
  const auto isBlank = [&](std::vector<std::uint8_t>& plane) {
    const std::uint8_t* bytes = plane.data() + std::size_t{job_.passRow} * job_.lineStride;
    return count == 0 || (bytes[0] == 0 && std::memcmp(bytes, bytes + 1, count - 1) == 0);
  };
  if (std::all_of(std::begin(planes_), std::end(planes_), isBlank)) return true;
  job_.passLeftByte = 0;
  job_.passBits = job_.nLineBits;
  job_.passRightByte = job_.nLineBits / 8;
  return false;
}

bool PlainRaster::IsPassBlankByteByByte() const {
  const std::size_t first = std::size_t{job_.passRow} * job_.lineStride;
  const std::size_t count = std::size_t{job_.checkRows} * job_.lineStride;
  for (const auto& plane : planes_) {
    for (std::size_t i = 0; i < count; ++i) {
      if (plane[first + i] != 0) return false;
    }
  }
  return true;
}

void PlainRaster::Shift() {
  const std::size_t bytes = std::size_t{kShiftRows} * job_.lineStride;
  for (std::uint32_t plane = 0; plane < kPlanes; ++plane) {
    std::memmove(Row(plane, 0), Row(plane, job_.swathH), bytes);
    std::memset(Row(plane, job_.historyRows), 0, bytes);
  }
}

}  // namespace qrn::plain
