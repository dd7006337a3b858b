#include "sim/machine/machine.h"

#include <algorithm>

namespace qrn::sim {

std::uint32_t PrintableMm(const Machine& machine) {
  constexpr std::uint32_t kDefaultTravelMm = 2150, kCarriageMm = 195, kSecondHeadMm = 60;
  const std::uint64_t travelMm =
      machine.travel600 != 0 ? std::uint64_t{machine.travel600} * 254 / 6000 : kDefaultTravelMm;
  const std::uint64_t reserveMm =
      machine.margin * 1016ull / 6000 + kCarriageMm + (machine.twoHeadCarriage ? kSecondHeadMm : 0);
  return static_cast<std::uint32_t>(travelMm - std::min(travelMm, reserveMm));
}

}  // namespace qrn::sim
