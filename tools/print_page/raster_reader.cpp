#include "print_page/raster_reader.h"

#include <cups/raster.h>

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

#include "print_page/line_packer.h"
#include "print_page/raster_layout.h"

namespace qrn::tool {
namespace {

constexpr std::uint64_t kPageBytesMax = 4ull << 30;  // of packed planes
constexpr std::uint32_t kLinesBetweenLooks = 256;
// What libcups asks for when it fills its buffer ahead of need, at the least.
constexpr std::size_t kReadAheadBytes = 65536;

// Lines without ink take no room at the end of a plane, and a plane that is blank takes none.
void StoreLine(const std::vector<std::uint8_t>& packed, std::uint32_t y, std::uint32_t lines,
               std::vector<std::uint8_t>* plane) {
  if (plane->empty()) plane->reserve(std::size_t{lines} * packed.size());
  const std::size_t at = std::size_t{y} * packed.size();
  plane->resize(at + packed.size());
  std::copy(packed.begin(), packed.end(), plane->begin() + static_cast<std::ptrdiff_t>(at));
}

std::uint64_t PlaneBytes(const RasterPage& page) {
  std::uint64_t bytes = 0;
  for (const std::vector<std::uint8_t>& plane : page.planes) bytes += plane.size();
  return bytes;
}

}  // namespace

struct RasterReader::Impl {
  ReadBytes source;
  cups_raster_t* raster = nullptr;
  LineFilter filter;
  std::string lackOfRoom;  // why the page in hand is not read to its end

  bool compressed = false;
  std::uint64_t bytesRead = 0;

  // A compressed stream is read ahead of need; a byte at a time there, so that `bytesRead` tells
  // whether a header that is missing was cut or never began.
  static ssize_t Read(void* context, unsigned char* buffer, size_t bytes) {
    Impl& self = *static_cast<Impl*>(context);
    const bool ahead = self.compressed && bytes >= kReadAheadBytes;
    const std::ptrdiff_t got = self.source(buffer, ahead ? 1 : bytes);
    if (self.bytesRead == 0 && got == 4)
      self.compressed = std::memcmp(buffer, "RaS2", 4) == 0 || std::memcmp(buffer, "2SaR", 4) == 0;
    self.bytesRead += got > 0 ? static_cast<std::uint64_t>(got) : 0;
    return got;
  }

  // The lines of one pass over the page: all colours, or one of them when planar. Lines that came.
  std::uint32_t ReadLines(const PageTerms& terms, const RasterLayout& layout,
                          std::uint32_t firstColor, std::uint32_t endColor, RasterPage* page) {
    std::vector<std::uint8_t> line(layout.lineBytes), packed(page->LineBytes());
    for (std::uint32_t y = 0; y < layout.lines; ++y) {
      if (terms.lackOfRoom && y % kLinesBetweenLooks == 0)
        lackOfRoom = terms.lackOfRoom(PlaneBytes(*page));
      if (!lackOfRoom.empty()) return y;
      if (cupsRasterReadPixels(raster, line.data(), layout.lineBytes) != layout.lineBytes) return y;
      if (filter.edit) filter.edit(line.data(), line.size());
      for (std::uint32_t color = firstColor; color < endColor; ++color) {
        if (PackLine(layout, line.data(), color, y, packed.data()))
          StoreLine(packed, y, layout.lines, &page->planes[layout.inks[color]]);
      }
    }
    return layout.lines;
  }

  std::uint32_t ReadPixels(const PageTerms& terms, const RasterLayout& layout, RasterPage* page) {
    if (layout.order != CUPS_ORDER_PLANAR) return ReadLines(terms, layout, 0, layout.planes, page);
    std::uint32_t complete = layout.lines;
    for (std::uint32_t color = 0; color < layout.planes && complete == layout.lines; ++color) {
      complete = ReadLines(terms, layout, color, color + 1, page);
      if (complete < layout.lines && color + 1 < layout.planes)
        complete = 0;  // the colours after it never came
    }
    return complete;
  }
};

RasterReader::RasterReader(ReadBytes source) : impl_(std::make_unique<Impl>()) {
  impl_->source = std::move(source);
  impl_->raster = cupsRasterOpenIO(Impl::Read, impl_.get(), CUPS_RASTER_READ);
}

RasterReader::~RasterReader() {
  if (impl_->raster != nullptr) cupsRasterClose(impl_->raster);
}

void RasterReader::SetFilter(LineFilter filter) { impl_->filter = std::move(filter); }

ReadResult RasterReader::NextPage(const PageTerms& terms, RasterPage* page, std::string* error) {
  if (impl_->bytesRead == 0) return ReadResult::kEnd;
  if (impl_->raster == nullptr) {
    *error = "not a CUPS raster stream";
    return ReadResult::kError;
  }
  cups_page_header2_t header{};
  const std::uint64_t before = impl_->bytesRead;
  if (cupsRasterReadHeader2(impl_->raster, &header) == 0) {
    if (impl_->bytesRead == before) return ReadResult::kEnd;
    *error = "a page header is cut off or damaged";
    return ReadResult::kError;
  }
  RasterLayout layout;
  *error = CheckHeader(header, terms.resolution, &layout);
  if (!error->empty()) return ReadResult::kRefused;
  *page = RasterPage{};
  page->width = layout.width;
  page->lines = layout.lines;
  for (std::uint32_t color = 0; color < layout.planes; ++color)
    page->present.set(layout.inks[color]);
  if (terms.refusal) *error = terms.refusal(*page);
  if (error->empty() &&
      std::uint64_t{page->LineBytes()} * layout.lines * layout.planes > kPageBytesMax) {
    *error = "its planes have more than 4 GiB";
  }
  if (!error->empty()) return ReadResult::kRefused;
  page->planes.resize(layout.inks.size());
  if (impl_->filter.beginPage) impl_->filter.beginPage(page->width);
  page->linesRead = impl_->ReadPixels(terms, layout, page);
  *error = std::exchange(impl_->lackOfRoom, "");
  if (!error->empty()) return ReadResult::kRefused;
  if (page->linesRead == layout.lines) return ReadResult::kPage;
  *error = "the raster ends at line " + std::to_string(page->linesRead) + " of " +
           std::to_string(layout.lines);
  return page->linesRead == 0 ? ReadResult::kError : ReadResult::kTruncated;
}

}  // namespace qrn::tool
