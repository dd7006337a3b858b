// Reads CUPS raster streams, page by page: 1, 2 or 8 bits per colour; chunked, banded and planar;
// K, CMYK, KCMY and DEVICE1..8. Nothing in a header is trusted.
#ifndef QRN_TOOLS_PRINT_PAGE_RASTER_READER_H_
#define QRN_TOOLS_PRINT_PAGE_RASTER_READER_H_

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "print_page/page.h"

namespace qrn::tool {

// Fills up to `bytes` bytes; the number read, 0 at the end, negative on an error.
using ReadBytes = std::function<std::ptrdiff_t(std::uint8_t* buffer, std::size_t bytes)>;

enum class ReadResult {
  kPage,       // *page is complete
  kTruncated,  // the stream ended within the page: *page holds what came, *error says so
  kEnd,        // no further page
  kError,      // not a raster, or one of a kind that is not read; *error says why
};

class RasterReader {
 public:
  explicit RasterReader(ReadBytes source);
  ~RasterReader();
  // `resolution`: the horizontal one that the page must have (360 along the paper); pages that name
  // none are taken.
  ReadResult NextPage(std::uint32_t resolution, RasterPage* page, std::string* error);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_RASTER_READER_H_
