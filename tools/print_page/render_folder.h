// The private folder that the programs which render a document run in, and what they see of the
// system: temporary files and font caches go there and nowhere else.
#ifndef QRN_TOOLS_PRINT_PAGE_RENDER_FOLDER_H_
#define QRN_TOOLS_PRINT_PAGE_RENDER_FOLDER_H_

#include <string>
#include <vector>

#include "print_page/temporary_folder.h"

namespace qrn::tool {

class RenderFolder {
 public:
  RenderFolder();  // throws std::runtime_error when it cannot be made

  std::string Path(const std::string& name) const { return folder_.Path(name); }
  std::string CannotWrite(int error) const { return folder_.CannotWrite(error); }
  // What to add to the reason of a program that failed here: that there is little room, or "".
  std::string LittleRoom() const;
  // Of a program that runs here: "NAME=value".
  const std::vector<std::string>& Environment() const { return environment_; }

 private:
  TemporaryFolder folder_;
  std::vector<std::string> environment_;
};

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_RENDER_FOLDER_H_
