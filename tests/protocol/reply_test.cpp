// What the job makes of each reply.
#include "protocol/reply.h"

#include <memory>

#include "params/printer_params.h"
#include "platform/bytes.h"
#include "protocol/command.h"
#include "raster/job_memory.h"
#include "support/job_fixture.h"

namespace qrn {
namespace {

struct Case {
  const char* name;
  std::uint8_t command;
  std::vector<std::uint16_t> words;
  int verdict;
  std::uint8_t pause, cancel, latch;
  std::vector<std::uint32_t> sleeps;
  std::string log;
};

class Replies : public JobFixture {
 protected:
  // The reply ends where its memory ends, so that a read beyond it is found.
  int Parse(std::uint8_t command, const std::vector<std::uint16_t>& words,
            std::size_t bytes = SIZE_MAX) {
    std::vector<std::uint8_t> all(2 * words.size());
    for (std::size_t i = 0; i < words.size(); ++i) PutU16(&all[2 * i], words[i]);
    bytes = std::min(bytes, all.size());
    const std::unique_ptr<std::uint8_t[]> exact(new std::uint8_t[bytes]);
    std::copy_n(all.begin(), bytes, exact.get());
    job.nTxCmd = command;
    return ParseReply(job, exact.get(), static_cast<std::uint32_t>(bytes));
  }
};

TEST_F(Replies, HaveTheirVerdictStateAndLine) {
  const char* const kGone = "Rx op取消作业\r\r\n\r\nCMM1: Pause-0, Cancel-1\r\r\n\r\n";
  for (const Case& expected : {
           Case{"swath taken", 4, {4, 1, 5, 0}, 0, 0, 0, 0, {}, ""},
           Case{"swath not taken", 4, {4, 0, 5, 3}, 2, 0, 0, 0, {}, ""},
           Case{"spool overflow",
                4,
                {4, 0, 5, 7},
                2,
                0,
                0,
                0,
                {3000},
                "Rx cmm spool overflow, sleep(3000)\r\n"},
           Case{"status 7 of a poll", 10, {10, 0, 5, 7}, 2, 0, 0, 0, {}, ""},
           Case{"operator cancelled", 4, {4, 1, 0, 0}, 0, 0, 1, 1, {}, kGone},
           Case{"cancelled",
                10,
                {10, 1, 2, 0},
                0,
                0,
                1,
                1,
                {},
                "CMM1: Pause-0, Cancel-1\r\r\n\r\nRx JOBS_CANCEL(1)\r\n\r\n"},
           Case{"paused",
                4,
                {4, 1, 3, 0, 0, 0xAB, 0x12, 0xCD},
                0,
                1,
                0,
                0,
                {2000},
                "CMM1: Pause-1, Cancel-0\r\r\n\r\nRx JOBS_Pause, size:16, AB-12-CD\r\n\r\n"},
           Case{"states that say nothing", 4, {4, 1, 1, 0}, 0, 0, 0, 0, {}, ""},
           Case{"unknown state", 4, {4, 1, 77, 0}, 0, 0, 0, 0, {}, ""},
           Case{"job create", 3, {3, 1, 2, 0}, 0, 0, 0, 0, {}, ""},
           Case{"job create not taken", 3, {3, 0, 2, 7}, 2, 0, 0, 0, {}, ""},
           Case{"cancel",
                9,
                {9, 1, 0, 0},
                0,
                0,
                1,
                1,
                {},
                "CMM1: Pause-0, Cancel-1\r\r\n\r\nRxOP 取消作业\r\n\r\n"},
           Case{"job end", 5, {5, 0, 0, 0}, 2, 0, 0, 0, {}, "Rx 作业结束\r\n\r\n"},
           Case{"of another command", 4, {10, 1, 2, 0}, 4, 0, 0, 0, {}, ""},
           Case{"code beyond 8 bits", 4, {0x104, 1, 2, 0}, 4, 0, 0, 0, {}, ""},
           Case{"connect, starting",
                2,
                {2, 0, 0, 0x54},
                2,
                0,
                0,
                0,
                {2000},
                "Rx 打印机未进入工作状态: 4-5 \r\n\r\n"},
           Case{"connect, status 0",
                2,
                {2, 0, 0, 0},
                2,
                0,
                0,
                0,
                {2000},
                "Rx 打印机未进入工作状态: 0-0 \r\n\r\n"},
           Case{"connect, status 3",
                2,
                {2, 0, 0, 3},
                2,
                0,
                0,
                0,
                {2000},
                "Rx 打印机未进入工作状态: 3-0 \r\n\r\n"},
           Case{"connect, status 5",
                2,
                {2, 7, 0, 5},
                2,
                0,
                0,
                0,
                {2000},
                "Rx 打印机未进入工作状态: 5-0 \r\n\r\n"},
           Case{"connect refused, 1",
                2,
                {2, 0, 0, 1},
                1,
                0,
                0,
                0,
                {},
                "Rx 打印机未进入工作状态: 1-0 \r\n\r\n"},
           Case{"connect refused, 6",
                2,
                {2, 0, 0, 6},
                1,
                0,
                0,
                0,
                {},
                "Rx 打印机未进入工作状态: 6-0 \r\n\r\n"},
           Case{"connect refused, 150",
                2,
                {2, 0, 0, 0x150},
                1,
                0,
                0,
                0,
                {},
                "Rx 打印机未进入工作状态: 0-21 \r\n\r\n"},
           Case{"connect refused, 60",
                2,
                {2, 0, 0, 0x60},
                1,
                0,
                0,
                0,
                {},
                "Rx 打印机未进入工作状态: 0-6 \r\n\r\n"},
           Case{"connect without a block",
                2,
                {2, 1, 0, 0},
                1,
                0,
                0,
                0,
                {},
                "不可识别打印机参数0\r\nError: The parametre isn't validble\r\n"},
       }) {
    SCOPED_TRACE(expected.name);
    job.bPrnPause = job.bPrnCancel = job.bPauseSeen = job.bCancelLatch = job.nErrCode = 0;
    platform.sleeps.clear();
    EXPECT_EQ(expected.verdict, Parse(expected.command, expected.words));
    EXPECT_EQ(expected.pause, job.bPrnPause);
    EXPECT_EQ(expected.cancel, job.bPrnCancel);
    EXPECT_EQ(expected.latch, job.bCancelLatch);
    EXPECT_EQ(expected.sleeps, platform.sleeps);
    EXPECT_EQ(expected.log, TakeLog());
    EXPECT_EQ(expected.command == 5 ? 1 : 0, job.bJobEndRx);
    job.bJobEndRx = 0;
  }
}

// Words that a reply lacks read as 0, but a job state that is not there is none.
TEST_F(Replies, CountAsFarAsTheyGo) {
  const std::vector<std::uint16_t> paused = {4, 1, 3, 0, 0, 0, 0x1122, 0};
  for (std::size_t bytes = 0; bytes <= 16; ++bytes) {
    job.bPrnPause = 0;
    const ReplyVerdict verdict = bytes < 2 ? kReplyOther : bytes < 4 ? kReplyAgain : kReplyTaken;
    EXPECT_EQ(verdict, Parse(4, paused, bytes)) << bytes;
    EXPECT_EQ(bytes < 6 ? 0 : 1, job.bPrnPause) << bytes;
    EXPECT_EQ(kReplyOther, Parse(10, paused, bytes)) << bytes;
  }
  platform.sleeps.clear();
  EXPECT_EQ(kReplyAgain, Parse(4, {4, 0, 5, 7}, 7));  // no status, no spool overflow
  EXPECT_TRUE(platform.sleeps.empty());
  EXPECT_EQ(kReplyAgain, Parse(2, {2, 0, 0, 1}, 7));  // nor a refusal for good
  EXPECT_EQ((std::vector<std::uint32_t>{2000}), platform.sleeps);
  EXPECT_EQ(kReplyAgain, Parse(5, {5}));
  EXPECT_EQ(1, job.bJobEndRx);
  EXPECT_EQ(kReplyRefused, Parse(2, {2, 1}));
  EXPECT_EQ(3, job.nErrCode);
}

TEST_F(Replies, ResumeClearsPauseAndCancelButNotTheLatch) {
  EXPECT_EQ(0, Parse(10, {10, 1, 2, 0}));
  EXPECT_EQ(0, Parse(10, {10, 1, 4, 0}));
  EXPECT_EQ(0, job.bPrnCancel);
  EXPECT_EQ(1, job.bCancelLatch);
  // A job that is cancelled already is not cancelled again by "gone".
  EXPECT_EQ(0, Parse(10, {10, 1, 2, 0}));
  TakeLog();
  EXPECT_EQ(0, Parse(10, {10, 1, 0, 0}));
  EXPECT_EQ("", TakeLog());
}

TEST_F(Replies, HandOnTheParametersThatComeWithAPause) {
  std::vector<std::uint16_t> words = {4, 1, 3, 0, 0, 0, 0x1122};
  words.resize(7 + 35);
  EXPECT_EQ(0, Parse(4, words, 14 + 69));
  EXPECT_TRUE(HasLines(TakeLog(),
                       {"Rx JOBS_Pause, size:83, 0-1122-0", "Update fw para: too short, 69 < 70"}));
  words[7 + (41 - 8 + 1) / 2 - 1] = 0x2800;  // byte 41 of the block, Db at 1080 dpi: 40
  EXPECT_EQ(0, Parse(4, words));
  EXPECT_EQ(40, job.biDirOfs);
  words[6] = 0x1123;
  words[7 + (41 - 8 + 1) / 2 - 1] = 0x3000;
  EXPECT_EQ(0, Parse(4, words));
  EXPECT_EQ(40, job.biDirOfs);
}

}  // namespace
}  // namespace qrn
