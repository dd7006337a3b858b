#include "diag/job_log.h"

#include <fstream>
#include <iterator>

#include "platform/shared.h"
#include "support/job_fixture.h"

namespace qrn {
namespace {

namespace fs = std::filesystem;

class JobLog : public JobFixture {
 protected:
  std::string Open() {
    LogOpen(job, folder.c_str());
    return fs::path(job.szLogFile).filename().string();
  }
  std::string Bytes() {
    std::ifstream file(job.szLogFile, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  }
};

TEST_F(JobLog, IsNamedByMinuteAndCountedWithinIt) {
  EXPECT_EQ("Y20240307_0905.txt", Open());
  LogPrint("one");
  EXPECT_EQ("Y20240307_0905(1).txt", Open());
  LogPrint("two");
  EXPECT_EQ("two\r\n", Bytes());  // nothing of the other job
  EXPECT_EQ("Y20240307_0905(2).txt", Open());
  platform.localTime = {2031, 12, 24, 23, 59, 59};
  fs::create_directory(folder / "Y20311224_2359.txt");  // a folder of that name counts too
  EXPECT_EQ("Y20311224_2359(1).txt", Open());
  EXPECT_EQ(1, job.bLogOn);
}

TEST_F(JobLog, IsOffWithoutItsFolder) {
  LogOpen(job, (folder / "missing").c_str());
  EXPECT_EQ(0, job.bLogOn);
  LogPrint("nowhere");
  EXPECT_TRUE(fs::is_empty(folder));
  LogOpen(job, std::string(300, 'x').c_str());
  EXPECT_EQ(0, job.bLogOn);
}

TEST_F(JobLog, LosesItsLinesWithItsFolderAndFindsItAgain) {
  Open();
  LogPrint("one");
  const fs::path moved = folder.string() + "-moved";
  fs::rename(folder, moved);
  LogPrint("two");
  EXPECT_FALSE(fs::exists(folder));
  fs::rename(moved, folder);
  LogPrint("three");
  EXPECT_EQ("one\r\nthree\r\n", Bytes());
}

TEST_F(JobLog, HoldsItsLinesInCodePageBytesWithCrLf) {
  Open();
  LogPrint("Connect");
  LogPrint("CMM%d: Pause-%d, Cancel-%d\r\n", 1, 0, 1);
  LogPrint("速度: %d-%d", 10, 46);
  LogPrint("Error: %s", "\xCB\xD9 100%");
  EXPECT_EQ(
      "Connect\r\nCMM1: Pause-0, Cancel-1\r\r\n\r\n\xCB\xD9\xB6\xC8: 10-46\r\nError: \xCB\xD9 "
      "100%\r\n",
      Bytes());
}

TEST_F(JobLog, CutsALineAt510Bytes) {
  Open();
  LogPrint("%s", std::string(600, 'x').c_str());
  EXPECT_EQ(std::string(510, 'x') + "\r\n", Bytes());
}

TEST_F(JobLog, GoesOnFromTheEndOfAFileThatWasCutOrRemoved) {
  Open();
  LogPrint("one");
  LogPrint("two");
  fs::resize_file(job.szLogFile, 5);
  LogPrint("three");
  EXPECT_EQ("one\r\nthree\r\n", Bytes());
  fs::remove(job.szLogFile);
  LogPrint("four");
  LogPrint("five");
  EXPECT_EQ("four\r\nfive\r\n", Bytes());
}

TEST_F(JobLog, HasBlanksWhereAThreadWasEndedInFrontOfItsWrite) {
  Open();
  LogPrint("one");
  job.logLines[0] = {kLogLinePlaced, AddShared(job.logBytes, 7), 7};  // as that thread left it
  LogPrint("two");
  LogDropUnwritten(job);
  LogPrint("three");
  EXPECT_EQ("one\r\n       two\r\nthree\r\n", Bytes());
}

}  // namespace
}  // namespace qrn
