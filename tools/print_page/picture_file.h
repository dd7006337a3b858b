// The files that pictures of the paper go to.
#ifndef QRN_TOOLS_PRINT_PAGE_PICTURE_FILE_H_
#define QRN_TOOLS_PRINT_PAGE_PICTURE_FILE_H_

#include <cstdint>
#include <string>

#include "print_page/options.h"
#include "sim/machine/machine.h"
#include "sim/paper/paper.h"
#include "sim/paper/picture.h"

namespace qrn::tool {

// "paper.png", then "paper-2.png" and so on.
std::string PictureName(const std::string& name, std::uint32_t pageNo);

// Why no picture can come there, found before the page is printed; "" when it can.
std::string PictureProblem(const std::string& name);

// What the picture of a page shows: all of it, or where it is not compared, what carries ink.
sim::PictureOptions PictureOf(const Options& options, const sim::Machine& machine,
                              std::uint32_t lines, std::uint32_t widthPixels);

// Writes the picture whole or not at all: when it fails, an earlier file of that name stays. Why it
// could not be written; "" when it was.
[[nodiscard]] std::string SavePicture(const sim::Paper& paper, const sim::PictureOptions& options,
                                      const std::string& name);

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_PICTURE_FILE_H_
