// How the pixels of a line are shared out among the passes of a band. A pass of phase p prints the
// pixels u of a line with u mod columnPixels = p, one in each output column. The modes differ in
// data only.
#ifndef QRN_RASTER_COLUMN_MODES_H_
#define QRN_RASTER_COLUMN_MODES_H_

#include <cstdint>

#include "job/job.h"

namespace qrn {

constexpr std::uint32_t kSingleColumnPixels = 3;  // pixels of a column with one head

struct ColumnMode {
  std::uint8_t columnPixels;    // pixels of a line that one output column stands for
  std::uint8_t passesPerPhase;  // passes that print the same phase; phase = passIndex / this
  std::uint8_t groupBytes;      // bytes that yield a whole number of columns
  std::uint8_t needBytes;       // bytes of a group that must lie in front of the line's end
  // Reverse column of the first column, for a line of `bytes` bytes; the others follow towards
  // column 0. Requires: a group.
  std::uint32_t (*reverseStart)(std::uint32_t bytes);
  // Byte of feather mask i over byte `byte` (0 = first) of the group at byte x.
  std::uint32_t (*maskByte)(std::uint32_t i, std::uint32_t x, std::uint32_t byte);
};

constexpr std::uint32_t MaskByteByByte(std::uint32_t i, std::uint32_t x, std::uint32_t) {
  return (i + x) % 256;
}

inline constexpr ColumnMode kDual3 = {
    3,
    1,
    3,
    3,
    [](std::uint32_t bytes) { return 4 * ((bytes + 2) / 3) + 3; },
    [](std::uint32_t i, std::uint32_t x, std::uint32_t byte) { return 4 * ((i + x) % 64) + byte; }};
inline constexpr ColumnMode kDual4 = {
    4, 1, 1, 1, [](std::uint32_t bytes) { return bytes; }, MaskByteByByte};
inline constexpr ColumnMode kDual6 = {
    6, 1, 3, 3, [](std::uint32_t bytes) { return 2 * (bytes / 3); }, MaskByteByByte};
// The last group of a line of an odd number of bytes reads one byte more: it lies within the line's
// stride.
inline constexpr ColumnMode kDual8 = {
    8, 1, 2, 1, [](std::uint32_t bytes) { return bytes / 2; }, MaskByteByByte};
// One head splits a line three ways at every resolution; passes of a phase above 2 print nothing.
inline constexpr ColumnMode kSingle = {
    3,
    2,
    3,
    3,
    [](std::uint32_t bytes) { return 4 * ((bytes + 2) / 3) - 1; },
    [](std::uint32_t i, std::uint32_t x, std::uint32_t) { return (x / 3 + i) % 256; }};

// The job's mode; null for a two-head pass count that has none. Requires: the final pass count.
const ColumnMode* ModeOf(const Job& job);

// Pixels of a line that an output column stands for. Requires: the final pass count.
constexpr std::uint32_t ColumnPixels(const Job& job) {
  return job.dualHead == 1 ? job.passCount : kSingleColumnPixels;
}

}  // namespace qrn

#endif  // QRN_RASTER_COLUMN_MODES_H_
