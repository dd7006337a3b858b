#include "tools/raster_writer.h"

#include <algorithm>
#include <cstddef>
#include <random>

namespace {

unsigned PlaneBytes(const RasterFormat& format) { return (format.width * format.bits + 7) / 8; }

unsigned BitsPerPixel(const RasterFormat& format) {
  return format.Chunked() ? format.bits * format.colors + format.padding : format.bits;
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
  if (format.Chunked()) {
    // libcups takes lines of whole pixels, each rounded up to bytes.
    const unsigned pixelBytes = (BitsPerPixel(format) + 7) / 8;
    const unsigned bytes = (format.width * BitsPerPixel(format) + 7) / 8;
    header.cupsBytesPerLine = (bytes + pixelBytes - 1) / pixelBytes * pixelBytes;
  } else {
    const unsigned planes = format.order == CUPS_ORDER_BANDED ? format.colors : 1;
    header.cupsBytesPerLine = PlaneBytes(format) * planes;
  }
  return header;
}

// `round`: the colour whose plane this is, when planar.
std::vector<std::uint8_t> LineOf(const RasterFormat& format, const std::vector<std::uint8_t>& noise,
                                 unsigned round, unsigned y, std::size_t bytes) {
  std::vector<std::uint8_t> line(bytes);
  const auto put = [&](unsigned bit, unsigned bits, unsigned value) {
    if (bit / 8 < line.size())
      line[bit / 8] |= static_cast<std::uint8_t>(value << (8 - bits - bit % 8));
  };
  const bool planar = format.order == CUPS_ORDER_PLANAR;
  for (unsigned x = 0; x < format.width; ++x) {
    for (unsigned bit = 0; format.Chunked() && bit < format.padding; ++bit)
      put(x * BitsPerPixel(format) + bit, 1, 1);  // that nobody may take for ink
    for (unsigned color = planar ? round : 0; color < (planar ? round + 1 : format.colors);
         ++color) {
      const unsigned pixel = x * BitsPerPixel(format);
      const unsigned start = format.Chunked() ? format.padding + color * format.bits
                             : planar         ? 0
                                              : color * PlaneBytes(format) * 8;
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
  for (unsigned page = 0; page < format.pages; ++page) {
    cups_page_header2_t header = HeaderOf(format);
    if (change) change(&header);
    cupsRasterWriteHeader2(raster, &header);
    const unsigned rounds = format.order == CUPS_ORDER_PLANAR ? format.colors : 1;
    for (unsigned round = 0; round < rounds; ++round) {
      for (unsigned y = 0; y < format.lines; ++y) {
        auto line = LineOf(format, noise, round, y, header.cupsBytesPerLine);
        cupsRasterWritePixels(raster, line.data(), header.cupsBytesPerLine);
      }
    }
  }
  cupsRasterClose(raster);
  return stream;
}

std::string Swapped(std::string stream) {
  const auto swapWord = [&stream](std::size_t at) {
    std::reverse(stream.begin() + static_cast<std::ptrdiff_t>(at),
                 stream.begin() + static_cast<std::ptrdiff_t>(at + 4));
  };
  constexpr std::size_t kHeaderAt = 4;
  swapWord(0);
  for (std::size_t at = offsetof(cups_page_header2_t, AdvanceDistance);
       at < offsetof(cups_page_header2_t, cupsString); at += 4) {
    swapWord(kHeaderAt + at);
  }
  return stream;
}
