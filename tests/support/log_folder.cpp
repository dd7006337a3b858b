#include "support/log_folder.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <tuple>

namespace fs = std::filesystem;

namespace {

constexpr char kLogDirectory[] = "c:/p2debug";

}  // namespace

LogFolder::LogFolder(bool present) : before_(fs::current_path()) {
  fs::current_path(work_.Path());
  fs::remove_all(kLogDirectory);
  if (present) fs::create_directories(kLogDirectory);
}

LogFolder::~LogFolder() {
  std::error_code ignored;
  fs::remove_all(kLogDirectory, ignored);
  fs::current_path(before_);
}

std::vector<fs::path> LogFolder::Files() {
  std::vector<fs::path> paths;
  std::error_code absent;
  for (const auto& entry : fs::directory_iterator(kLogDirectory, absent))
    paths.push_back(entry.path());
  // The plain name of a minute comes before its numbered ones.
  std::sort(paths.begin(), paths.end(), [](const fs::path& a, const fs::path& b) {
    const auto key = [](const fs::path& path) {
      const std::string stem = path.stem().string();
      return std::make_tuple(stem.substr(0, stem.find('(')), stem.size(), stem);
    };
    return key(a) < key(b);
  });
  return paths;
}

std::vector<std::string> LogFolder::Logs() {
  std::vector<std::string> logs;
  for (const fs::path& path : Files()) {
    std::ifstream file(path, std::ios::binary);
    logs.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }
  return logs;
}
