// Where the printer's 208-byte parameter block holds what the library reads. Multi-byte values are
// little-endian.
#ifndef QRN_PARAMS_PARAM_BLOCK_H_
#define QRN_PARAMS_PARAM_BLOCK_H_

#include <cstddef>
#include <cstdint>

namespace qrn {

constexpr std::size_t kParamMainBoardIdAt = 0;  // u8
constexpr std::size_t kParamCalibSelectAt =
    8;  // u8  0..4: which low byte of the calibration value counts
constexpr std::size_t kParamInkOrderAt = 9;  // u8[4][8] colour plane of each nozzle row, four heads
constexpr std::size_t kParamBiDirAt = 41;    // u8[4] "Db" by resolution, 32 = no shift
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
constexpr std::size_t kParamCarriageAt =
    91;  // u8  low nibble: 1 = two heads; high nibble: head type
constexpr std::size_t kParamNoMarginAt = 93;     // u8  not 0: the side margin counts as 0
constexpr std::size_t kParamFeatherAt = 109;     // u8  percent
constexpr std::size_t kParamMarginAt = 116;      // u16 4/600 inch
constexpr std::size_t kParamFlashParamAt = 120;  // u16
constexpr std::size_t kParamStepBaseAt =
    128;  // u32 motor steps that belong to the calibration value
constexpr std::size_t kParamOptionsAt = 136;    // u16
constexpr std::size_t kParamSerialAt = 148;     // u16
constexpr std::size_t kParamTravelAt = 192;     // u32 1/600 inch, 0 = 2150 mm
constexpr std::size_t kParamSignatureAt = 204;  // u16
constexpr std::uint16_t kParamSignature = 0x5213;

constexpr std::size_t kParamUpdateAt = kParamCalibSelectAt;  // the adjustable section starts here

}  // namespace qrn

#endif  // QRN_PARAMS_PARAM_BLOCK_H_
