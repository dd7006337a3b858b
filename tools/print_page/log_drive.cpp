#include "print_page/log_drive.h"

namespace qrn::tool {

namespace fs = std::filesystem;

LogDrive::LogDrive(const std::string& logFolder) : before_(fs::current_path()) {
  if (!logFolder.empty()) {
    fs::create_directories(logFolder);
    fs::create_directory(folder_.Path("c:"));
    fs::create_directory_symlink(logFolder, folder_.Path("c:/p2debug"));
  }
  fs::current_path(folder_.Path(""));
}

LogDrive::~LogDrive() { fs::current_path(before_); }

}  // namespace qrn::tool
