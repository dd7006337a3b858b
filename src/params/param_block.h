// The printer's parameter block: as last received, and where it holds what the library reads.
// Multi-byte values are little-endian. Transmit thread, at connect and when a pause reply updates
// it.
#ifndef QRN_PARAMS_PARAM_BLOCK_H_
#define QRN_PARAMS_PARAM_BLOCK_H_

#include <cstddef>
#include <cstdint>

#include "base/bytes.h"

namespace qrn {

constexpr std::size_t kParamMainBoardIdAt = 0;  // u8
// Main boards of the middle id range report both boards in bytes,
constexpr std::size_t kParamMainBoardVer8At = 1;      // u8
constexpr std::size_t kParamCarriageBoardId8At = 4;   // u8
constexpr std::size_t kParamCarriageBoardVer8At = 5;  // u8
// all others in words.
constexpr std::size_t kParamCarriageBoardIdAt = 1;   // u8
constexpr std::size_t kParamCarriageBoardVerAt = 2;  // u16
constexpr std::size_t kParamMainBoardVerAt = 4;      // u16
constexpr std::size_t kParamCarriageBoardSnAt = 6;   // u16
constexpr std::size_t kParamCalibSelectAt = 8;       // u8  0..4: low byte of the calibration value
constexpr std::size_t kParamInkOrderAt = 9;        // u8[4][8] colour of each nozzle row, four heads
constexpr std::size_t kParamBiDirAt = 41;          // u8[4] "Db" by resolution, 32 = no shift
constexpr std::size_t kParamHeadGapYAt = 45;       // u8[5] lines, by pass index
constexpr std::size_t kParamHeadGapXAt = 50;       // u8[4] columns, by resolution
constexpr std::size_t kParamCalibLowAt = 72;       // u8[5]
constexpr std::size_t kParamCalibHighAt = 77;      // u8
constexpr std::size_t kParamFlashEveryAt = 81;     // u8  swaths
constexpr std::size_t kParamSpeedAt = 82;          // u8  10 = base speed of the resolution
constexpr std::size_t kParamBidirectionalAt = 83;  // u8
constexpr std::size_t kParamFlashOptAt = 84;       // u8  bit 6
constexpr std::size_t kParamWaveNoAt = 85;         // u8
constexpr std::size_t kParamFixedDirAt = 87;       // u8  bit 5
constexpr std::size_t kParamHeadMaskAt = 90;       // u8  high nibble: heads in use
constexpr std::size_t kParamCarriageAt = 91;       // u8  low nibble: 1 = two heads; high: head type
constexpr std::size_t kParamNoMarginAt = 93;       // u8  not 0: the side margin counts as 0
constexpr std::size_t kParamFeatherAt = 109;       // u8  percent
constexpr std::size_t kParamMarginAt = 116;        // u16 4/600 inch
constexpr std::size_t kParamFlashParamAt = 120;    // u16
constexpr std::size_t kParamStepBaseAt = 128;      // u32 motor steps of the calibration value
constexpr std::size_t kParamOptionsAt = 136;       // u16
constexpr std::size_t kParamSerialAt = 148;        // u16
constexpr std::size_t kParamTravelAt = 192;        // u32 1/600 inch, 0 = 2150 mm
constexpr std::size_t kParamSignatureAt = 204;     // u16
constexpr std::uint16_t kParamSignature = 0x5213;

constexpr std::uint32_t kParamBlockBytes = 208;
// The adjustable section, which a pause reply may carry anew.
constexpr std::size_t kParamUpdateAt = kParamCalibSelectAt;
constexpr std::uint32_t kParamUpdateBytes = 70;

// With the side margin cleared where the block asks for it, and with every firmware update.
// Outlives jobs.
struct PrinterParams {
  std::uint8_t bytes[kParamBlockBytes];

  [[nodiscard]] std::uint16_t Word(std::size_t at) const { return U16(bytes + at); }
  [[nodiscard]] std::uint32_t Long(std::size_t at) const { return U32(bytes + at); }
};
PrinterParams& GetPrinterParams();

}  // namespace qrn

#endif  // QRN_PARAMS_PARAM_BLOCK_H_
