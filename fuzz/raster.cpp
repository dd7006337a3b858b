// The CUPS raster reader of print-page: any stream, in pieces of any size. What it delivers must
// have the sizes that it names, with nothing beside the page.
//
// Input: u8 resolution, u8 size of a piece; the rest is the stream.
#include <cups/raster.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "print_page/raster_reader.h"

using namespace qrn;

namespace {

constexpr std::uint64_t kPixelBytesMax = 2u << 20;
constexpr int kPagesMax = 8;
constexpr unsigned kResolutions[] = {1080, 1440, 1620, 2160};

struct Stream {
  const std::vector<std::uint8_t>& bytes;
  std::size_t pieceBytes;
  std::size_t at = 0;

  std::ptrdiff_t Read(std::uint8_t* buffer, std::size_t count) {
    count = std::min({count, pieceBytes, bytes.size() - at});
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), count, buffer);
    at += count;
    return static_cast<std::ptrdiff_t>(count);
  }
};

// A few bytes may claim a page of gigabytes: the pages are added up first. In planar order a page
// takes as many passes as it has colours.
bool IsAffordable(const std::vector<std::uint8_t>& bytes) {
  Stream stream{bytes, bytes.size() + 1};
  cups_raster_t* const raster = cupsRasterOpenIO(
      [](void* context, unsigned char* buffer, std::size_t count) -> ssize_t {
        return static_cast<Stream*>(context)->Read(buffer, count);
      },
      &stream, CUPS_RASTER_READ);
  if (raster == nullptr) return true;
  std::uint64_t total = 0;
  cups_page_header2_t header{};
  std::vector<std::uint8_t> line;
  bool complete = true;
  while (complete && cupsRasterReadHeader2(raster, &header) != 0) {
    std::uint32_t order = 0;  // maybe none that the type has
    std::memcpy(&order, &header.cupsColorOrder, sizeof order);
    const std::uint64_t passes =
        order == CUPS_ORDER_PLANAR ? std::max(header.cupsNumColors, 1u) : 1;
    const std::uint64_t linesOfPage = passes * header.cupsHeight;
    total += linesOfPage * (std::uint64_t{header.cupsBytesPerLine} + header.cupsWidth + 16);
    if (total > kPixelBytesMax) break;
    line.resize(header.cupsBytesPerLine);
    for (std::uint64_t y = 0; y < linesOfPage && complete; ++y)
      complete = cupsRasterReadPixels(raster, line.data(), header.cupsBytesPerLine) ==
                 header.cupsBytesPerLine;
  }
  cupsRasterClose(raster);
  return total <= kPixelBytesMax;
}

void CheckPage(const tool::RasterPage& page) {
  FUZZ_CHECK(page.width > 0 && page.lines > 0 && page.linesRead <= page.lines);
  const std::size_t lineBytes = page.LineBytes();
  FUZZ_CHECK(lineBytes * 4 >= page.width);
  FUZZ_CHECK(page.planes.size() == 8);
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
  fuzz::Input in(data, size);
  const unsigned resolution = kResolutions[in.U8() % 4];
  const std::size_t pieceBytes = in.U8() + std::size_t{1};
  const std::vector<std::uint8_t> bytes = in.Rest();
  if (!IsAffordable(bytes)) return 0;
  Stream stream{bytes, pieceBytes};
  tool::RasterReader reader(
      [&stream](std::uint8_t* buffer, std::size_t count) { return stream.Read(buffer, count); });
  for (int pages = 0; pages < kPagesMax; ++pages) {
    tool::RasterPage page;
    std::string error;
    const tool::ReadResult result = reader.NextPage({resolution, {}}, &page, &error);
    const bool failed = result != tool::ReadResult::kPage && result != tool::ReadResult::kEnd;
    FUZZ_CHECK(failed == !error.empty());
    if (result == tool::ReadResult::kPage || result == tool::ReadResult::kTruncated)
      CheckPage(page);
    FUZZ_CHECK((result == tool::ReadResult::kPage) ==
               (!failed && page.lines > 0 && page.linesRead == page.lines));
    if (result != tool::ReadResult::kPage) break;
  }
  return 0;
}
