#include "print_page/picture_look.h"

#include <algorithm>
#include <span>
#include <utility>

#include "print_page/object_tags.h"

namespace qrn::tool {

std::vector<bool> PagesWithColourPictures(ReadBytes tags) {
  ObjectTags pages(std::move(tags));
  std::vector<bool> colour;
  while (pages.NextPage()) {
    bool found = false;
    for (auto line = pages.NextLine(); !line.empty(); line = pages.NextLine()) {
      found = found || std::any_of(line.begin(), line.end(), [](const TaggedPixel& pixel) {
                return (pixel.kind & kPictureObject) != 0 && !IsGrey(pixel);
              });
    }
    colour.push_back(found);
  }
  return colour;
}

}  // namespace qrn::tool
