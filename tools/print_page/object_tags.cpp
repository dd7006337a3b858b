#include "print_page/object_tags.h"

#include <cstdio>

namespace qrn::tool {
namespace {

constexpr std::size_t kHeaderBytesMax = 200;
constexpr const char* kHeaderEnd = "ENDHDR\n";

}  // namespace

bool ObjectTags::Fill(void* bytes, std::size_t count) {
  auto* at = static_cast<std::uint8_t*>(bytes);
  while (count > 0) {
    const std::ptrdiff_t got = source_(at, count);
    if (got <= 0) return false;
    at += got;
    count -= static_cast<std::size_t>(got);
  }
  return true;
}

bool ObjectTags::ReadHeader(std::uint32_t* width, std::uint32_t* lines) {
  std::string header;
  char c = 0;
  while (header.find(kHeaderEnd) == std::string::npos) {
    if (header.size() == kHeaderBytesMax || !Fill(&c, 1)) return false;
    header += c;
  }
  unsigned w = 0, h = 0;
  if (std::sscanf(header.c_str(), "P7 WIDTH %u HEIGHT %u MAXVAL 255 DEPTH 4", &w, &h) != 2)
    return false;
  *width = w;
  *lines = h;
  return true;
}

bool ObjectTags::NextPage() {
  while (!NextLine().empty()) {
  }
  std::uint32_t width = 0;
  broken_ |= !ReadHeader(&width, &linesLeft_);
  line_.resize(broken_ ? 0 : width);
  return !broken_;
}

void ObjectTags::BeginPage(std::uint32_t width) {
  if (!NextPage()) return;
  broken_ = line_.size() + 1 < width || width + 1 < line_.size();
}

std::span<const TaggedPixel> ObjectTags::NextLine() {
  if (linesLeft_ == 0 || broken_) return {};
  --linesLeft_;
  broken_ = !Fill(line_.data(), line_.size() * sizeof(TaggedPixel));
  return broken_ ? std::span<const TaggedPixel>() : line_;
}

}  // namespace qrn::tool
