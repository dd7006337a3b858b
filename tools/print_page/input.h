// Turns whatever the user names into pages: CUPS raster as it is; PDF, PostScript and EPS through
// Ghostscript; PNG, JPEG and TIFF through GraphicsMagick and then Ghostscript.
#ifndef QRN_TOOLS_PRINT_PAGE_INPUT_H_
#define QRN_TOOLS_PRINT_PAGE_INPUT_H_

#include <cstdint>
#include <memory>
#include <string>

#include "print_page/raster_reader.h"

namespace qrn::tool {

enum class InputKind { kRaster, kDocument, kPicture, kUnknown };

// By the first bytes of a file.
InputKind KindOf(const std::string& firstBytes);

// The pages of one input. Temporary files live as long as it does.
class Input {
 public:
  // `path`: a file, or "-" for a raster on standard input. Null, and a one-line reason that names
  // the file, when it cannot be read.
  static std::unique_ptr<Input> Open(const std::string& path, std::uint32_t resolution,
                                     std::string* error);
  ~Input();
  ReadResult NextPage(RasterPage* page, std::string* error);

 private:
  struct Impl;
  explicit Input(std::unique_ptr<Impl> impl);
  std::unique_ptr<Impl> impl_;
};

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_INPUT_H_
