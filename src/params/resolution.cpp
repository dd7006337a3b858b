#include "params/resolution.h"

#include "platform/bytes.h"

namespace qrn {

std::uint16_t ResolutionByIndex(std::uint32_t index) {
  const std::uint8_t entry = Low8(index);
  return entry < kResolutionX.size() ? Low16(kResolutionX[entry]) : std::uint16_t{0};
}

std::uint8_t ResolutionIndex(std::uint32_t resolution) {
  for (std::size_t i = 0; i < kResolutionX.size(); ++i) {
    if (kResolutionX[i] == Low16(resolution)) return Low8(i);
  }
  return 0;
}

}  // namespace qrn
