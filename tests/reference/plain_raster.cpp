#include "reference/plain_raster.h"

#include <cstring>

#include "params/feather_masks.h"

namespace qrn::plain {
namespace {

constexpr std::uint32_t kHeadLines = 360, kShiftRows = 720, kColumnBytes = 720, kPlaneBytes = 360;

}  // namespace

struct PlainRaster::Jets {
  std::uint32_t plane, firstRow, phase;
  bool reverse;
  std::uint32_t headByte, slot, column;
};

PlainRaster::PlainRaster(const Geometry& geometry)
    : geometry_(geometry), masks_(geometry.featherRows) {
  // One byte more: lines of no bytes have a place, too.
  for (auto& plane : planes_) plane.resize(std::size_t{geometry.rows} * geometry.lineStride + 1);
  for (std::uint32_t i = 0; i < geometry.featherRows; ++i) {
    std::uint8_t mask[256];
    FillFeatherMask(i * 90 / geometry.featherRows, mask);
    std::memcpy(masks_[i].data(), mask, sizeof mask);
  }
  const std::uint32_t width = geometry.lineBytes;
  groupBytes_ = needBytes_ = 3;
  switch (geometry.columnPixels) {
    case 3:
      lastColumn_ = 4 * ((width + 2) / 3) + (geometry.twoHeads ? 3 : -1u);
      break;
    case 4:
      groupBytes_ = needBytes_ = 1;
      lastColumn_ = width;
      break;
    case 6:
      lastColumn_ = 2 * (width / 3);
      break;
    default:
      groupBytes_ = 2;
      needBytes_ = 1;
      lastColumn_ = width / 2;
  }
}

bool PlainRaster::IsBlank(std::uint32_t firstRow) const {
  const std::size_t bytes = std::size_t{geometry_.checkRows} * geometry_.lineStride;
  for (const auto& plane : planes_) {
    const std::uint8_t* first = plane.data() + std::size_t{firstRow} * geometry_.lineStride;
    if (bytes != 0 && (first[0] != 0 || std::memcmp(first, first + 1, bytes - 1) != 0))
      return false;
  }
  return true;
}

bool PlainRaster::ConvertPass(std::uint32_t passIndex, std::uint32_t dir) {
  if (IsBlank(geometry_.passStep * passIndex)) return false;
  columns_.assign(geometry_.swathBytes, 0);
  for (std::uint32_t plane = 0; plane < kColors; ++plane) ConvertColor(plane, passIndex, dir);
  return true;
}

void PlainRaster::ConvertColor(std::uint32_t plane, std::uint32_t passIndex, std::uint32_t dir) {
  const std::uint32_t passRow = geometry_.passStep * passIndex;
  const bool reverse = dir == 1;
  if (geometry_.twoHeads) {
    std::vector<std::uint32_t> found;  // PHB's rows are 8 to 15
    for (std::uint32_t i = 0; i < 2 * kSlots; ++i) {
      if (geometry_.ink[i / kSlots][i % kSlots] == plane) found.push_back(i);
    }
    // The later row has the first line of each pair and says which head it is for both.
    const std::uint32_t head = found[1] / kSlots;
    const std::uint32_t row = passRow + (head == 0 ? kHeadLines - geometry_.headGapY : 0);
    const bool secondInTravel = head == (reverse ? 0u : 1u);
    for (const std::uint32_t line : {0u, 1u}) {
      const std::uint32_t slot = found[1 - line] % kSlots;
      PrintRows({plane, row + line, passIndex, reverse, head, slot,
                 SlotColumn(slot, dir) + (secondInTravel ? geometry_.headGapX : 0)});
    }
    return;
  }
  const std::uint32_t head = geometry_.singleHead;
  const bool oddLines = reverse && geometry_.passStep % 2 == 0 && passIndex % 2 == 0;
  for (std::uint32_t slot = 0; slot < kSlots; ++slot) {
    if (geometry_.ink[head == 4 ? 3 : head][slot] != plane) continue;
    PrintRows({plane, passRow + (oddLines ? 1 : 0), passIndex / 2, reverse, head, slot,
               SlotColumn(slot, dir)});
    return;
  }
}

std::uint32_t PlainRaster::SlotColumn(std::uint32_t slot, std::uint32_t dir) const {
  const std::uint32_t offset = geometry_.rowOffset[slot];
  return (dir == 1) == geometry_.mirrored ? offset : geometry_.rowOffset[0] - offset;
}

void PlainRaster::PrintRows(const Jets& jets) {
  if (jets.phase >= geometry_.columnPixels || geometry_.lineBytes < needBytes_) return;
  const std::uint32_t groups = (geometry_.lineBytes - needBytes_) / groupBytes_ + 1;
  const std::uint32_t pixels = 4 * groups * groupBytes_;
  const auto bit = static_cast<std::uint8_t>(1u << jets.slot);
  for (std::uint32_t nozzle = 0; nozzle < kJets; ++nozzle) {
    std::uint8_t* const line = Row(jets.plane, jets.firstRow + 2 * nozzle);
    for (std::uint32_t pixel = jets.phase; pixel < pixels; pixel += geometry_.columnPixels) {
      const std::uint32_t shift = 6 - 2 * (pixel % 4), level = line[pixel / 4] >> shift & 3u;
      if (level == 0 || IsHeldBack(nozzle, pixel)) continue;
      const std::uint32_t forward = pixel / geometry_.columnPixels;
      const std::uint32_t column = jets.column + (jets.reverse ? lastColumn_ - forward : forward);
      const std::size_t at = std::size_t{kColumnBytes} * column + 2 * nozzle + jets.headByte;
      // A dot beyond the swath's end throws.
      if (level != 1) columns_.at(at) |= bit;
      if (level != 2) columns_.at(at + kPlaneBytes) |= bit;
      line[pixel / 4] = static_cast<std::uint8_t>(line[pixel / 4] & ~(3u << shift));
    }
  }
}

bool PlainRaster::IsHeldBack(std::uint32_t nozzle, std::uint32_t pixel) const {
  if (nozzle < kJets - geometry_.featherRows) return false;
  const std::uint32_t i = nozzle - (kJets - geometry_.featherRows);
  const std::uint32_t x = pixel / 4 / groupBytes_ * groupBytes_;  // the group's first byte
  std::uint32_t byte = (i + x) % 256;
  if (!geometry_.twoHeads) byte = (x / 3 + i) % 256;
  if (geometry_.twoHeads && geometry_.columnPixels == 3) byte = 4 * ((i + x) % 64) + pixel / 4 - x;
  return (masks_[i][byte] >> (6 - 2 * (pixel % 4)) & 3u) == 0;
}

void PlainRaster::Shift() {
  const std::size_t bytes = std::size_t{kShiftRows} * geometry_.lineStride;
  for (std::uint32_t plane = 0; plane < kColors; ++plane) {
    std::memmove(Row(plane, 0), Row(plane, geometry_.bandLines), bytes);
    std::memset(Row(plane, geometry_.firstLineRow), 0, bytes);
  }
}

}  // namespace qrn::plain
