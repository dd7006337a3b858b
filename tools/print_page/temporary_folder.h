// A private folder that disappears with the object.
#ifndef QRN_TOOLS_PRINT_PAGE_TEMPORARY_FOLDER_H_
#define QRN_TOOLS_PRINT_PAGE_TEMPORARY_FOLDER_H_

#include <stdlib.h>  // mkdtemp

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

#include "print_page/leftovers.h"

namespace qrn::tool {

class TemporaryFolder {
 public:
  // Throws std::runtime_error when it cannot be made.
  TemporaryFolder() {
    const char* variable = std::getenv("TMPDIR");
    parent_ = variable != nullptr && *variable != '\0' ? variable : "/tmp";
    std::string name = parent_ + "/print-page-XXXXXX";
    const auto lock = HoldOffSignals();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error(CannotWrite(errno));
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
  // The folder that it is in.
  const std::string& Parent() const { return parent_; }
  // The reason that an error number of a write there gives, in a line.
  std::string CannotWrite(int error) const {
    return "cannot write into the temporary folder '" + parent_ + "': " + std::strerror(error);
  }

 private:
  std::string parent_;
  std::filesystem::path path_;
};

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_TEMPORARY_FOLDER_H_
