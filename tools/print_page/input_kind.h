// What kind of input a file is, by its first bytes.
#ifndef QRN_TOOLS_PRINT_PAGE_INPUT_KIND_H_
#define QRN_TOOLS_PRINT_PAGE_INPUT_KIND_H_

#include <cstddef>
#include <string>

namespace qrn::tool {

enum class InputKind { kRaster, kPdf, kPostScript, kPicture, kUnknown };

constexpr std::size_t kKindBytes = 1024;  // that are enough to tell

InputKind KindOf(const std::string& firstBytes);

// What GraphicsMagick calls a picture's format. Requires: kPicture.
std::string PictureFormatOf(const std::string& firstBytes);

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_INPUT_KIND_H_
