#include "tools/raster_writer.h"

#include <vector>

namespace {

struct PackedLine {
  std::vector<std::uint8_t> bytes;
  unsigned bitsUsed = 0;

  void Put(unsigned value, unsigned bits) {
    if (bitsUsed % 8 == 0) bytes.push_back(0);
    bytes.back() |= static_cast<std::uint8_t>(value << (8 - bits - bitsUsed % 8));
    bitsUsed += bits;
  }
  void EndByte() { bitsUsed = static_cast<unsigned>(bytes.size()) * 8; }
};

unsigned BitsPerPixel(const RasterFormat& format) {
  return format.order == CUPS_ORDER_CHUNKED ? format.bits * format.colors + format.padding
                                            : format.bits;
}

// Colours `first` to `end`: all, or one of them when planar.
std::vector<std::uint8_t> LineOf(const RasterFormat& format, std::uint64_t seed, unsigned first,
                                 unsigned end, unsigned y) {
  PackedLine line;
  const auto put = [&](unsigned color, unsigned x) {
    line.Put(ValueAt(format, seed, color, x, y), format.bits);
  };
  if (format.order == CUPS_ORDER_CHUNKED) {
    for (unsigned x = 0; x < format.width; ++x) {
      for (unsigned bit = 0; bit < format.padding; ++bit) line.Put(1, 1);  // nobody's ink
      for (unsigned color = first; color < end; ++color) put(color, x);
    }
    // libcups takes lines of whole pixels, each rounded up to bytes.
    while (line.bytes.size() % ((BitsPerPixel(format) + 7) / 8) != 0) line.bytes.push_back(0);
    return line.bytes;
  }
  for (unsigned color = first; color < end; ++color, line.EndByte()) {
    for (unsigned x = 0; x < format.width; ++x) put(color, x);
  }
  return line.bytes;
}

cups_page_header2_t HeaderOf(const RasterFormat& format, std::size_t lineBytes) {
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
  header.cupsBytesPerLine = static_cast<unsigned>(lineBytes);
  return header;
}

}  // namespace

unsigned ValueAt(const RasterFormat& format, std::uint64_t seed, unsigned color, unsigned x,
                 unsigned y) {
  if (format.blank) return 0;
  const std::uint64_t place = (std::uint64_t{color} * format.lines + y) * format.width + x;
  std::uint64_t mixed = (place + (seed << 32) + 1) * 0x9E3779B97F4A7C15u;
  mixed = (mixed ^ mixed >> 32) * 0xD6E8FEB86659FD93u;
  return static_cast<unsigned>(mixed >> 32) & ((1u << format.bits) - 1u);
}

std::string WriteRaster(const RasterFormat& format, std::uint64_t seed) {
  std::string stream;
  cups_raster_t* raster = cupsRasterOpenIO(
      [](void* context, unsigned char* bytes, size_t count) {
        static_cast<std::string*>(context)->append(reinterpret_cast<char*>(bytes), count);
        return static_cast<ssize_t>(count);
      },
      &stream, format.mode);
  const unsigned colorsOfLine = format.order == CUPS_ORDER_PLANAR ? 1 : format.colors;
  cups_page_header2_t header = HeaderOf(format, LineOf(format, seed, 0, colorsOfLine, 0).size());
  for (unsigned page = 0; page < format.pages; ++page) {
    cupsRasterWriteHeader2(raster, &header);
    for (unsigned color = 0; color < format.colors; color += colorsOfLine) {
      for (unsigned y = 0; y < format.lines; ++y) {
        auto line = LineOf(format, seed, color, color + colorsOfLine, y);
        cupsRasterWritePixels(raster, line.data(), header.cupsBytesPerLine);
      }
    }
  }
  cupsRasterClose(raster);
  return stream;
}
