// Error texts, the code page, and the log's file.
#include <cstring>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "base/shared.h"
#include "diag/code_page.h"
#include "diag/driver_error.h"
#include "diag/error_texts.h"
#include "diag/job_log.h"
#include "support/job_fixture.h"
#include "support/log_text.h"

namespace qrn {
namespace {

namespace fs = std::filesystem;

// Its whole slot, except for the zeros at the end; ends of lines as \r and \n.
std::string ErrorText(std::uint32_t code, bool chinese) {
  char slot[kErrorSlotBytes];
  std::memset(slot, '#', sizeof slot);
  CopyErrorText(code, chinese, slot);
  std::string text;
  for (const char c : CodePageToUtf8({slot, sizeof slot}))
    text += c == '\r' ? "\\r" : c == '\n' ? "\\n" : std::string(1, c);
  return text.substr(0, text.find_last_not_of('\0') + 1);
}

using Errors = JobFixture;

TEST_F(Errors, HaveTheTextsOfTheTable) {
  std::string table;
  for (std::uint32_t code = 0; code < kErrorCodes; ++code) {
    table += std::to_string(code) + " | " + ErrorText(code, false);
    table += " | " + ErrorText(code, true) + "\n";
  }
  EXPECT_EQ(BytesOf(QRN_ERROR_TEXTS), table);
  ShowError(kErrorCodes);  // beyond it: an empty box, nothing recorded
  EXPECT_EQ("", platform.boxes.back());
  EXPECT_EQ(0, job.nErrCode);
}

TEST_F(Errors, KeepALostLinkWhateverFollowsIt) {
  for (const std::uint32_t code : {3u, 17u, 26u}) RaiseError(code);
  EXPECT_EQ(17, job.nErrCode);
  EXPECT_EQ(3u, platform.boxes.size());
}

TEST(CodePage, KnowsEveryCharacterOfTheSources) {
  std::size_t characters = 0;
  for (const auto& entry : fs::recursive_directory_iterator(QRN_SOURCE_DIR)) {
    if (entry.path().extension() != ".cpp" && entry.path().extension() != ".h") continue;
    const std::string text = BytesOf(entry.path());
    std::vector<char> converted(2 * text.size() + 1);
    ToCodePage(text.c_str(), converted.data(), converted.size());
    EXPECT_EQ(text, CodePageToUtf8(converted.data())) << entry.path();
    characters += text.size() - std::strlen(converted.data());  // of three bytes, now two
  }
  EXPECT_GT(characters, 500u);
}

TEST(CodePage, CutsBetweenCharactersAndMarksUnknownOnes) {
  for (const auto& [utf8, cut] :
       {std::pair{"a打b", "a"}, {"ab打", "ab"}, {"é€", "??"}, {"\xE6", "?"}}) {
    char out[3];
    ToCodePage(utf8, out, sizeof out);
    EXPECT_STREQ(cut, out);
  }
}

class JobLog : public JobFixture {
 protected:
  JobLog() { LogOpen(job, folder.c_str()); }
  std::string Bytes() { return BytesOf(job.szLogFile); }
};

TEST_F(JobLog, CutsALineAt510BytesAndIsOffWhereItsNameDoesNotFit) {
  LogPrint("%s", std::string(600, 'x').c_str());
  EXPECT_EQ(std::string(510, 'x') + "\r\n", Bytes());
  LogOpen(job, std::string(300, 'x').c_str());  // a folder too deep for the record: no log
  EXPECT_EQ(0, job.bLogOn);
}

TEST_F(JobLog, GoesOnFromTheEndOfAFileThatWasCutRemovedOrAway) {
  LogPrint("one");
  LogPrint("two");
  fs::resize_file(job.szLogFile, 5);
  LogPrint("three");
  EXPECT_EQ("one\r\nthree\r\n", Bytes());
  fs::remove(job.szLogFile);
  LogPrint("four");
  const fs::path moved = folder.string() + "-moved";
  fs::rename(folder, moved);
  LogPrint("lost");
  EXPECT_FALSE(fs::exists(folder));
  fs::rename(moved, folder);
  LogPrint("five");
  EXPECT_EQ("four\r\nfive\r\n", Bytes());
}

TEST_F(JobLog, HasBlanksWhereAThreadWasEndedInFrontOfItsWrite) {
  LogPrint("one");
  job.logLines[0] = {kLogLinePlaced, AddShared(job.logBytes, 7), 7};  // as that thread left it
  LogPrint("two");
  LogDropUnwritten(job);
  LogPrint("three");
  EXPECT_EQ("one\r\n       two\r\nthree\r\n", Bytes());
}

}  // namespace
}  // namespace qrn
