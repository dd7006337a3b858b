#include "raster/column_modes.h"

#include <initializer_list>

#include "raster/row_converters.h"

namespace qrn {
namespace {

constexpr std::uint32_t MaskByteByByte(std::uint32_t i, std::uint32_t x, std::uint32_t) {
  return (i + x) % 256;
}

}  // namespace

constinit const ColumnMode kDual3 = {
    .phases = 3,
    .passesPerPhase = 1,
    .groupBytes = 3,
    .needBytes = 3,
    .reverseStart = [](std::uint32_t bytes) { return 4 * ((bytes + 2) / 3) + 3; },
    .maskByte = [](std::uint32_t i, std::uint32_t x,
                   std::uint32_t byte) { return 4 * ((i + x) % 64) + byte; },
    .forward = Dual3Forward,
    .reverse = Dual3Reverse,
};

constinit const ColumnMode kDual4 = {
    .phases = 4,
    .passesPerPhase = 1,
    .groupBytes = 1,
    .needBytes = 1,
    .reverseStart = [](std::uint32_t bytes) { return bytes; },
    .maskByte = MaskByteByByte,
    .forward = Dual4Forward,
    .reverse = Dual4Reverse,
};

constinit const ColumnMode kDual6 = {
    .phases = 6,
    .passesPerPhase = 1,
    .groupBytes = 3,
    .needBytes = 3,
    .reverseStart = [](std::uint32_t bytes) { return 2 * (bytes / 3); },
    .maskByte = MaskByteByByte,
    .forward = Dual6Forward,
    .reverse = Dual6Reverse,
};

// The last group of a line of an odd number of bytes reads one byte more, which is within the
// line's stride.
constinit const ColumnMode kDual8 = {
    .phases = 8,
    .passesPerPhase = 1,
    .groupBytes = 2,
    .needBytes = 1,
    .reverseStart = [](std::uint32_t bytes) { return bytes / 2; },
    .maskByte = MaskByteByByte,
    .forward = Dual8Forward,
    .reverse = Dual8Reverse,
};

// At more than six passes the later ones have phases above 2, which print nothing.
constinit const ColumnMode kSingle = {
    .phases = kSinglePhases,
    .passesPerPhase = 2,
    .groupBytes = 3,
    .needBytes = 3,
    .reverseStart = [](std::uint32_t bytes) { return 4 * ((bytes + 2) / 3) - 1; },
    .maskByte = [](std::uint32_t i, std::uint32_t x, std::uint32_t) { return (x / 3 + i) % 256; },
    .forward = SingleForward,
    .reverse = SingleReverse,
};

const ColumnMode* ModeOf(const Job& job) {
  if (job.dualHead != 1) return &kSingle;
  for (const ColumnMode* mode : {&kDual3, &kDual4, &kDual6, &kDual8}) {
    if (mode->phases == job.passCount) return mode;
  }
  return nullptr;
}

}  // namespace qrn
