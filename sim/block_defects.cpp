#include "sim/block_defects.h"

#include <algorithm>

#include "platform/bytes.h"
#include "sim/machine.h"

namespace qrn::sim {
namespace {

constexpr std::size_t kSelectorAt = 8, kInkOrderAt = 9, kCorrectionsEnd = 54, kCalibrationsAt = 72,
                      kCalibrationsEnd = 78, kCarriageAt = 91, kFeatherAt = 109, kTravelAt = 192,
                      kSignatureAt = 204;

}  // namespace

void SpoilBlock(Defect defect, std::vector<std::uint8_t>* block) {
  std::uint8_t* bytes = block->data();
  switch (defect) {
    case Defect::kSignature:
      PutU16(bytes + kSignatureAt, 0x5212);
      break;
    case Defect::kShort:
      block->resize(block->size() / 2);
      break;
    case Defect::kHead:
      bytes[kCarriageAt] = Low8((bytes[kCarriageAt] & 0x0Fu) | 0x20u);
      break;
    case Defect::kResolution:
      std::fill(bytes + kCorrectionsAt, bytes + kCorrectionsEnd, std::uint8_t{255});
      break;
    case Defect::kWidth:
      PutU32(bytes + kTravelAt, 1);
      break;
    case Defect::kSelector:
      bytes[kSelectorAt] = 5;
      break;
    case Defect::kCalibration:
      std::fill(bytes + kCalibrationsAt, bytes + kCalibrationsEnd, std::uint8_t{0});
      break;
    case Defect::kInk:
      bytes[kInkOrderAt] = 8;
      break;
    case Defect::kFeather:
      bytes[kFeatherAt] = 101;
      break;
  }
}

}  // namespace qrn::sim
