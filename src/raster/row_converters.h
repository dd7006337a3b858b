// The nozzle-row workers. Each converts 360 lines of one colour of one pass: it takes the pixels u
// of a line with u mod kColumnPixels = phase, sets their dots in PrintOutBuf, clears what it has
// placed, and leaves what the feather mask of the last nozzles holds back. With two heads the two
// lines of every nozzle pair go through row A and row B; with one head row A takes one of them.
// Host's thread.
//
// The variants differ in data only: how many bytes form a group, which pixels of a group a phase
// takes, where the reverse columns start, and which mask byte lies over an input byte.
#ifndef QRN_RASTER_ROW_CONVERTERS_H_
#define QRN_RASTER_ROW_CONVERTERS_H_

#include <cstdint>

#include "host/job.h"
#include "raster/convert.h"

namespace qrn {

// - kColumnPixels: pixels of a line that one output column stands for; a phase prints one of them.
// - kPassesPerPhase: passes that print the same phase; phase = passIndex / kPassesPerPhase.
// - kLinesPerNozzle: lines of a nozzle pair that are printed: 2 through rows A and B, 1 through A.
// - kGroupBytes: input bytes that yield a whole number of columns.
// - kNeedBytes: bytes of a group that must lie in front of the line's end for it to be walked.
// - ReverseGroups(W): groups by which the reverse columns start, for a line of W bytes.
// - kReverseLead: columns behind a group's start at which its first pixel lands in reverse; the
//   others follow towards column 0.
// - MaskByte(i, x, byte): byte of feather mask i over byte `byte` (0 = first) of the group at x.
struct Dual3 {
  static constexpr std::uint32_t kColumnPixels = 3, kPassesPerPhase = 1, kLinesPerNozzle = 2;
  static constexpr std::uint32_t kGroupBytes = 3, kNeedBytes = 3, kReverseLead = 3;
  static constexpr std::uint32_t ReverseGroups(std::uint32_t bytes) { return (bytes + 2) / 3; }
  static constexpr std::uint32_t MaskByte(std::uint32_t i, std::uint32_t x, std::uint32_t byte) {
    return 4 * ((i + x) % 64) + byte;
  }
};
struct Dual4 {
  static constexpr std::uint32_t kColumnPixels = 4, kPassesPerPhase = 1, kLinesPerNozzle = 2;
  static constexpr std::uint32_t kGroupBytes = 1, kNeedBytes = 1, kReverseLead = 0;
  static constexpr std::uint32_t ReverseGroups(std::uint32_t bytes) { return bytes; }
  static constexpr std::uint32_t MaskByte(std::uint32_t i, std::uint32_t x, std::uint32_t) {
    return (i + x) % 256;
  }
};
struct Dual6 {
  static constexpr std::uint32_t kColumnPixels = 6, kPassesPerPhase = 1, kLinesPerNozzle = 2;
  static constexpr std::uint32_t kGroupBytes = 3, kNeedBytes = 3, kReverseLead = 0;
  static constexpr std::uint32_t ReverseGroups(std::uint32_t bytes) { return bytes / 3; }
  static constexpr std::uint32_t MaskByte(std::uint32_t i, std::uint32_t x, std::uint32_t) {
    return (i + x) % 256;
  }
};
// The last group of a line of an odd number of bytes reads one byte more: it lies within the line's
// stride.
struct Dual8 {
  static constexpr std::uint32_t kColumnPixels = 8, kPassesPerPhase = 1, kLinesPerNozzle = 2;
  static constexpr std::uint32_t kGroupBytes = 2, kNeedBytes = 1, kReverseLead = 0;
  static constexpr std::uint32_t ReverseGroups(std::uint32_t bytes) { return bytes / 2; }
  static constexpr std::uint32_t MaskByte(std::uint32_t i, std::uint32_t x, std::uint32_t) {
    return (i + x) % 256;
  }
};
// One head splits a line three ways at every resolution; passes of a phase above 2 print nothing.
struct Single {
  static constexpr std::uint32_t kColumnPixels = kSingleColumnPixels, kPassesPerPhase = 2;
  static constexpr std::uint32_t kLinesPerNozzle = 1;
  static constexpr std::uint32_t kGroupBytes = 3, kNeedBytes = 3, kReverseLead = 3;
  // Requires: a group to walk.
  static constexpr std::uint32_t ReverseGroups(std::uint32_t bytes) { return (bytes + 2) / 3 - 1; }
  static constexpr std::uint32_t MaskByte(std::uint32_t i, std::uint32_t x, std::uint32_t) {
    return (x / kGroupBytes + i) % 256;
  }
};

template <class Mode>
constexpr std::uint32_t kPixelsTaken = Mode::kGroupBytes* kPixelsPerByte / Mode::kColumnPixels;
template <class Mode>
constexpr std::uint16_t kColStep = kPixelsTaken<Mode>* kColumnBytes;
static_assert(kColStep<Dual3> == 2880 && kColStep<Dual4> == 720 && kColStep<Dual6> == 1440 &&
              kColStep<Dual8> == 720 && kColStep<Single> == 2880);

void Dual3Forward(Job& job, ConvertParams& params);
void Dual3Reverse(Job& job, ConvertParams& params);
void Dual4Forward(Job& job, ConvertParams& params);
void Dual4Reverse(Job& job, ConvertParams& params);
void Dual6Forward(Job& job, ConvertParams& params);
void Dual6Reverse(Job& job, ConvertParams& params);
void Dual8Forward(Job& job, ConvertParams& params);
void Dual8Reverse(Job& job, ConvertParams& params);
void SingleForward(Job& job, ConvertParams& params);
void SingleReverse(Job& job, ConvertParams& params);

}  // namespace qrn

#endif  // QRN_RASTER_ROW_CONVERTERS_H_
