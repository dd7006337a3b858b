// Turns whatever the user names into pages: CUPS raster as it is; PDF, PostScript and EPS through
// Ghostscript; PNG, JPEG and TIFF through GraphicsMagick and then Ghostscript.
#ifndef QRN_TOOLS_PRINT_PAGE_INPUT_H_
#define QRN_TOOLS_PRINT_PAGE_INPUT_H_

#include <cstdint>
#include <memory>
#include <string>

#include "print_page/raster_reader.h"

namespace qrn::tool {

// The pages of one input. Temporary files live as long as it does.
// What messages call an input: 'PATH', or standard input.
std::string InputName(const std::string& path);

class Input {
 public:
  // `path`: a file, a pipe, or "-" for standard input. A raster is read as it comes. Null, and a
  // one-line reason that names the file, when it cannot be read.
  static std::unique_ptr<Input> Open(const std::string& path, const PageTerms& terms,
                                     std::string* error);
  ~Input();
  // Through other programs, not read as a raster.
  bool IsRendered() const;
  // Of the input; 0 = not known.
  std::uint32_t Pages() const;
  // *error names the file, and the page where that is known.
  ReadResult NextPage(RasterPage* page, std::string* error);

 private:
  struct Impl;
  explicit Input(std::unique_ptr<Impl> impl);
  std::unique_ptr<Impl> impl_;
};

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_INPUT_H_
