#include "print_page/page.h"

#include <algorithm>

namespace qrn::tool {

const std::uint8_t* SlotPage::Line(int slot, std::uint32_t line) const {
  const int plane = slots_[static_cast<std::size_t>(slot)];
  if (plane < 0 || static_cast<std::size_t>(plane) >= page_.planes.size()) return nullptr;
  const std::vector<std::uint8_t>& bytes = page_.planes[static_cast<std::size_t>(plane)];
  const std::size_t at = std::size_t{line} * page_.LineBytes();
  return at < bytes.size() ? bytes.data() + at : nullptr;
}

bool SlotPage::IsFed(int slot) const {
  const int plane = slots_[static_cast<std::size_t>(slot)];
  return plane != kBlank && page_.present.test(static_cast<std::size_t>(plane));
}

const char* SlotName(int slot) {
  constexpr std::array<const char*, kSlots> kNames = {"C", "M", "Y", "K", "4", "5", "6", "7"};
  return kNames[static_cast<std::size_t>(slot)];
}

int MissingPlane(const RasterPage& page, const SlotMap& slots) {
  const auto missing = std::find_if(slots.begin(), slots.end(), [&page](int plane) {
    return plane != kBlank && !page.present.test(static_cast<std::size_t>(plane));
  });
  return missing == slots.end() ? kBlank : *missing;
}

}  // namespace qrn::tool
