// One page as it is handed to the driver: eight colour slots of 2-bit pixels, blank slots without
// bytes.
#ifndef QRN_TOOLS_PRINT_PAGE_PAGE_H_
#define QRN_TOOLS_PRINT_PAGE_PAGE_H_

#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "sim/proof/raster_source.h"

namespace qrn::tool {

constexpr std::size_t kSlots = 8;
constexpr int kBlank = -1;
// Raster plane that feeds each colour slot; kBlank = none.
using SlotMap = std::array<int, kSlots>;

// Pixels come in groups of 48 that every mode prints whole.
constexpr std::uint32_t kWidthUnit = 48;
constexpr std::uint32_t WidenedWidth(std::uint32_t width) {
  return (width + kWidthUnit - 1) / kWidthUnit * kWidthUnit;
}

// A page as it was read: planes of 2-bit pixels, four a byte, leftmost in the highest bits, lines
// of a widened width.
struct RasterPage {
  std::uint32_t width = 0;  // pixels, before widening
  std::uint32_t lines = 0;
  std::uint32_t linesRead = 0;  // fewer when the raster ended early; the others are blank
  std::bitset<kSlots> present;  // planes that the raster has, blank or not
  // Everything past the end of a plane is blank, and so is all of an empty one.
  std::vector<std::vector<std::uint8_t>> planes;

  std::uint32_t LineBytes() const { return WidenedWidth(width) / 4; }
};

// The page seen through a slot map.
class SlotPage : public sim::RasterSource {
 public:
  SlotPage(const RasterPage& page, const SlotMap& slots) : page_(page), slots_(slots) {}
  std::uint32_t Lines() const override { return page_.lines; }
  std::uint32_t LineBytes() const override { return page_.LineBytes(); }
  const std::uint8_t* Line(int slot, std::uint32_t line) const override;
  // A plane of the page belongs to the slot, blank or not.
  bool IsFed(int slot) const;
  // There is ink for the slot.
  bool IsInked(int slot) const { return Line(slot, 0) != nullptr; }

 private:
  const RasterPage& page_;
  SlotMap slots_;
};

// What a slot is called to a person: C, M, Y, K for the usual four, the others by their number.
const char* SlotName(int slot);

// The first plane that the slot map names and the page does not have; kBlank when there is none.
int MissingPlane(const RasterPage& page, const SlotMap& slots);

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_PAGE_H_
