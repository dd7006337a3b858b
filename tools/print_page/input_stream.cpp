#include "print_page/input_stream.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "print_page/input_kind.h"

namespace qrn::tool {

namespace fs = std::filesystem;

bool InputStream::Open(const std::string& path, std::string* error) {
  path_ = path;
  std::error_code ignored;
  if (path != "-" && fs::is_directory(path, ignored)) {
    *error = "is a folder";
    return false;
  }
  file_.reset(path == "-" ? stdin : std::fopen(path.c_str(), "rb"));
  if (file_ == nullptr) {
    *error = std::strerror(errno);
    return false;
  }
  errno = 0;
  first_.resize(kKindBytes);
  first_.resize(std::fread(first_.data(), 1, kKindBytes, file_.get()));
  if (!first_.empty()) return true;
  *error = std::ferror(file_.get()) != 0 ? std::strerror(errno) : "is empty";
  return false;
}

std::ptrdiff_t InputStream::Read(std::uint8_t* buffer, std::size_t bytes) {
  if (taken_ < first_.size()) {
    const std::size_t taken = std::min(bytes, first_.size() - taken_);
    std::memcpy(buffer, first_.data() + taken_, taken);
    taken_ += taken;
    return static_cast<std::ptrdiff_t>(taken);
  }
  return static_cast<std::ptrdiff_t>(std::fread(buffer, 1, bytes, file_.get()));
}

// The name under which another program finds the same file, "" when there is none: names such as
// /dev/stdin mean something else there.
std::string InputStream::FileBehind() const {
  struct stat opened {
  }, named{};
  if (path_ == "-" || fstat(fileno(file_.get()), &opened) != 0 || !S_ISREG(opened.st_mode))
    return "";
  std::error_code failed;
  const std::string name = fs::canonical(path_, failed).string();
  if (failed || stat(name.c_str(), &named) != 0) return "";
  return named.st_dev == opened.st_dev && named.st_ino == opened.st_ino ? name : "";
}

bool InputStream::Place(const RenderFolder& folder, const std::string& name, std::string* error) {
  const std::string file = FileBehind(), target = folder.Path(name);
  std::error_code failed;
  if (!file.empty()) fs::create_symlink(file, target, failed);
  const int writeError = file.empty() ? Copy(target) : failed.value();
  if (writeError != 0) {
    *error = folder.CannotWrite(writeError);
  } else if (std::ferror(file_.get()) != 0) {
    *error = "cannot be read to its end";
  }
  return error->empty();
}

// The error number of a write that failed, or 0.
int InputStream::Copy(const std::string& target) {
  std::FILE* copy = std::fopen(target.c_str(), "wb");
  if (copy == nullptr) return errno;
  std::array<std::uint8_t, 65536> bytes;
  std::ptrdiff_t got = 0;
  int error = 0;
  while (error == 0 && (got = Read(bytes.data(), bytes.size())) > 0) {
    const auto count = static_cast<std::size_t>(got);
    if (std::fwrite(bytes.data(), 1, count, copy) != count) error = errno;
  }
  return std::fclose(copy) != 0 && error == 0 ? errno : error;
}

}  // namespace qrn::tool
