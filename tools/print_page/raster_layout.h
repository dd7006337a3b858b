// How the bytes of a CUPS raster page are laid out, from a header of which nothing is trusted.
#ifndef QRN_TOOLS_PRINT_PAGE_RASTER_LAYOUT_H_
#define QRN_TOOLS_PRINT_PAGE_RASTER_LAYOUT_H_

#include <cups/raster.h>

#include <array>
#include <cstdint>
#include <string>

namespace qrn::tool {

struct RasterLayout {
  std::uint32_t planes = 0;
  std::uint32_t bits = 0;  // per colour
  std::uint32_t width = 0, lines = 0;
  std::uint32_t order = CUPS_ORDER_CHUNKED;  // a cups_order_t once it has been checked
  std::uint32_t lineBytes = 0;  // of one line as the stream holds it (of one plane, when planar)
  std::uint32_t pixelBits = 0;  // of one pixel, when chunked; padding comes first
  std::array<std::uint8_t, 8> inks{};  // plane of the page for each colour of the stream
};

// Fills *layout; why the page is not read, or "". `resolution`: the horizontal one that it must
// have, if it names any.
std::string CheckHeader(const cups_page_header2_t& header, std::uint32_t resolution,
                        RasterLayout* layout);

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_RASTER_LAYOUT_H_
