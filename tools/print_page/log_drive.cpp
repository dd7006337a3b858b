#include "print_page/log_drive.h"

#include <stdexcept>
#include <system_error>

namespace qrn::tool {

namespace fs = std::filesystem;

LogDrive::LogDrive(const std::string& logFolder) {
  std::error_code gone;
  before_ = fs::current_path(gone);
  if (!logFolder.empty()) {
    if (fs::exists(logFolder) && !fs::is_directory(logFolder))
      throw std::runtime_error("'" + logFolder + "': is not a folder");
    fs::create_directories(logFolder);
    fs::create_directory(folder_.Path("c:"));
    fs::create_directory_symlink(logFolder, folder_.Path("c:/p2debug"));
  }
  fs::current_path(folder_.Path(""));
}

LogDrive::~LogDrive() {
  std::error_code gone;
  if (!before_.empty()) fs::current_path(before_, gone);
}

}  // namespace qrn::tool
