#include "print_page/job_log_check.h"

#include <fstream>
#include <system_error>

namespace qrn::tool {
namespace {

namespace fs = std::filesystem;

constexpr const char* kLastLine = "jobend: ";

bool EndsInLastLine(const fs::path& log) {
  std::ifstream file(log, std::ios::binary);
  std::string last;
  for (std::string line; std::getline(file, line);) {
    if (line.find_first_not_of(" \r") != std::string::npos) last = line;
  }
  return last.find(kLastLine) == 0;
}

}  // namespace

JobLogCheck::JobLogCheck(const std::string& folder) : folder_(folder), before_(Files()) {}

std::set<fs::path> JobLogCheck::Files() const {
  std::set<fs::path> files;
  std::error_code failed;
  if (folder_.empty()) return files;
  for (const auto& entry : fs::directory_iterator(folder_, failed)) files.insert(entry.path());
  return files;
}

std::string JobLogCheck::Problem() const {
  if (folder_.empty()) return "";
  fs::path log;
  for (const fs::path& file : Files()) {
    if (before_.count(file) != 0) continue;
    if (EndsInLastLine(file)) return "";
    log = file;
  }
  if (log.empty()) return "no log could be written into '" + folder_ + "'";
  return "the log '" + log.string() + "' does not reach the job's end";
}

}  // namespace qrn::tool
