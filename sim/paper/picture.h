// Renders paper as a picture that a person can judge: inks mixed on white, as PNG.
#ifndef QRN_SIM_PAPER_PICTURE_H_
#define QRN_SIM_PAPER_PICTURE_H_

#include <array>
#include <cstdint>
#include <string>

#include "sim/paper/paper.h"

namespace qrn::sim {

struct PictureOptions {
  // Colour of each color's ink at full coverage, 0xRRGGBB; default C, M, Y, K, then light inks.
  std::array<std::uint32_t, kInks> inkRgb{0x00AEEF, 0xEC008C, 0xFFF200, 0x231F20,
                                          0x7FD6F7, 0xF57FC5, 0xF7941D, 0x00A651};
  std::uint32_t widthMax = 1600;    // pixels; the paper is scaled down to fit, aspect kept
  std::uint32_t pixelsPerInch = 0;  // of the picture, in both directions; 0 = as widthMax has it
  std::int32_t reverseShift = 0;    // as the comparison found it, so that both directions match
  std::int32_t lineOrigin = 0;      // paper line of the picture's top
  std::uint32_t lines = 0;          // image lines and columns to show; 0 = what carries ink
  std::uint32_t columns = 0;
  std::uint32_t columnsPerInch = 360;
  std::uint32_t inkMax = 12;  // ink sum of a fully covered cell: base pass count x 3
};

// Why a picture of these lines and columns cannot be made, known before there is paper; "" when it
// can.
std::string PictureSizeProblem(const PictureOptions& options);

// Why the picture could not be written, in a few words; "" when it was. Then a part of the file may
// be there.
[[nodiscard]] std::string WritePng(const Paper& paper, const PictureOptions& options,
                                   const std::string& path);

}  // namespace qrn::sim

#endif  // QRN_SIM_PAPER_PICTURE_H_
