// Packs lines of a raster into planes of 2-bit pixels.
#ifndef QRN_TOOLS_PRINT_PAGE_LINE_PACKER_H_
#define QRN_TOOLS_PRINT_PAGE_LINE_PACKER_H_

#include <cstdint>

#include "print_page/raster_layout.h"

namespace qrn::tool {

// Packs colour `color` of line `y` of the stream into the first DivUp(width, 4) bytes of `packed`,
// the unused bits of the last byte zero. False when it carries no ink; `packed` may then hold
// anything.
bool PackLine(const RasterLayout& layout, const std::uint8_t* line, std::uint32_t color,
              std::uint32_t y, std::uint8_t* packed);

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_LINE_PACKER_H_
