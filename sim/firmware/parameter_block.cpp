#include "sim/firmware/parameter_block.h"

#include <algorithm>

#include "base/bytes.h"

namespace qrn::sim {
namespace {

constexpr std::uint16_t kSignature = 0x5213;
constexpr std::uint8_t kPha = 0x10, kPhb = 0x20, kFixedDirBit = 0x20;
constexpr std::uint32_t kTwoHeads = 0x01;
constexpr std::uint32_t kHeadTypeBits = 0xF0, kMirroredHeads = 0x10, kUnknownHeads = 0x20;

std::uint8_t HeadMask(Heads heads) {
  switch (heads) {
    case Heads::kPha:
      return kPha;
    case Heads::kPhb:
      return kPhb;
    case Heads::kNone:
      return 0;
    case Heads::kBoth:
      break;
  }
  return kPha | kPhb;
}

}  // namespace

std::array<std::uint8_t, kParameterBlockBytes> ParameterBlock(const Machine& machine) {
  std::array<std::uint8_t, kParameterBlockBytes> block{};
  block[kMainBoardAt] = 120;
  block[kMainBoardVersionAt] = 3;
  block[kCarriageBoardAt] = 121;
  block[kCarriageBoardVersionAt] = 2;
  PutU16(&block[kCarriageSerialAt], 4711);
  block[kSelectorAt] = 0;
  for (std::size_t head = 0; head < machine.inkOrder.size(); ++head) {
    const auto& inks = machine.inkOrder[head];
    std::copy(inks.begin(), inks.end(), &block[kInkOrderAt + inks.size() * head]);
  }
  std::copy(machine.biDirShift.begin(), machine.biDirShift.end(), &block[kBiDirShiftAt]);
  std::copy(machine.headGapY.begin(), machine.headGapY.end(), &block[kHeadGapYAt]);
  std::copy(machine.headGapX.begin(), machine.headGapX.end(), &block[kHeadGapXAt]);
  block[kCalibrationsAt] = Low8(machine.feedCalib);
  block[kCalibrationHighAt] = Low8(machine.feedCalib >> 8);
  block[kFlashEveryAt] = machine.flashEvery;
  block[kSpeedAt] = machine.speed;
  block[kBidirectionalAt] = machine.bidirectional ? 1 : 0;
  block[kFixedDirAt] = machine.fixedDir != 0 ? kFixedDirBit : 0;
  block[kHeadMaskAt] = HeadMask(machine.heads);
  block[kCarriageAt] = Low8((machine.twoHeadCarriage ? kTwoHeads : 0u) |
                            (machine.mirroredHeads ? kMirroredHeads : 0u));
  block[kFeatherAt] = machine.featherPercent;
  PutU16(&block[kMarginAt], machine.margin);
  PutU16(&block[kFlashParamAt], machine.flashParam);
  PutU32(&block[kFeedBaseAt], machine.feedBase);
  PutU16(&block[kMainSerialAt], 815);
  PutU32(&block[kTravelAt], machine.travel600);
  PutU16(&block[kSignatureAt], kSignature);
  return block;
}

void CorruptBlock(Defect defect, std::vector<std::uint8_t>* block) {
  std::uint8_t* bytes = block->data();
  switch (defect) {
    case Defect::kSignature:
      PutU16(bytes + kSignatureAt, kSignature - 1);
      break;
    case Defect::kShort:
      block->resize(block->size() / 2);
      break;
    case Defect::kHead:
      bytes[kCarriageAt] = Low8((bytes[kCarriageAt] & ~kHeadTypeBits) | kUnknownHeads);
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
