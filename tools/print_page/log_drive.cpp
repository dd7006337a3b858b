#include "print_page/log_drive.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <system_error>

namespace qrn::tool {

namespace fs = std::filesystem;

LogDrive::LogDrive(const std::string& logFolder) {
  std::error_code failed;
  before_ = fs::current_path(failed);
  if (!logFolder.empty()) {
    fs::create_directories(logFolder, failed);
    if (!fs::is_directory(logFolder)) {
      throw std::runtime_error(
          "'" + logFolder + "': " + (fs::exists(logFolder) ? "is not a folder" : failed.message()));
    }
    if (access(logFolder.c_str(), W_OK | X_OK) != 0)
      throw std::runtime_error("'" + logFolder + "': " + std::strerror(errno));
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
