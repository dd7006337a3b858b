// A private folder that disappears with the object.
#ifndef QRN_TOOLS_PRINT_PAGE_TEMPORARY_FOLDER_H_
#define QRN_TOOLS_PRINT_PAGE_TEMPORARY_FOLDER_H_

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

#include "print_page/leftovers.h"

namespace qrn::tool {

class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "print-page-XXXXXX").string();
    const auto lock = HoldOffSignals();
    if (mkdtemp(name.data()) == nullptr)
      throw std::runtime_error("no temporary folder can be made");
    path_ = std::filesystem::absolute(name);  // the current folder changes while it exists
    NotePath(path_);
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
    ForgetPath(path_);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string Path(const std::string& name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_TEMPORARY_FOLDER_H_
