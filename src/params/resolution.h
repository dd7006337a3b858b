// The horizontal resolutions that the carriage can print, and their passes. Both threads.
#ifndef QRN_PARAMS_RESOLUTION_H_
#define QRN_PARAMS_RESOLUTION_H_

#include <array>
#include <cstdint>

#include "job/job.h"

namespace qrn {

constexpr std::array<std::uint32_t, 4> kResolutionX = {1080, 1440, 1620, 2160};  // dots per inch
constexpr std::uint32_t kResolutionY = 360;                                      // lines per inch

// The low 8 bits of `index` count; 0 for an index of 4 or more.
std::uint16_t ResolutionByIndex(std::uint32_t index);
// Index of the resolution in the low 16 bits of the argument; 0 when it is not in the table.
std::uint8_t ResolutionIndex(std::uint32_t resolution);

// Sets resIdx, passCount (3, 4, 6 or 8), resParamA, resParamB and resCode for nResX; false when
// nResX cannot be printed. Transmit thread.
[[nodiscard]] bool CheckResolutionX(Job& job);

}  // namespace qrn

#endif  // QRN_PARAMS_RESOLUTION_H_
