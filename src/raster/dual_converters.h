// The two-head workers. Each converts 360 lines of one colour, the two lines of every nozzle pair
// through row A and row B, taking the pixels u of a line with u mod passCount = passIndex. They set
// dots in PrintOutBuf, clear the pixels they have placed, and leave what the feather mask of the
// last nozzles holds back. Host's thread.
//
// The variants differ in data only: how many bytes form a group, which pixels of a group a phase
// takes, where the reverse columns start, and which mask byte lies over an input byte.
#ifndef QRN_RASTER_DUAL_CONVERTERS_H_
#define QRN_RASTER_DUAL_CONVERTERS_H_

#include <cstdint>

#include "host/job.h"
#include "raster/convert.h"

namespace qrn {

// kPassCount   passes of a band; a phase takes every kPassCount-th pixel
// kGroupBytes  input bytes that yield a whole number of columns
// kNeedBytes   bytes of a group that must lie in front of the line's end for the group to be walked
// ReverseGroups(W)       groups by which the reverse columns start, for a line of W bytes
// kReverseLead           columns behind a group's start at which its first pixel lands in reverse;
// the others follow
//                        towards column 0
// MaskByte(i, x, byte)   byte of feather mask i over byte `byte` (0 = first) of the group at byte x
struct Dual3 {
  static constexpr std::uint32_t kPassCount = 3, kGroupBytes = 3, kNeedBytes = 3, kReverseLead = 3;
  static constexpr std::uint32_t ReverseGroups(std::uint32_t bytes) { return (bytes + 2) / 3; }
  static constexpr std::uint32_t MaskByte(std::uint32_t i, std::uint32_t x, std::uint32_t byte) {
    return 4 * ((i + x) % 64) + byte;
  }
};
struct Dual4 {
  static constexpr std::uint32_t kPassCount = 4, kGroupBytes = 1, kNeedBytes = 1, kReverseLead = 0;
  static constexpr std::uint32_t ReverseGroups(std::uint32_t bytes) { return bytes; }
  static constexpr std::uint32_t MaskByte(std::uint32_t i, std::uint32_t x, std::uint32_t) {
    return (i + x) % 256;
  }
};
struct Dual6 {
  static constexpr std::uint32_t kPassCount = 6, kGroupBytes = 3, kNeedBytes = 3, kReverseLead = 0;
  static constexpr std::uint32_t ReverseGroups(std::uint32_t bytes) { return bytes / 3; }
  static constexpr std::uint32_t MaskByte(std::uint32_t i, std::uint32_t x, std::uint32_t) {
    return (i + x) % 256;
  }
};
// The last group of a line of an odd number of bytes reads one byte more: it lies within the line's
// stride.
struct Dual8 {
  static constexpr std::uint32_t kPassCount = 8, kGroupBytes = 2, kNeedBytes = 1, kReverseLead = 0;
  static constexpr std::uint32_t ReverseGroups(std::uint32_t bytes) { return bytes / 2; }
  static constexpr std::uint32_t MaskByte(std::uint32_t i, std::uint32_t x, std::uint32_t) {
    return (i + x) % 256;
  }
};

template <class Mode>
constexpr std::uint32_t kPixelsTaken = Mode::kGroupBytes* kPixelsPerByte / Mode::kPassCount;
template <class Mode>
constexpr std::uint16_t kColStep = kPixelsTaken<Mode>* kColumnBytes;
static_assert(kColStep<Dual3> == 2880 && kColStep<Dual4> == 720 && kColStep<Dual6> == 1440 &&
              kColStep<Dual8> == 720);

void Dual3Forward(Job& job, ConvertParams& params);
void Dual3Reverse(Job& job, ConvertParams& params);
void Dual4Forward(Job& job, ConvertParams& params);
void Dual4Reverse(Job& job, ConvertParams& params);
void Dual6Forward(Job& job, ConvertParams& params);
void Dual6Reverse(Job& job, ConvertParams& params);
void Dual8Forward(Job& job, ConvertParams& params);
void Dual8Reverse(Job& job, ConvertParams& params);

}  // namespace qrn

#endif  // QRN_RASTER_DUAL_CONVERTERS_H_
