// The command lines of the programs that render. They run in the render folder, where the document
// goes by a plain name: both programs see more in a file name than a name.
#ifndef QRN_TOOLS_PRINT_PAGE_RENDER_COMMANDS_H_
#define QRN_TOOLS_PRINT_PAGE_RENDER_COMMANDS_H_

#include <cstdint>
#include <string>
#include <vector>

#include "print_page/document_plan.h"

namespace qrn::tool {

using Command = std::vector<std::string>;

constexpr const char* kDocumentName = "the-file";  // it shows in the programs' messages
constexpr const char* kPictureDocumentName = "picture.pdf";

// Pages of a document as a CUPS raster on standard output: 8 bits a colour, CMYK, the colours of a
// line one after the other, at this resolution x 360; the document's page size, A4 where it names
// none.
Command RenderCommand(const std::string& document, const PageRun& run, std::uint32_t resolution);

// The same pages as tagged pixels (object_tags.h).
Command TagCommand(const std::string& document, const PageRun& run, std::uint32_t resolution);

// Reports how many pages a PDF has and which have transparency.
Command PdfInfoCommand();

// Makes a PDF of a picture, a page for each that the file holds, and writes the type of each to
// standard output.
Command PictureCommand(const std::string& format);

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_RENDER_COMMANDS_H_
