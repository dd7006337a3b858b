#include "tools/raster_writer.h"

#include <random>

namespace {

unsigned BitsPerPixel(const RasterFormat& format) {
  return format.order == CUPS_ORDER_CHUNKED ? format.bits * format.colors + format.padding
                                            : format.bits;
}

// Of one colour in a banded or planar line.
unsigned PlaneBytes(const RasterFormat& format) { return (format.width * format.bits + 7) / 8; }

unsigned LineBytes(const RasterFormat& format) {
  if (format.order == CUPS_ORDER_PLANAR) return PlaneBytes(format);
  if (format.order == CUPS_ORDER_BANDED) return PlaneBytes(format) * format.colors;
  // libcups takes lines of whole pixels, each rounded up to bytes.
  const unsigned pixelBytes = (BitsPerPixel(format) + 7) / 8;
  const unsigned bytes = (format.width * BitsPerPixel(format) + 7) / 8;
  return (bytes + pixelBytes - 1) / pixelBytes * pixelBytes;
}

cups_page_header2_t HeaderOf(const RasterFormat& format) {
  cups_page_header2_t header{};
  header.cupsColorSpace = format.space;
  header.cupsColorOrder = format.order;
  header.cupsBitsPerColor = format.bits;
  header.cupsBitsPerPixel = BitsPerPixel(format);
  header.cupsNumColors = format.colors;
  header.cupsWidth = format.width;
  header.cupsHeight = format.lines;
  header.HWResolution[0] = 1440;
  header.HWResolution[1] = 360;
  header.cupsBytesPerLine = LineBytes(format);
  return header;
}

// Colours `first` to `end`: all, or one of them when planar.
std::vector<std::uint8_t> LineOf(const RasterFormat& format, const std::vector<std::uint8_t>& noise,
                                 unsigned first, unsigned end, unsigned y) {
  std::vector<std::uint8_t> line(LineBytes(format));
  const auto put = [&line](unsigned bit, unsigned bits, unsigned value) {
    line[bit / 8] |= static_cast<std::uint8_t>(value << (8 - bits - bit % 8));
  };
  const bool chunked = format.order == CUPS_ORDER_CHUNKED;
  for (unsigned x = 0; x < format.width; ++x) {
    const unsigned pixel = x * BitsPerPixel(format);
    for (unsigned bit = 0; chunked && bit < format.padding; ++bit)
      put(pixel + bit, 1, 1);  // that nobody may take for ink
    for (unsigned color = first; color < end; ++color) {
      const unsigned start =
          chunked ? format.padding + color * format.bits : (color - first) * PlaneBytes(format) * 8;
      put(pixel + start, format.bits, ValueAt(noise, format, color, x, y));
    }
  }
  return line;
}

}  // namespace

unsigned ValueAt(const std::vector<std::uint8_t>& noise, const RasterFormat& format, unsigned color,
                 unsigned x, unsigned y) {
  return noise[(color * format.lines + y) * format.width + x] & ((1u << format.bits) - 1u);
}

std::vector<std::uint8_t> NoiseFor(const RasterFormat& format, std::uint64_t seed) {
  std::mt19937_64 random(seed);
  std::vector<std::uint8_t> noise(std::size_t{format.colors} * format.lines * format.width);
  for (auto& byte : noise) byte = static_cast<std::uint8_t>(random());
  return noise;
}

std::string WriteRaster(const RasterFormat& format, const std::vector<std::uint8_t>& noise,
                        const std::function<void(cups_page_header2_t*)>& change) {
  std::string stream;
  cups_raster_t* raster = cupsRasterOpenIO(
      [](void* context, unsigned char* bytes, size_t count) {
        static_cast<std::string*>(context)->append(reinterpret_cast<char*>(bytes), count);
        return static_cast<ssize_t>(count);
      },
      &stream, format.mode);
  const unsigned colorsOfLine = format.order == CUPS_ORDER_PLANAR ? 1 : format.colors;
  for (unsigned page = 0; page < format.pages; ++page) {
    cups_page_header2_t header = HeaderOf(format);
    if (change) change(&header);
    cupsRasterWriteHeader2(raster, &header);
    for (unsigned color = 0; color < format.colors; color += colorsOfLine) {
      for (unsigned y = 0; y < format.lines; ++y) {
        auto line = LineOf(format, noise, color, color + colorsOfLine, y);
        line.resize(header.cupsBytesPerLine);
        cupsRasterWritePixels(raster, line.data(), header.cupsBytesPerLine);
      }
    }
  }
  cupsRasterClose(raster);
  return stream;
}
