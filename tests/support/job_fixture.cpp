#include "support/job_fixture.h"

#include <fstream>
#include <iterator>

#include "support/log_text.h"

namespace fs = std::filesystem;

JobFixture::JobFixture() {
  job = qrn::Job{};
  job.nSwathLimit = 0xFFFFFFFF;
  std::snprintf(job.szLogFile, sizeof job.szLogFile, "%s", (folder / "log.txt").string().c_str());
  job.bLogOn = 1;
}

JobFixture::~JobFixture() { job = qrn::Job{}; }

std::string JobFixture::TakeLog() {
  std::ifstream file(job.szLogFile, std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  fs::remove(job.szLogFile);
  return CodePageToUtf8(bytes);
}

testing::AssertionResult HasLines(const std::string& log, const std::vector<std::string>& lines) {
  std::size_t at = 0;
  for (const std::string& line : lines) {
    const std::size_t found = log.find(line, at);
    if (found == std::string::npos) {
      return testing::AssertionFailure() << "no \"" << line << "\" behind the lines before it in\n"
                                         << log;
    }
    at = found + line.size();
  }
  return testing::AssertionSuccess();
}
