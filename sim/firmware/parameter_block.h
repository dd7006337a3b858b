// The block of parameters that the printer answers a connect with: little-endian, as the firmware
// keeps it.
#ifndef QRN_SIM_FIRMWARE_PARAMETER_BLOCK_H_
#define QRN_SIM_FIRMWARE_PARAMETER_BLOCK_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "sim/machine/machine.h"
#include "sim/quirks/quirks.h"

namespace qrn::sim {

constexpr std::size_t kParameterBlockBytes = 208;

// Places in the block, u8 where nothing is said.
constexpr std::size_t kMainBoardAt = 0, kMainBoardVersionAt = 1;
constexpr std::size_t kCarriageBoardAt = 4, kCarriageBoardVersionAt = 5;
constexpr std::size_t kCarriageSerialAt = 6;  // u16
constexpr std::size_t kSelectorAt = 8;        // of the feed calibrations
constexpr std::size_t kInkOrderAt = 9;        // u8[4][8], by head
constexpr std::size_t kCorrectionsAt = 41;    // u8[13], of the three that follow
constexpr std::size_t kBiDirShiftAt = kCorrectionsAt;
constexpr std::size_t kHeadGapYAt = 46, kHeadGapXAt = 50, kCorrectionsEnd = 54;
constexpr std::size_t kCalibrationsAt = 72, kCalibrationHighAt = 77, kCalibrationsEnd = 78;
constexpr std::size_t kFlashEveryAt = 81, kSpeedAt = 82, kBidirectionalAt = 83, kFixedDirAt = 87;
constexpr std::size_t kHeadMaskAt = 90, kCarriageAt = 91, kFeatherAt = 109;
constexpr std::size_t kMarginAt = 116, kFlashParamAt = 120;  // u16
constexpr std::size_t kFeedBaseAt = 128;                     // u32
constexpr std::size_t kMainSerialAt = 148;                   // u16
constexpr std::size_t kTravelAt = 192;                       // u32
constexpr std::size_t kSignatureAt = 204;                    // u16

// The section that an update replaces.
constexpr std::size_t kUpdateAt = kSelectorAt, kUpdateBytes = 70;

std::array<std::uint8_t, kParameterBlockBytes> ParameterBlock(const Machine& machine);

// Gives a whole block this defect, which no printer should report.
void CorruptBlock(Defect defect, std::vector<std::uint8_t>* block);

}  // namespace qrn::sim

#endif  // QRN_SIM_FIRMWARE_PARAMETER_BLOCK_H_
