// Writes CUPS rasters of noise, in every order and depth, through libcups.
#ifndef QRN_TESTS_TOOLS_RASTER_WRITER_H_
#define QRN_TESTS_TOOLS_RASTER_WRITER_H_

#include <cups/raster.h>

#include <cstdint>
#include <string>

struct RasterFormat {
  cups_cspace_t space = CUPS_CSPACE_CMYK;
  unsigned colors = 4, bits = 2;
  cups_order_t order = CUPS_ORDER_CHUNKED;
  unsigned width = 53, lines = 7;
  unsigned padding = 0;  // bits before the colours of a chunked pixel
  cups_mode_t mode = CUPS_RASTER_WRITE;
  unsigned pages = 1;
  bool blank = false;
};

// The value of a colour at a place, the same however the raster is ordered.
unsigned ValueAt(const RasterFormat& format, std::uint64_t seed, unsigned color, unsigned x,
                 unsigned y);

std::string WriteRaster(const RasterFormat& format, std::uint64_t seed);

#endif  // QRN_TESTS_TOOLS_RASTER_WRITER_H_
