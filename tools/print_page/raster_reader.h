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
  kTruncated,  // the stream ended after some lines: *page holds what came, *error says so
  kEnd,        // no further page
  kRefused,    // of a kind that is not read, or not wanted; *error says why
  kError,      // not a raster, or a damaged one; *error says why
};

// What a page must be like.
struct PageTerms {
  // The horizontal one (360 along the paper); pages that name none are taken.
  std::uint32_t resolution = 1440;
  // Why a page is not wanted, asked before its pixels are read: it has measures and no planes yet.
  // "" when it is wanted.
  std::function<std::string(const RasterPage& page)> refusal;
  // Why planes of so many bytes, all colours together, are too many; "" when they are not. Asked as
  // they grow.
  std::function<std::string(std::uint64_t planeBytes)> lackOfRoom;
};

// Changes the lines of a stream before they are taken.
struct LineFilter {
  std::function<void(std::uint32_t width)> beginPage;
  std::function<void(std::uint8_t* line, std::size_t bytes)> edit;  // in place
};

class RasterReader {
 public:
  explicit RasterReader(ReadBytes source);
  ~RasterReader();
  // Of all pages to come.
  void SetFilter(LineFilter filter);
  ReadResult NextPage(const PageTerms& terms, RasterPage* page, std::string* error);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_RASTER_READER_H_
