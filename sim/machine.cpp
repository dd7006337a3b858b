#include "sim/machine.h"

#include <algorithm>

#include "platform/bytes.h"

namespace qrn::sim {
namespace {

std::uint8_t HeadMask(Heads heads) {
  switch (heads) {
    case Heads::kPha:
      return 0x10;
    case Heads::kPhb:
      return 0x20;
    case Heads::kNone:
      return 0;
    case Heads::kBoth:
      break;
  }
  return 0x30;
}

}  // namespace

std::uint32_t PrintableMm(const Machine& machine) {
  constexpr std::uint32_t kDefaultTravelMm = 2150, kCarriageMm = 195, kSecondHeadMm = 60;
  const std::uint64_t travelMm =
      machine.travel600 != 0 ? std::uint64_t{machine.travel600} * 254 / 6000 : kDefaultTravelMm;
  const std::uint64_t reserveMm =
      machine.margin * 1016ull / 6000 + kCarriageMm + (machine.twoHeadCarriage ? kSecondHeadMm : 0);
  return static_cast<std::uint32_t>(travelMm - std::min(travelMm, reserveMm));
}

std::array<std::uint8_t, kParameterBlockBytes> ParameterBlock(const Machine& machine) {
  std::array<std::uint8_t, kParameterBlockBytes> block{};
  block[0] = 120;  // main board id and version, carriage board id and version, its serial number
  block[1] = 3;
  block[4] = 121;
  block[5] = 2;
  PutU16(&block[6], 4711);
  block[8] = 0;  // calibration selector
  for (std::size_t head = 0; head < machine.inkOrder.size(); ++head) {
    std::copy(machine.inkOrder[head].begin(), machine.inkOrder[head].end(), &block[9 + 8 * head]);
  }
  std::copy(machine.biDirShift.begin(), machine.biDirShift.end(), &block[kCorrectionsAt]);
  std::copy(machine.headGapY.begin(), machine.headGapY.end(), &block[46]);
  std::copy(machine.headGapX.begin(), machine.headGapX.end(), &block[50]);
  block[72] = Low8(machine.feedCalib);
  block[77] = Low8(machine.feedCalib >> 8);
  block[81] = machine.flashEvery;
  block[82] = machine.speed;
  block[83] = machine.bidirectional ? 1 : 0;
  block[87] = machine.fixedDir != 0 ? 0x20 : 0;
  block[90] = HeadMask(machine.heads);
  block[91] = Low8((machine.twoHeadCarriage ? 1u : 0u) | (machine.mirroredHeads ? 0x10u : 0u));
  block[109] = machine.featherPercent;
  PutU16(&block[116], machine.margin);
  PutU16(&block[120], machine.flashParam);
  PutU32(&block[128], machine.feedBase);
  PutU16(&block[148], 815);
  PutU32(&block[192], machine.travel600);
  PutU16(&block[204], 0x5213);
  return block;
}

}  // namespace qrn::sim
