#include "print_page/raster_layout.h"

#include <algorithm>
#include <cstring>

namespace qrn::tool {
namespace {

constexpr std::uint32_t kVerticalResolution = 360;
constexpr std::uint32_t kWidthMax = 400'000, kLinesMax = 4'000'000;  // 4.7 m at 2160 dpi, 282 m
constexpr std::uint32_t kLineBytesMax = 16u << 20;                   // of the stream

constexpr std::array<std::uint8_t, 8> kInOrder = {0, 1, 2, 3, 4, 5, 6, 7};
constexpr std::array<std::uint8_t, 8> kBlackFirst = {3, 0, 1, 2};  // K or KCMY; the page has CMYK

// The header's enumerations are numbers from a file: one that no enumerator has must not be read as
// the type it claims to be.
template <class Enumeration>
std::uint32_t NumberOf(const Enumeration& field) {
  std::uint32_t number = 0;
  static_assert(sizeof field == sizeof number);
  std::memcpy(&number, &field, sizeof number);
  return number;
}

// Colours of a colour space; 0 = not read.
std::uint32_t ColorsOf(std::uint32_t space) {
  switch (space) {
    case CUPS_CSPACE_K:
      return 1;
    case CUPS_CSPACE_CMYK:
    case CUPS_CSPACE_KCMY:
      return 4;
    default:
      break;
  }
  const bool device = space >= CUPS_CSPACE_DEVICE1 && space - CUPS_CSPACE_DEVICE1 < 8;
  return device ? space - CUPS_CSPACE_DEVICE1 + 1 : 0;
}

// Bits of one line (of one plane, when planar) as the stream packs it.
std::uint64_t LineBits(const RasterLayout& layout) {
  const std::uint64_t plane = std::uint64_t{layout.width} * layout.bits;
  if (layout.order == CUPS_ORDER_PLANAR) return plane;
  // Banded lines hold the colours one after the other, each in an equal share of whole bytes.
  if (layout.order == CUPS_ORDER_BANDED) return (plane + 7) / 8 * 8 * layout.planes;
  return std::uint64_t{layout.width} * layout.pixelBits;
}

}  // namespace

std::string CheckHeader(const cups_page_header2_t& header, std::uint32_t resolution,
                        RasterLayout* layout) {
  const std::uint32_t space = NumberOf(header.cupsColorSpace);
  layout->planes = ColorsOf(space);
  layout->bits = header.cupsBitsPerColor;
  layout->width = header.cupsWidth;
  layout->lines = header.cupsHeight;
  layout->order = NumberOf(header.cupsColorOrder);
  layout->lineBytes = header.cupsBytesPerLine;
  const bool blackFirst = space == CUPS_CSPACE_KCMY || space == CUPS_CSPACE_K;
  layout->inks = blackFirst ? kBlackFirst : kInOrder;
  layout->pixelBits = std::max(header.cupsBitsPerPixel, layout->planes * layout->bits);
  if (layout->planes == 0) {
    return "colour space " + std::to_string(space) +
           " is not read: only K, CMYK, KCMY and DEVICE1 to DEVICE8 are";
  }
  if (layout->bits != 1 && layout->bits != 2 && layout->bits != 8)
    return std::to_string(layout->bits) + " bits per colour are not read: only 1, 2 and 8 are";
  if (layout->width == 0 || layout->width > kWidthMax || layout->lines == 0 ||
      layout->lines > kLinesMax) {
    return std::to_string(layout->width) + " x " + std::to_string(layout->lines) +
           " pixels are not read: only 1 x 1 to " + std::to_string(kWidthMax) + " x " +
           std::to_string(kLinesMax) + " are";
  }
  if (layout->order != CUPS_ORDER_CHUNKED && layout->order != CUPS_ORDER_BANDED &&
      layout->order != CUPS_ORDER_PLANAR) {
    return "colour order " + std::to_string(layout->order) + " is not read";
  }
  const std::uint32_t xDpi = header.HWResolution[0], yDpi = header.HWResolution[1];
  if (xDpi != 0 && (xDpi != resolution || yDpi != kVerticalResolution)) {
    return "it has " + std::to_string(xDpi) + "x" + std::to_string(yDpi) + " dpi, not " +
           std::to_string(resolution) + "x" + std::to_string(kVerticalResolution);
  }
  if (layout->pixelBits > 64 || layout->pixelBits % layout->bits != 0)
    return "pixels of " + std::to_string(layout->pixelBits) + " bits are not read";
  if (layout->lineBytes > kLineBytesMax || LineBits(*layout) > std::uint64_t{layout->lineBytes} * 8)
    return "lines of " + std::to_string(layout->lineBytes) + " bytes do not fit its pixels";
  return "";
}

}  // namespace qrn::tool
