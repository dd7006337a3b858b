// Makes grey text, lines and fills print with black ink alone on pages that blend colours. There
// the renderer turns their grey into a mixture of inks; a second rendering of the page shows which
// pixels are theirs.
#ifndef QRN_TOOLS_PRINT_PAGE_GREY_FILTER_H_
#define QRN_TOOLS_PRINT_PAGE_GREY_FILTER_H_

#include <cstdint>

#include "print_page/grey_profiles.h"
#include "print_page/object_tags.h"

namespace qrn::tool {

class GreyFilter {
 public:
  // `tags`: the second rendering, of the same pages at the same resolution.
  explicit GreyFilter(ReadBytes tags) : tags_(std::move(tags)), mixtures_(GreyMixtures()) {}

  void BeginPage(std::uint32_t width);
  // The second rendering lacks something: greys may have been left as mixtures.
  bool HasFailed() const { return tags_.IsBroken(); }
  // The next line of the page: 8 bits of C of each pixel, then M, Y and K; `bytes` in all.
  void Edit(std::uint8_t* line, std::size_t bytes);

 private:
  ObjectTags tags_;
  InkMixtures mixtures_;
  std::uint32_t width_ = 0;
};

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_GREY_FILTER_H_
