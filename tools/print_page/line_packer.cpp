#include "print_page/line_packer.h"

#include <cstring>

#include "print_page/drop_levels.h"

namespace qrn::tool {
namespace {

constexpr std::uint32_t kPixelsPerByte = 4;

// Bit at which the pixels of a colour start in a line of the stream, and bits from pixel to pixel.
struct Walk {
  std::uint64_t start = 0;
  std::uint32_t step = 0;
};

Walk WalkOf(const RasterLayout& layout, std::uint32_t color) {
  switch (layout.order) {
    case CUPS_ORDER_PLANAR:
      return {0, layout.bits};
    case CUPS_ORDER_BANDED:
      return {std::uint64_t{layout.lineBytes / layout.planes} * 8 * color, layout.bits};
    default:
      return {layout.pixelBits - (layout.planes - color) * layout.bits, layout.pixelBits};
  }
}

// Drop level of a value of `bits` bits, 1 or 2.
std::uint32_t FewBitsLevel(std::uint32_t value, std::uint32_t bits) {
  return bits == 1 ? value * 3u : value;
}

// `levelAt(x)` is the drop level of a pixel.
template <class LevelAt>
bool Pack(std::uint32_t width, std::uint8_t* packed, LevelAt levelAt) {
  std::uint32_t inked = 0, x = 0;
  for (; x + kPixelsPerByte <= width; x += kPixelsPerByte) {
    const std::uint32_t levels =
        levelAt(x) << 6 | levelAt(x + 1) << 4 | levelAt(x + 2) << 2 | levelAt(x + 3);
    packed[x / kPixelsPerByte] = static_cast<std::uint8_t>(levels);
    inked |= levels;
  }
  if (x == width) return inked != 0;
  std::uint32_t last = 0;
  for (; x < width; ++x) last |= levelAt(x) << (6 - 2 * (x % kPixelsPerByte));
  packed[width / kPixelsPerByte] = static_cast<std::uint8_t>(last);
  return (inked | last) != 0;
}

// The pixels are in the stream as they are in a plane.
bool CopyLine(const std::uint8_t* pixels, std::uint32_t width, std::uint8_t* packed) {
  const std::uint32_t whole = width / kPixelsPerByte, rest = width % kPixelsPerByte;
  std::memcpy(packed, pixels, whole);
  std::uint32_t inked = 0;
  for (std::uint32_t i = 0; i < whole; ++i) inked |= packed[i];
  if (rest != 0) {
    packed[whole] = static_cast<std::uint8_t>(pixels[whole] & (0xFF00u >> (2 * rest)));
    inked |= packed[whole];
  }
  return inked != 0;
}

bool IsBlank(const std::uint8_t* bytes, std::size_t count) {
  return bytes[0] == 0 && std::memcmp(bytes, bytes + 1, count - 1) == 0;
}

// All pixels of a colour are at the same place of a byte, whole bytes apart.
bool PackBytes(const RasterLayout& layout, const std::uint8_t* line, const Walk& walk,
               std::uint32_t y, std::uint8_t* packed) {
  const std::uint8_t* pixels = line + walk.start / 8;
  const std::size_t step = walk.step / 8;
  if (layout.bits == 8) {
    if (step == 1 && IsBlank(pixels, layout.width)) return false;
    const LineLevels& levels = LevelsOfLine(y);
    return Pack(layout.width, packed, [=, &levels](std::uint32_t x) -> std::uint32_t {
      return levels[x % kScreenPixels][pixels[x * step]];
    });
  }
  const std::uint32_t shift = 8 - layout.bits - static_cast<std::uint32_t>(walk.start % 8);
  const std::uint32_t mask = (1u << layout.bits) - 1u;
  const std::uint32_t bits = layout.bits;
  return Pack(layout.width, packed, [=](std::uint32_t x) {
    return FewBitsLevel((std::uint32_t{pixels[x * step]} >> shift) & mask, bits);
  });
}

}  // namespace

bool PackLine(const RasterLayout& layout, const std::uint8_t* line, std::uint32_t color,
              std::uint32_t y, std::uint8_t* packed) {
  const Walk walk = WalkOf(layout, color);
  if (layout.bits == 2 && walk.step == 2)
    return CopyLine(line + walk.start / 8, layout.width, packed);
  if (walk.step % 8 == 0) return PackBytes(layout, line, walk, y, packed);
  const std::uint32_t bits = layout.bits, mask = (1u << bits) - 1u;
  return Pack(layout.width, packed, [=](std::uint32_t x) {
    const std::uint64_t bit = walk.start + std::uint64_t{x} * walk.step;
    return FewBitsLevel((std::uint32_t{line[bit / 8]} >> (8 - bits - bit % 8)) & mask, bits);
  });
}

}  // namespace qrn::tool
