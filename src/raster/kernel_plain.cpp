// The kernel for any processor: bit by bit, as the picture in kernels.h says.
#include <cstring>

#include "job/print_out.h"
#include "job/row_layout.h"
#include "raster/kernels.h"

namespace qrn {
namespace {

unsigned Deinterleave(std::uint32_t phases, const std::uint8_t* line, std::size_t vectors,
                      std::uint8_t* runs, std::size_t runsApart) {
  unsigned ink = 0;
  for (std::size_t byte = 0; byte < vectors * kVectorBytes; ++byte, line += phases) {
    for (std::uint32_t phase = 0; phase < phases; ++phase) {
      unsigned cells = 0;
      for (std::uint32_t k = 0; k < kPixelsPerByte; ++k) {
        const std::uint32_t pixel = k * phases + phase;
        const unsigned level =
            line[pixel / kPixelsPerByte] >> (6 - 2 * (pixel % kPixelsPerByte)) & 3u;
        cells |= level << (2 * k);
      }
      runs[phase * runsApart + byte] = static_cast<std::uint8_t>(cells);
      if (cells != 0) ink |= 1u << phase;
    }
  }
  return ink;
}

void Align(const std::uint8_t* const (&runs)[kGroupNozzles], unsigned shift, std::uint8_t* rows,
           bool add) {
  for (std::uint32_t nozzle = 0; nozzle < kGroupNozzles; ++nozzle, rows += 2 * kJetBytes) {
    const std::uint8_t* run = runs[nozzle];
    if (run == nullptr) continue;
    for (std::uint32_t i = 0; i < kStripBytes; ++i) {
      const unsigned pair = run[i] | static_cast<unsigned>(run[i + 1]) << 8;
      rows[i] = static_cast<std::uint8_t>((add ? rows[i] : 0u) | pair >> shift);
    }
  }
}

// The bit of all eight nozzle rows of a jet as the byte that it fires.
std::uint8_t JoinRows(const std::uint8_t (&rows)[kNozzleRows][kStripBytes], std::uint32_t byte,
                      unsigned bit) {
  unsigned fired = 0;
  for (std::uint32_t row = 0; row < kNozzleRows; ++row)
    fired |= (rows[row][byte] >> bit & 1u) << row;
  return static_cast<std::uint8_t>(fired);
}

void Pack(const JetGroup& jets, std::uint32_t firstByte, std::uint32_t nozzles,
          std::uint32_t columns, std::uint8_t* out, std::ptrdiff_t columnStep) {
  for (std::uint32_t column = 0; column < columns; ++column, out += columnStep) {
    const std::uint32_t byte = firstByte + column / kPixelsPerByte;
    const unsigned bit = 2 * (column % kPixelsPerByte);
    for (std::uint32_t jet = 0; jet < 2 * nozzles; ++jet) {
      out[jet] = JoinRows(jets.rows[jet], byte, bit + 1);
      out[kPlaneBytes + jet] = JoinRows(jets.rows[jet], byte, bit);
    }
  }
}

void Stream(std::uint8_t* to, const std::uint8_t* from, std::size_t bytes) {
  std::memcpy(to, from, bytes);
}

}  // namespace

extern const Kernel kPlainKernel;
constinit const Kernel kPlainKernel = {
    .name = "plain",
    .deinterleave = Deinterleave,
    .align = Align,
    .pack = Pack,
    .stream = Stream,
};

}  // namespace qrn
