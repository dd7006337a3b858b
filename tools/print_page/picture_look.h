// Looks at the pictures of a document through a coarse rendering of its pages. Pictures that hold
// nothing but grey print with black ink alone, as other grey does; a photograph's greys are its own
// business.
#ifndef QRN_TOOLS_PRINT_PAGE_PICTURE_LOOK_H_
#define QRN_TOOLS_PRINT_PAGE_PICTURE_LOOK_H_

#include <cstdint>
#include <vector>

#include "print_page/raster_reader.h"

namespace qrn::tool {

constexpr std::uint32_t kLookResolution = 36;  // dots per inch across the page

// Of each page, in order, whether a picture on it has a pixel that is not grey. `tags`: the pages
// as Ghostscript's device of tagged pixels writes them. Ends where they are cut off.
std::vector<bool> PagesWithColourPictures(ReadBytes tags);

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_PICTURE_LOOK_H_
