// The log directory of the library, and what it has written there.
#ifndef QRN_TESTS_SUPPORT_LOG_FOLDER_H_
#define QRN_TESTS_SUPPORT_LOG_FOLDER_H_

#include <filesystem>
#include <string>
#include <vector>

#include "support/temp_folder.h"

// Makes the log directory, or takes it away, for the life of the object. Where drives have no
// letters its name is a relative path: then the working directory is a private one meanwhile.
class LogFolder {
 public:
  explicit LogFolder(bool present = true);
  ~LogFolder();
  LogFolder(const LogFolder&) = delete;
  LogFolder& operator=(const LogFolder&) = delete;

  // Log files in the order in which they were begun, and their bytes.
  static std::vector<std::filesystem::path> Files();
  static std::vector<std::string> Logs();

 private:
  TempFolder work_;
  std::filesystem::path before_;
};

#endif  // QRN_TESTS_SUPPORT_LOG_FOLDER_H_
