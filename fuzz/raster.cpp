// The raster files and streams of print-page: any bytes, in pieces of any size. What the reader
// delivers must have the sizes that it names, with nothing beside the page.
//
// Input: u8 resolution, u8 size of a piece; the rest is the stream.
#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "print_page/raster_reader.h"

using namespace qrn;

namespace {

// A few bytes may claim a page of gigabytes.
constexpr std::uint64_t kPixelsMax = 1u << 20;
constexpr int kPagesMax = 8;
constexpr unsigned kResolutions[] = {1080, 1440, 1620, 2160};

void CheckPage(const tool::RasterPage& page) {
  FUZZ_CHECK(page.width > 0 && page.linesRead > 0 && page.linesRead <= page.lines);
  const std::size_t lineBytes = page.LineBytes();
  FUZZ_CHECK(lineBytes * 4 >= page.width && page.planes.size() == 8);
  for (std::size_t plane = 0; plane < page.planes.size(); ++plane) {
    const std::vector<std::uint8_t>& bytes = page.planes[plane];
    FUZZ_CHECK(bytes.size() % lineBytes == 0 && bytes.size() / lineBytes <= page.lines);
    FUZZ_CHECK(bytes.empty() || page.present[plane]);
    // No ink right of the page.
    for (std::size_t at = 0; at < bytes.size(); at += lineBytes) {
      for (std::size_t x = page.width; x < lineBytes * 4; ++x)
        FUZZ_CHECK((bytes[at + x / 4] >> (6 - 2 * (x % 4)) & 3) == 0);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using tool::ReadResult;
  fuzz::Input in(data, size);
  tool::PageTerms terms;
  terms.resolution = kResolutions[in.U8() % 4];
  terms.refusal = [](const tool::RasterPage& page) {
    return std::uint64_t{page.width} * page.lines > kPixelsMax ? "too large" : "";
  };
  const std::size_t pieceBytes = in.U8() + std::size_t{1};
  tool::RasterReader reader([&in, pieceBytes](std::uint8_t* buffer, std::size_t count) {
    const std::vector<std::uint8_t> piece = in.Bytes(std::min(count, pieceBytes));
    std::copy(piece.begin(), piece.end(), buffer);
    return std::ssize(piece);
  });
  ReadResult result = ReadResult::kPage;
  for (int pages = 0; pages < kPagesMax && result == ReadResult::kPage; ++pages) {
    tool::RasterPage page;
    std::string error;
    result = reader.NextPage(terms, &page, &error);
    const bool whole = result == ReadResult::kPage;
    FUZZ_CHECK((whole || result == ReadResult::kEnd) == error.empty());
    if (whole || result == ReadResult::kTruncated) {
      CheckPage(page);
      FUZZ_CHECK(whole == (page.linesRead == page.lines));
    }
  }
  return 0;
}
