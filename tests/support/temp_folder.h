// A directory of a test's own.
#ifndef QRN_TESTS_SUPPORT_TEMP_FOLDER_H_
#define QRN_TESTS_SUPPORT_TEMP_FOLDER_H_

#include <filesystem>

// Empty and new, for the life of the object; goes with all that is in it then.
class TempFolder {
 public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  const std::filesystem::path& Path() const { return path_; }

 private:
  std::filesystem::path path_;
};

#endif  // QRN_TESTS_SUPPORT_TEMP_FOLDER_H_
