// A cleared job on a fake platform, with its log in a private folder.
#ifndef QRN_TESTS_SUPPORT_JOB_FIXTURE_H_
#define QRN_TESTS_SUPPORT_JOB_FIXTURE_H_

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "job/job.h"
#include "support/fake_platform.h"
#include "support/temp_folder.h"

class JobFixture : public testing::Test {
 private:
  TempFolder folder_;

 protected:
  JobFixture();
  ~JobFixture() override;

  // The log so far, in UTF-8, and forgets it.
  std::string TakeLog();

  qrn::FakePlatform platform;
  qrn::Job& job = qrn::GetJob();
  const std::filesystem::path& folder = folder_.Path();
};

std::string BytesOf(const std::filesystem::path& path);

// True when `lines` are in the log, one after the other.
testing::AssertionResult HasLines(const std::string& log, const std::vector<std::string>& lines);

#endif  // QRN_TESTS_SUPPORT_JOB_FIXTURE_H_
