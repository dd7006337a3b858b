#include "print_page/raster_reader.h"

#include <cups/raster.h>

#include <algorithm>
#include <array>
#include <vector>

namespace qrn::tool {
namespace {

constexpr std::uint32_t kVerticalResolution = 360;
constexpr std::uint32_t kWidthMax = 400'000, kLinesMax = 4'000'000;  // 4.7 m at 2160 dpi, 282 m
constexpr std::uint64_t kPageBytesMax = 4ull << 30;                  // of packed planes

struct Layout {
  std::uint32_t planes = 0;
  std::uint32_t bits = 0;  // per colour
  std::uint32_t width = 0, lines = 0;
  cups_order_t order = CUPS_ORDER_CHUNKED;
  std::uint32_t lineBytes = 0;  // of one line as the stream holds it (of one plane, when planar)
  std::uint32_t pixelBits = 0;  // of one pixel, when chunked; padding comes first
  std::array<std::uint8_t, 8> inks{};  // plane of the page for each colour of the stream
};

constexpr std::array<std::uint8_t, 8> kInOrder = {0, 1, 2, 3, 4, 5, 6, 7};
constexpr std::array<std::uint8_t, 8> kBlackFirst = {3, 0, 1, 2};  // K or KCMY; the page has CMYK

// Colours of a colour space; 0 = not read.
std::uint32_t ColorsOf(cups_cspace_t space) {
  switch (space) {
    case CUPS_CSPACE_K:
      return 1;
    case CUPS_CSPACE_CMYK:
    case CUPS_CSPACE_KCMY:
      return 4;
    default:
      break;
  }
  const int device = static_cast<int>(space) - static_cast<int>(CUPS_CSPACE_DEVICE1) + 1;
  return device >= 1 && device <= 8 ? static_cast<std::uint32_t>(device) : 0;
}

// Bits of one line (of one plane, when planar) as the stream packs it.
std::uint64_t LineBits(const Layout& layout) {
  const std::uint64_t plane = std::uint64_t{layout.width} * layout.bits;
  if (layout.order == CUPS_ORDER_PLANAR) return plane;
  // Banded lines hold the colours one behind the other, each in whole bytes.
  if (layout.order == CUPS_ORDER_BANDED) return (plane + 7) / 8 * 8 * layout.planes;
  return std::uint64_t{layout.width} * layout.pixelBits;
}

std::string CheckHeader(const cups_page_header2_t& header, std::uint32_t resolution,
                        Layout* layout) {
  layout->planes = ColorsOf(header.cupsColorSpace);
  layout->bits = header.cupsBitsPerColor;
  layout->width = header.cupsWidth;
  layout->lines = header.cupsHeight;
  layout->order = header.cupsColorOrder;
  layout->lineBytes = header.cupsBytesPerLine;
  const bool blackFirst =
      header.cupsColorSpace == CUPS_CSPACE_KCMY || header.cupsColorSpace == CUPS_CSPACE_K;
  layout->inks = blackFirst ? kBlackFirst : kInOrder;
  layout->pixelBits = std::max(header.cupsBitsPerPixel, layout->planes * layout->bits);
  if (layout->planes == 0)
    return "colour space " + std::to_string(header.cupsColorSpace) + " is not read";
  if (layout->bits != 1 && layout->bits != 2 && layout->bits != 8) {
    return std::to_string(layout->bits) + " bits per colour are not read";
  }
  if (layout->width == 0 || layout->width > kWidthMax || layout->lines == 0 ||
      layout->lines > kLinesMax) {
    return "a page of " + std::to_string(layout->width) + " x " + std::to_string(layout->lines) +
           " pixels";
  }
  if (layout->order != CUPS_ORDER_CHUNKED && layout->order != CUPS_ORDER_BANDED &&
      layout->order != CUPS_ORDER_PLANAR) {
    return "colour order " + std::to_string(layout->order) + " is not read";
  }
  if (std::uint64_t{layout->planes} * layout->lines * (WidenedWidth(layout->width) / 4) >
      kPageBytesMax) {
    return "the page is too large for memory";
  }
  const std::uint32_t xDpi = header.HWResolution[0], yDpi = header.HWResolution[1];
  if (xDpi != 0 && (xDpi != resolution || yDpi != kVerticalResolution)) {
    return "the page is of " + std::to_string(xDpi) + "x" + std::to_string(yDpi) +
           " dpi, asked is " + std::to_string(resolution) + "x" +
           std::to_string(kVerticalResolution);
  }
  if (layout->pixelBits > 64)
    return "pixels of " + std::to_string(layout->pixelBits) + " bits are not read";
  if (LineBits(*layout) > std::uint64_t{layout->lineBytes} * 8)
    return "its lines are shorter than its pixels";
  return "";
}

std::uint32_t BitsAt(const std::uint8_t* line, std::uint64_t bit, std::uint32_t bits) {
  if (bits == 8) return line[bit / 8];
  return (line[bit / 8] >> (8 - bits - bit % 8)) & ((1u << bits) - 1u);
}

// Bit at which a pixel of a colour starts in the line that the stream gave.
std::uint64_t PixelBit(const Layout& layout, std::uint32_t x, std::uint32_t color) {
  switch (layout.order) {
    case CUPS_ORDER_PLANAR:
      return std::uint64_t{x} * layout.bits;
    case CUPS_ORDER_BANDED: {
      const std::uint64_t bandBits = (std::uint64_t{layout.width} * layout.bits + 7) / 8 * 8;
      return color * bandBits + std::uint64_t{x} * layout.bits;
    }
    default:
      return std::uint64_t{x + 1} * layout.pixelBits - (layout.planes - color) * layout.bits;
  }
}

std::uint8_t DropLevel(std::uint32_t value, std::uint32_t bits, std::uint32_t x, std::uint32_t y) {
  switch (bits) {
    case 1:
      return value != 0 ? 3 : 0;
    case 2:
      return static_cast<std::uint8_t>(value);
    default:
      return LevelOf(static_cast<std::uint8_t>(value), x, y);
  }
}

// Packs one colour of one stream line into its plane of the page.
void PackLine(const Layout& layout, const std::uint8_t* line, std::uint32_t color, std::uint32_t y,
              RasterPage* page) {
  std::uint8_t* out = page->planes[layout.inks[color]].data() + std::size_t{y} * page->LineBytes();
  for (std::uint32_t x = 0; x < layout.width; ++x) {
    const std::uint8_t level =
        DropLevel(BitsAt(line, PixelBit(layout, x, color), layout.bits), layout.bits, x, y);
    out[x / 4] = static_cast<std::uint8_t>(out[x / 4] | (level << (6 - 2 * (x % 4))));
  }
}

}  // namespace

struct RasterReader::Impl {
  ReadBytes source;
  cups_raster_t* raster = nullptr;

  static ssize_t Read(void* context, unsigned char* buffer, size_t bytes) {
    return static_cast<Impl*>(context)->source(buffer, bytes);
  }

  // The lines of one pass over the page: all colours, or one of them when planar. Lines that came.
  std::uint32_t ReadLines(const Layout& layout, std::uint32_t firstColor, std::uint32_t endColor,
                          RasterPage* page) {
    std::vector<std::uint8_t> line(layout.lineBytes);
    for (std::uint32_t y = 0; y < layout.lines; ++y) {
      if (cupsRasterReadPixels(raster, line.data(), layout.lineBytes) != layout.lineBytes) return y;
      for (std::uint32_t color = firstColor; color < endColor; ++color)
        PackLine(layout, line.data(), color, y, page);
    }
    return layout.lines;
  }

  std::uint32_t ReadPixels(const Layout& layout, RasterPage* page) {
    if (layout.order != CUPS_ORDER_PLANAR) return ReadLines(layout, 0, layout.planes, page);
    std::uint32_t complete = layout.lines;
    for (std::uint32_t color = 0; color < layout.planes && complete == layout.lines; ++color) {
      complete = ReadLines(layout, color, color + 1, page);
      if (complete < layout.lines && color + 1 < layout.planes)
        complete = 0;  // the colours behind it never came
    }
    return complete;
  }
};

RasterReader::RasterReader(ReadBytes source) : impl_(std::make_unique<Impl>()) {
  impl_->source = std::move(source);
  impl_->raster = cupsRasterOpenIO(Impl::Read, impl_.get(), CUPS_RASTER_READ);
}

RasterReader::~RasterReader() {
  if (impl_->raster != nullptr) cupsRasterClose(impl_->raster);
}

ReadResult RasterReader::NextPage(std::uint32_t resolution, RasterPage* page, std::string* error) {
  if (impl_->raster == nullptr) {
    *error = "not a CUPS raster stream";
    return ReadResult::kError;
  }
  cups_page_header2_t header{};
  if (cupsRasterReadHeader2(impl_->raster, &header) == 0) return ReadResult::kEnd;
  Layout layout;
  *error = CheckHeader(header, resolution, &layout);
  if (!error->empty()) return ReadResult::kError;
  *page = RasterPage{};
  page->width = layout.width;
  page->lines = layout.lines;
  page->planes.resize(layout.inks.size());
  for (std::uint32_t color = 0; color < layout.planes; ++color) {
    page->planes[layout.inks[color]].resize(std::size_t{layout.lines} * page->LineBytes());
  }
  page->linesRead = impl_->ReadPixels(layout, page);
  if (page->linesRead == layout.lines) return ReadResult::kPage;
  *error = "the raster ends at line " + std::to_string(page->linesRead) + " of " +
           std::to_string(layout.lines);
  return ReadResult::kTruncated;
}

}  // namespace qrn::tool
