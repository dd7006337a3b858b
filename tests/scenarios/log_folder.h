// The log directory of the library, and the logs that stand in it.
#ifndef QRN_TESTS_SCENARIOS_LOG_FOLDER_H_
#define QRN_TESTS_SCENARIOS_LOG_FOLDER_H_

#include <filesystem>
#include <vector>

#include "support/temp_folder.h"

namespace scenarios {

// Where drives have no letters, the directory's name is a relative path: the working directory is a
// private one for the life of the object.
class LogFolder {
 public:
  explicit LogFolder(bool present);
  ~LogFolder();
  LogFolder(const LogFolder&) = delete;
  LogFolder& operator=(const LogFolder&) = delete;

  // In the order in which they were begun.
  static std::vector<std::filesystem::path> Files();

 private:
  TempFolder work_;
  std::filesystem::path before_;
};

}  // namespace scenarios

#endif  // QRN_TESTS_SCENARIOS_LOG_FOLDER_H_
