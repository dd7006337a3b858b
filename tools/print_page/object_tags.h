// Pages as Ghostscript's device of tagged pixels writes them: of each pixel what kind of object it
// shows, and its colour in RGB.
#ifndef QRN_TOOLS_PRINT_PAGE_OBJECT_TAGS_H_
#define QRN_TOOLS_PRINT_PAGE_OBJECT_TAGS_H_

#include <cstdint>
#include <string>
#include <vector>

#include "print_page/raster_reader.h"

namespace qrn::tool {

struct TaggedPixel {
  std::uint8_t kind, red, green, blue;
};

constexpr std::uint8_t kTextObject = 1, kPictureObject = 2, kLineObject = 4;  // bits of the kind

class ObjectTags {
 public:
  explicit ObjectTags(ReadBytes source) : source_(std::move(source)) {}

  // Goes on to the next page. False when there is none of this width.
  bool BeginPage(std::uint32_t width);
  // The next line of the page; null after its last. Valid until the next call.
  const TaggedPixel* NextLine();

 private:
  bool Fill(void* bytes, std::size_t count);
  bool ReadHeader(std::uint32_t* width, std::uint32_t* lines);

  ReadBytes source_;
  std::uint32_t linesLeft_ = 0;
  std::vector<TaggedPixel> line_;
};

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_OBJECT_TAGS_H_
