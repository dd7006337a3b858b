#include "print_page/raster_reader.h"

#include <cups/raster.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace qrn::tool {
namespace {

constexpr std::uint32_t kVerticalResolution = 360;
constexpr std::uint32_t kWidthMax = 400'000, kLinesMax = 4'000'000;  // 4.7 m at 2160 dpi, 282 m
constexpr std::uint64_t kPageBytesMax = 4ull << 30;                  // of packed planes
constexpr std::uint32_t kLineBytesMax = 16u << 20;                   // of the stream
// What libcups asks for when it fills its buffer ahead of need, at the least.
constexpr std::size_t kReadAheadBytes = 65536;

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
  // Banded lines hold the colours one behind the other, each in an equal share of whole bytes.
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
  if (layout->pixelBits > 64 || layout->pixelBits % layout->bits != 0)
    return "pixels of " + std::to_string(layout->pixelBits) + " bits are not read";
  if (layout->lineBytes > kLineBytesMax || LineBits(*layout) > std::uint64_t{layout->lineBytes} * 8)
    return "lines of " + std::to_string(layout->lineBytes) + " bytes do not fit its pixels";
  return "";
}

// Bit at which the pixels of a colour start in a line of the stream, and bits from pixel to pixel.
struct Walk {
  std::uint64_t start = 0;
  std::uint32_t step = 0;
};

Walk WalkOf(const Layout& layout, std::uint32_t color) {
  switch (layout.order) {
    case CUPS_ORDER_PLANAR:
      return {0, layout.bits};
    case CUPS_ORDER_BANDED:
      return {std::uint64_t{layout.lineBytes / layout.planes} * 8 * color, layout.bits};
    default:
      return {layout.pixelBits - (layout.planes - color) * layout.bits, layout.pixelBits};
  }
}

std::uint32_t BitsAt(const std::uint8_t* line, std::uint64_t bit, std::uint32_t bits) {
  if (bits == 8) return line[bit / 8];
  return (line[bit / 8] >> (8 - bits - bit % 8)) & ((1u << bits) - 1u);
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

// Packs one colour of one stream line; false when it carries no ink.
bool PackLine(const Layout& layout, const std::uint8_t* line, std::uint32_t color, std::uint32_t y,
              std::vector<std::uint8_t>* packed) {
  const Walk walk = WalkOf(layout, color);
  std::fill(packed->begin(), packed->end(), std::uint8_t{0});
  std::uint64_t bit = walk.start;
  std::uint8_t inked = 0;
  for (std::uint32_t x = 0; x < layout.width; ++x, bit += walk.step) {
    const std::uint8_t level = DropLevel(BitsAt(line, bit, layout.bits), layout.bits, x, y);
    std::uint8_t& out = (*packed)[x / 4];
    out = static_cast<std::uint8_t>(out | (level << (6 - 2 * (x % 4))));
    inked |= level;
  }
  return inked != 0;
}

// Lines without ink take no room at the end of a plane, and a plane that is blank takes none.
void StoreLine(const std::vector<std::uint8_t>& packed, std::uint32_t y,
               std::vector<std::uint8_t>* plane) {
  const std::size_t at = std::size_t{y} * packed.size();
  plane->resize(at + packed.size());
  std::copy(packed.begin(), packed.end(), plane->begin() + static_cast<std::ptrdiff_t>(at));
}

}  // namespace

struct RasterReader::Impl {
  ReadBytes source;
  cups_raster_t* raster = nullptr;

  bool compressed = false;
  std::uint64_t bytesRead = 0;

  // A compressed stream is read ahead of need; a byte at a time there, so that `bytesRead` tells
  // whether a header that is missing was cut or never began.
  static ssize_t Read(void* context, unsigned char* buffer, size_t bytes) {
    Impl& self = *static_cast<Impl*>(context);
    const bool ahead = self.compressed && bytes >= kReadAheadBytes;
    const std::ptrdiff_t got = self.source(buffer, ahead ? 1 : bytes);
    if (self.bytesRead == 0 && got == 4)
      self.compressed = std::memcmp(buffer, "RaS2", 4) == 0 || std::memcmp(buffer, "2SaR", 4) == 0;
    self.bytesRead += got > 0 ? static_cast<std::uint64_t>(got) : 0;
    return got;
  }

  // The lines of one pass over the page: all colours, or one of them when planar. Lines that came.
  std::uint32_t ReadLines(const Layout& layout, std::uint32_t firstColor, std::uint32_t endColor,
                          RasterPage* page) {
    std::vector<std::uint8_t> line(layout.lineBytes), packed(page->LineBytes());
    for (std::uint32_t y = 0; y < layout.lines; ++y) {
      if (cupsRasterReadPixels(raster, line.data(), layout.lineBytes) != layout.lineBytes) return y;
      for (std::uint32_t color = firstColor; color < endColor; ++color) {
        if (PackLine(layout, line.data(), color, y, &packed))
          StoreLine(packed, y, &page->planes[layout.inks[color]]);
      }
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
  const std::uint64_t before = impl_->bytesRead;
  if (cupsRasterReadHeader2(impl_->raster, &header) == 0) {
    if (impl_->bytesRead == before) return ReadResult::kEnd;
    *error = "a page header is cut off or damaged";
    return ReadResult::kError;
  }
  Layout layout;
  *error = CheckHeader(header, resolution, &layout);
  if (!error->empty()) return ReadResult::kError;
  *page = RasterPage{};
  page->width = layout.width;
  page->lines = layout.lines;
  page->planes.resize(layout.inks.size());
  page->linesRead = impl_->ReadPixels(layout, page);
  if (page->linesRead == layout.lines) return ReadResult::kPage;
  *error = "the raster ends at line " + std::to_string(page->linesRead) + " of " +
           std::to_string(layout.lines);
  return ReadResult::kTruncated;
}

}  // namespace qrn::tool
