// The exports without a printer, and the wait for a command.
#include <cstring>

#include "host/job_lifecycle.h"
#include "protocol/command.h"
#include "qrn_driver.h"
#include "raster/job_memory.h"
#include "raster/pass_rows.h"
#include "support/job_fixture.h"

namespace qrn {
namespace {

class Exports : public JobFixture {
 protected:
  Exports() : before(std::filesystem::current_path()) {
    std::filesystem::current_path(folder);
    std::filesystem::create_directories("c:/p2debug");
  }
  ~Exports() override { std::filesystem::current_path(before); }
  std::filesystem::path before;
  HostJobDesc desc{9, 0x10000 + 1440, 0x20000 + 360, 9, 700, 3000, 9, 0x108, 2, {9, 9, 9, 9}};
};

TEST_F(Exports, AnswerWithoutAJob) {
  EXPECT_EQ(1, InitPrinter(5));
  EXPECT_EQ(1, AbortPrint());
  EXPECT_EQ(1, ExitPrinter());
  EXPECT_EQ(360u, PP_GetResolutionY(99));
  EXPECT_EQ(1620u, PP_GetResolutionX(0x102));
  EXPECT_EQ(0u, PP_GetResolutionX(4));
  char text[20];
  std::memset(text, '#', sizeof text);
  EXPECT_EQ(1, PP_GetErrorMsg(text));
  EXPECT_EQ(0, std::memcmp("Undefine error!\0####", text, sizeof text));
  EXPECT_EQ(1, PP_GetErrorMsg(nullptr));
  // No start came: nothing is stored, nothing breaks.
  const std::uint8_t line[12] = {};
  EXPECT_EQ(12u, WriteRipData(line, 12));
  EXPECT_EQ(1, PP_SendALineAColorData(0, 12, line, 0));
  EXPECT_EQ(1, EndRipData());
  EXPECT_EQ(1, PP_Uninit());
}

TEST_F(Exports, TellOfAStartThatFailedEachInItsWay) {
  EXPECT_EQ(0, PP_Init(&desc));
  EXPECT_EQ(1440, job.nResX);
  EXPECT_EQ(360, job.nResY);
  EXPECT_EQ(700u, job.nHeight);
  EXPECT_EQ(6000u, job.nLineBits);
  EXPECT_EQ(8, job.nColors);
  EXPECT_EQ(2u, job.nBitsPerPixel);
  EXPECT_EQ(0xFFFFFFFFu, job.nSwathLimit);
  EXPECT_STREQ("pid_a71d", job.szPid);  // without it every device would be the printer
  EXPECT_STREQ("vid_5e3c", job.szVid);
  EXPECT_STREQ("c:/p2debug/Y20240307_0905.txt", job.szLogFile);
  const std::uint8_t line[12] = {};
  EXPECT_EQ(0, PP_SendALineAColorData(7, 12, line, 0));
  EXPECT_EQ(0u, job.linesReceived);
  EXPECT_EQ(1, PP_Uninit());
  EXPECT_EQ(1u, platform.boxes.size());
  EXPECT_TRUE(platform.written.empty());
  EXPECT_TRUE(HasLines(
      TakeLog(), {"Lanternfly\r\n", "V2.07 (18)\r\r\n2024.3.7 9:5:2\r\n", "打印机设备未连接",
                  "无法开启目标设备", "Error: Device link fail!", "Wait swath Queue sended.0-0-0",
                  "All swath sended!", "mem: free --", "jobend: 9:5:2\r\n\r\n"}));

  EXPECT_EQ(1, StartPrint(&desc, 3));
  EXPECT_EQ(12u, WriteRipData(line, 12));
  EXPECT_EQ(1, EndRipData());
  EXPECT_EQ(1, StartPrint(nullptr, 0));
  EXPECT_EQ(0, PP_Init(nullptr));
  EXPECT_EQ(4u, platform.boxes.size());
}

class StreamSlots : public Exports {
 protected:
  ~StreamSlots() override { FreeJobMem(job); }
  // Lets the job of a start that found no printer take lines.
  void TakeLines() {
    job.nErrCode = job.bTxEnd = 0;
    job.lineStride = 4;
    job.passCount = 4;
    job.swathH = 360;
    AllocJobMem(job);
  }
  // Hands over a line of this byte; where it landed in, "slot:line".
  std::string Write(std::uint8_t byte) {
    EXPECT_EQ(1u, WriteRipData(&byte, 1));
    for (std::uint32_t at = 0; at < 8 * 4; ++at) {
      std::uint8_t line[4];
      LoadRow(job, at % 8, at / 8, line);
      if (line[0] == byte) return std::to_string(at % 8) + ":" + std::to_string(at / 8);
    }
    return "nowhere";
  }
};

TEST_F(StreamSlots, GoRoundInEightsAndStartAnewOnlyWithStartPrint) {
  StartPrint(&desc, 0);
  TakeLines();
  for (std::uint8_t i = 0; i < 17; ++i) {
    const std::string place = std::to_string(i % 8) + ":" + std::to_string(i / 8);
    EXPECT_EQ(place, Write(static_cast<std::uint8_t>(i + 1)));
  }
  EXPECT_EQ(2u, job.linesReceived);
  job.bPrnCancel = 1;
  EXPECT_EQ("nowhere", Write(50));  // a stopped job takes none: the slot stays
  job.bPrnCancel = 0;
  EXPECT_EQ("1:2", Write(51));
  EXPECT_EQ(0, PP_Init(&desc));
  TakeLines();
  EXPECT_EQ("2:0", Write(52));
  StartPrint(&desc, 0);
  TakeLines();
  EXPECT_EQ("0:0", Write(53));
}

class CommandWait : public JobFixture {
 protected:
  CommandWait() { job.bTxRun = 1; }
};

TEST_F(CommandWait, TellsEveryThreeSecondsThatItStillWaits) {
  platform.onSleep = [this] {
    if (platform.sleeps.size() == 70) job.nCmdState = kMailDone;
  };
  EXPECT_EQ(1, CmdExecute(kCmdConnect, job));
  EXPECT_EQ("Cmm2 reply Waitting...\r\nCmm2 reply Waitting...\r\n", TakeLog());
  EXPECT_EQ(kMailIdle, job.nCmdState);
}

TEST_F(CommandWait, EndsByEachOutcome) {
  struct Case {
    const char* name;
    void (*atSleep)(Job& job);
    int result;
    const char* log;
  };
  for (const Case& expected : {
           Case{"refused", [](Job& j) { j.nCmdState = kMailFailed; }, 0, "指令(5)执行失败\r\n\r\n"},
           Case{"printer cancelled", [](Job& j) { j.bPrnCancel = 1; }, 0,
                "Cmm(5) Quit:1-0-0-1\r\n\r\n"},
           Case{"link lost", [](Job& j) { j.nErrCode = 17; }, 0, "Cmm(5) Quit:1-0-0-0\r\n\r\n"},
           Case{"an error alone does not end it",
                [](Job& j) {
                  if (j.nErrCode == 26) j.nCmdState = kMailDone;
                  j.nErrCode = 26;
                },
                1, ""},
           Case{"the thread ended without an outcome", [](Job& j) { j.bTxEnd = 1; }, 0,
                "Cmm(5) Quit:1-0-1-0\r\n\r\n"},
           Case{"the thread ended with one", [](Job& j) { j.bTxEnd = 1, j.nCmdState = kMailDone; },
                1, ""},
       }) {
    SCOPED_TRACE(expected.name);
    job.nErrCode = job.bPrnCancel = job.bTxEnd = 0;
    platform.onSleep = [&] { expected.atSleep(job); };
    EXPECT_EQ(expected.result, CmdExecute(kCmdJobEnd, job));
    EXPECT_EQ(expected.log, TakeLog());
    EXPECT_EQ(kMailIdle, job.nCmdState);
  }
  job.bTxRun = 0;
  EXPECT_EQ(0, CmdExecute(kCmdJobEnd, job));
  EXPECT_EQ("", TakeLog());
}

TEST_F(CommandWait, EndsWithAThreadThatLeavesItsOwnCommandBehind) {
  job.nCmdState = kMailPending;
  platform.onSleep = [this] {
    job.bTxEnd = platform.sleeps.size() >= 2;
    if (platform.sleeps.size() == 20) job.nErrCode = 17;  // lets a wait without end go
  };
  EXPECT_EQ(0, CmdExecute(kCmdJobEnd, job));
  EXPECT_EQ(2u, platform.sleeps.size());
  EXPECT_EQ("Cmm(5) Quit:1-0-1-0\r\n\r\n", TakeLog());
  EXPECT_EQ(kMailPending, job.nCmdState);  // not the host's to take back
}

TEST_F(CommandWait, WaitsForTheThreadsOwnCommandFirst) {
  job.nTxCmd = kCmdPausePoll;
  job.cmdPkt[0] = kCmdPausePoll;
  job.nCmdState = kMailPending;
  platform.onSleep = [this] {
    if (platform.sleeps.size() == 3) CmdSettle(job, true);
    if (platform.sleeps.size() == 5) {
      EXPECT_EQ(kCmdJobEnd, job.cmdPkt[0]);
      job.nCmdState = kMailDone;
    }
  };
  EXPECT_EQ(1, CmdExecute(kCmdJobEnd, job));
  EXPECT_EQ(5u, platform.sleeps.size());
}

}  // namespace
}  // namespace qrn
