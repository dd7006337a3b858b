#include "support/job_fixture.h"

#include <fstream>
#include <iterator>

#include "support/log_text.h"

JobFixture::JobFixture() {
  job = qrn::Job{};
  job.nSwathLimit = 0xFFFFFFFF;
  std::snprintf(job.szLogFile, sizeof job.szLogFile, "%s", (folder / "log.txt").string().c_str());
  job.bLogOn = 1;
}

JobFixture::~JobFixture() { job = qrn::Job{}; }

std::string JobFixture::TakeLog() {
  const std::string bytes = BytesOf(job.szLogFile);
  std::filesystem::remove(job.szLogFile);
  return CodePageToUtf8(bytes);
}

std::string BytesOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

testing::AssertionResult HasLines(const std::string& log, const std::vector<std::string>& lines) {
  std::size_t at = 0;
  for (const std::string& line : lines) {
    at = log.find(line, at);
    if (at == std::string::npos)
      return testing::AssertionFailure() << "no \"" << line << "\" further on in\n" << log;
    at += line.size();
  }
  return testing::AssertionSuccess();
}
