// The log of a good job: its lines, their order and their bytes.
#include <gtest/gtest.h>

#include "jobs/job_runner.h"
#include "support/log_text.h"

namespace {

TEST(GoodStart, WritesItsLinesInOrderAndInTheRightBytes) {
  const LogFolder folder;
  JobPlan plan;
  plan.lineApi = true;
  plan.lines = 100;
  plan.seed = 5;
  ASSERT_TRUE(RunJob(plan).started);
  const std::string bytes = folder.Logs().at(0);
  // Worked out by hand: 1440 dpi, 192 pixels, two heads, nothing feathered.
  const char* const kLines[] = {
      "Lanternfly\r\n",
      "V2.07 (18)\r\r\n2",
      "Link Start 300-1\r\n",
      "Connect\r\n",
      "Tx Cmm 2-2(0)\r\n",
      "===============\r\r\n主板:",
      "速度: 10-46\r\n",
      "水平: MinW-0031, MaxW-108, Db-32\r\n",
      "2pheads:   PHAB,hori-1984(0),Veri-0\r\n",
      "喷头: 1-0, 0x30\r\n",
      "羽化模式:90-0,swathH:360, Pass:4\r\n",
      "图像384x100(3mmx7mm),分辨率:1440x360, MaxC:8,Bitn:2, Pass:4\r\n",
      "最大打印范围:2285 mm - 60000-0\r\n",
      "PHA:3-3, 0-0, 4-4, 7-7\r\n",
      "PHB:1-1, 5-5, 2-2, 6-6\r\n",
      "纵轴(pass2):2540-72001, 20.00, swathsteps:1800\r\n",
      // 1440 rows of 48 bytes; (36283 + 8 x 48) x 360 / 4
      "mem: malloc 8, 69120-3300030\r\n",
      "===============\r\r\n\r\n",
      "Job create\r\n",
      "WAVE: 0-0\r\n",
      "Jobinfo: 4-46,resolu:0x5C(5-12), pic:3x100(1440x360),C-0x01\r\n",
      "Tx Cmm 3-3(0)\r\n",
      "Job start\r\n",
      "Rip last swath 100-100\r\n",
      // (3628 + 0) / 9.6; (3628 + (48 + 1984) x 4) / 9.6 + 902 / 4.8
      "Create Swath1, 0, pos:377-1412 Csteps:1800, lines:90\r\n",
      "\r\nWait swath Queue sended.",
      "All swath sended!\r\n",
      "Tx Cmm 5-5(0)\r\n",
      "Rx 作业结束\r\n\r\n",
      "mem: free --\r\n",
      "jobend: ",
  };
  const std::string log = CodePageToUtf8(bytes);
  std::size_t at = 0;
  for (const char* line : kLines) {
    const std::size_t found = log.find(line, at);
    ASSERT_NE(std::string::npos, found) << line << "\nnot behind the line before it in\n" << log;
    at = found + 1;
  }
  // Nothing of the start stands twice.
  for (const char* once :
       {"Lanternfly", "Connect\r\n", "Job create\r\n", "Job start\r\n", "mem: malloc"}) {
    EXPECT_EQ(log.find(once), log.rfind(once)) << once;
  }
}

TEST(NoLogFolder, LeavesNoFile) {
  const LogFolder folder;
  std::filesystem::remove("c:/p2debug");
  JobPlan plan;
  plan.lines = 10;
  EXPECT_EQ("", RunJob(plan).violation);
  EXPECT_FALSE(std::filesystem::exists("c:/p2debug"));
}

}  // namespace
