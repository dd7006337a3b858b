// Where the driver's job logs go.
#ifndef QRN_TOOLS_PRINT_PAGE_LOG_DRIVE_H_
#define QRN_TOOLS_PRINT_PAGE_LOG_DRIVE_H_

#include <filesystem>
#include <string>

#include "print_page/temporary_folder.h"

namespace qrn::tool {

// The driver writes its log into "c:/p2debug" below the current folder, when that exists. While one
// of these lives, the current folder is a private one that stands in for the drive, with a link to
// where the user wants the logs.
class LogDrive {
 public:
  // `logFolder`: made when it is not there; "" = no logs. Throws std::runtime_error when it cannot
  // be used.
  explicit LogDrive(const std::string& logFolder);
  ~LogDrive();
  LogDrive(const LogDrive&) = delete;
  LogDrive& operator=(const LogDrive&) = delete;

 private:
  TemporaryFolder folder_;
  std::filesystem::path before_;  // empty when it was gone
};

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_LOG_DRIVE_H_
