// Pages as Ghostscript's device of tagged pixels writes them: of each pixel what kind of object it
// shows, and its colour in RGB.
#ifndef QRN_TOOLS_PRINT_PAGE_OBJECT_TAGS_H_
#define QRN_TOOLS_PRINT_PAGE_OBJECT_TAGS_H_

#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <vector>

#include "print_page/raster_reader.h"

namespace qrn::tool {

struct TaggedPixel {
  std::uint8_t kind, red, green, blue;
};

constexpr std::uint8_t kTextObject = 1, kPictureObject = 2, kLineObject = 4;  // bits of the kind

// The renderer rounds grey that has a profile of its own.
inline bool IsGrey(const TaggedPixel& pixel) {
  constexpr int kTolerance = 1;  // of 255
  return std::abs(pixel.red - pixel.green) <= kTolerance &&
         std::abs(pixel.blue - pixel.green) <= kTolerance;
}

class ObjectTags {
 public:
  explicit ObjectTags(ReadBytes source) : source_(std::move(source)) {}

  // Goes on to the next page; false, and all is over, when there is none.
  bool NextPage();
  // Goes on to the next page, which is to be of this width. Ghostscript's devices round the size of
  // a page in different ways, so that a pixel or a line more or less is as good.
  void BeginPage(std::uint32_t width);
  // The next line of the page; empty after its last. Valid until the next call.
  std::span<const TaggedPixel> NextLine();
  // A page is missing, of another size, or cut short.
  bool IsBroken() const { return broken_; }

 private:
  bool Fill(void* bytes, std::size_t count);
  bool ReadHeader(std::uint32_t* width, std::uint32_t* lines);

  ReadBytes source_;
  std::uint32_t linesLeft_ = 0;
  std::vector<TaggedPixel> line_;
  bool broken_ = false;
};

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_OBJECT_TAGS_H_
