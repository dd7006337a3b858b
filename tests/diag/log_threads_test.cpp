// Two threads that write the log of one job as fast as they can, with the system's own files.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <thread>

#include "diag/job_log.h"
#include "platform/platform.h"
#include "support/temp_folder.h"

namespace {

constexpr int kLines = 20'000, kThreads = 2;

TEST(JobLogThreads, LoseAndTearNoLine) {
  const TempFolder folder;
  qrn::UsePlatform(nullptr);
  qrn::Job& job = qrn::GetJob();
  job = qrn::Job{};
  qrn::LogOpen(job, folder.Path().string().c_str());
  ASSERT_EQ(1, job.bLogOn);
  std::thread threads[kThreads];
  for (int thread = 0; thread < kThreads; ++thread) {
    threads[thread] = std::thread([thread] {
      for (int line = 0; line < kLines; ++line)
        qrn::LogPrint("%d:%d:%s", thread, line, std::string(line % 40, 'x').c_str());
    });
  }
  for (std::thread& thread : threads) thread.join();

  int next[kThreads] = {};
  std::ifstream file(job.szLogFile, std::ios::binary);
  for (std::string text; std::getline(file, text);) {
    int thread = -1, line = -1, tail = 0;
    ASSERT_EQ(2, std::sscanf(text.c_str(), "%d:%d:%n", &thread, &line, &tail)) << text;
    ASSERT_EQ(next[thread]++, line) << "of thread " << thread;
    ASSERT_EQ(std::string(line % 40, 'x') + "\r", text.substr(tail));
  }
  EXPECT_EQ(kLines, next[0]);
  EXPECT_EQ(kLines, next[1]);
}

}  // namespace
