// Whole jobs on a printer with a quirk or a few: none of them may cost a cell on the paper unless
// it ends the job. The first pause poll of a job comes at once only when no other job of the
// process has polled within a second and a half, and the clock of each starts anew: so cases that
// wait for a poll start late, each at a time of its own.
#include <gtest/gtest.h>

#include <ostream>

#include "jobs/job_runner.h"
#include "support/log_text.h"
#include "support/quirk_text.h"
#include "support/test_seed.h"

namespace {

enum Outcome { kNotStarted, kBroken, kWhole };

struct QuirkCase {
  std::vector<const char*> quirks;
  Outcome outcome;
  std::size_t boxes;             // shown to the user
  std::uint32_t elapsedMsMin;    // virtual time that it costs at least
  std::vector<const char*> log;  // pieces that stand in the log in this order
};

std::ostream& operator<<(std::ostream& out, const QuirkCase& printed) {
  for (const char* quirk : printed.quirks) out << quirk << ' ';
  return out;
}

class Quirks : public testing::TestWithParam<QuirkCase> {};

TEST_P(Quirks, HaveTheirOutcome) {
  const LogFolder folder;
  JobPlan plan;
  plan.lineApi = true;
  plan.seed = TestSeed();
  plan.quirks = Script(GetParam().quirks);
  const JobOutcome job = RunJob(plan);
  EXPECT_EQ("", job.violation);
  EXPECT_EQ(GetParam().outcome != kNotStarted, job.started);
  EXPECT_EQ(GetParam().outcome == kWhole,
            job.stats.jobsEnded == 1 && job.comparison.differingCells == 0)
      << job.comparison.firstDifference;
  EXPECT_EQ(GetParam().boxes, job.boxes.size());
  EXPECT_GE(job.elapsedMs, GetParam().elapsedMsMin);
  const std::string log = CodePageToUtf8(folder.Logs().at(0));
  std::size_t at = 0;
  for (const char* piece : GetParam().log) {
    const std::size_t found = log.find(piece, at);
    ASSERT_NE(std::string::npos, found) << piece << " in\n" << log;
    at = found + 1;
  }
}

INSTANTIATE_TEST_SUITE_P(
    OfReplies, Quirks,
    testing::Values(
        QuirkCase{{"refuse:on=create,count=2", "refuse:on=end,count=2"},
                  kWhole,
                  0,
                  0,
                  {"Tx Cmm 3-3(2)", "Tx Cmm 5-5(1)", "Rx 作业结束", "Tx Cmm 5-5(2)"}},
        QuirkCase{{"refuse:on=swath,at=2,status=9,count=2", "refuse:on=query,msg=8"},
                  kWhole,
                  0,
                  0,
                  {"Tx Swath2(1)", "Tx Swath2(2)", "Swath002 sended"}},
        QuirkCase{{"late:msg=1,ms=100000", "pause:at=2,ms=7000", "refuse:on=poll,count=2"},
                  kWhole,
                  0,
                  4000,
                  {"Rx JOBS_Pause", "Tx Cmm 10-A(1)", "Tx Cmm 10-A(2)", "Pause-0, Cancel-0"}},
        QuirkCase{{"other-code:msg=1,count=3", "other-code:msg=2", "other-code:at=2,count=9"},
                  kWhole,
                  0,
                  0,
                  {"Rx 作业结束"}},
        QuirkCase{{"late:msg=1,ms=9500"}, kWhole, 0, 9500, {"Cmm2 reply Waitting", "hold:95"}},
        QuirkCase{{"silence:at=2,ms=20000"}, kWhole, 0, 20000, {"hold:"}},
        QuirkCase{{"silence:at=3", "unplug:t=8000,ms=100"},
                  kWhole,
                  0,
                  8000,
                  {"Rx error:1167", "连接1成功!", "Rx 作业结束"}},
        QuirkCase{{"garbage:msg=1,form=kind", "garbage:at=2,form=words,count=5"},
                  kWhole,
                  0,
                  0,
                  {"usb接收到不可识别数据包:4", "Job start", "usb接收到不可识别数据包:4"}},
        QuirkCase{{"garbage:form=random,count=1000"}, kWhole, 0, 0, {"Rx 作业结束"}},
        QuirkCase{{"garbage:form=short,count=2", "garbage:form=empty,msg=6,count=4"},
                  kWhole,
                  0,
                  0,
                  {"Tx Cmm 2-2(1)", "Job start", "Rx 作业结束"}},
        QuirkCase{{"garbage:form=split,count=1000"}, kWhole, 0, 0, {"Rx 作业结束"}},
        QuirkCase{{"garbage:form=overlong,count=1000"}, kWhole, 0, 0, {"REC溢出", "Job start"}},
        QuirkCase{{"garbage:form=restart,count=1000"}, kWhole, 0, 0, {"Rx 作业结束"}}));

INSTANTIATE_TEST_SUITE_P(
    OfTheOperator, Quirks,
    testing::Values(
        QuirkCase{{"pause:at=2,ms=3000,update=calib", "pause:at=5,ms=3000,on=query"},
                  kWhole,
                  0,
                  2500,
                  {"Rx JOBS_Pause, size:84", "Update fw para:32,2541", "CMM1: Pause-0"}},
        QuirkCase{{"pause:at=2,ms=3000,update=short"}, kWhole, 0, 2000, {"Rx JOBS_Pause, size:24"}},
        QuirkCase{
            {"late:msg=1,ms=200000", "pause:at=2,ms=1000,update=same", "pause:ms=9000,on=poll"},
            kWhole,
            0,
            9000,
            {"Pause-1", "Tx Cmm 10-A(0)", "Rx JOBS_Pause", "Pause-0"}},
        QuirkCase{{"cancel:at=3,gone=1"}, kBroken, 0, 0, {"Rx op取消作业", "Task end(3)!"}},
        QuirkCase{{"cancel:at=3,on=query"},
                  kBroken,
                  0,
                  0,
                  {"CMM1: Pause-1, Cancel-1", "Tx swathing... bur quit!", "Task end(3)!"}},
        QuirkCase{{"late:msg=1,ms=300000", "pause:at=3,ms=60000", "cancel:on=poll"},
                  kBroken,
                  0,
                  2000,
                  {"Rx JOBS_Pause", "Tx Cmm 10-A(0)", "Rx JOBS_CANCEL(1)", "Task end(3)!"}}));

INSTANTIATE_TEST_SUITE_P(
    OfTheLink, Quirks,
    testing::Values(
        QuirkCase{{"write-fails:write=1,error=995", "write-fails:msg=5,where=data"},
                  kWhole,
                  0,
                  400,
                  {"Tx error:995", "send(CMM) fail!", "连接1成功!", "Tx error:31",
                   "send(DATA) fail!", "连接1成功!"}},
        QuirkCase{{"read-fails:msg=6,error=121", "say:on=test,first=1,words=8*0/8*0/8*0"},
                  kWhole,
                  0,
                  0,
                  {"Rx error:121"}},
        QuirkCase{{"write-fails:msg=5,count=1000"}, kBroken, 2, 30000, {"重新连接失败!"}},
        QuirkCase{{"unplug:byte=30000,ms=2000,back=other", "unplug:byte=8192000,ms=100"},
                  kWhole,
                  0,
                  4000,
                  {"第1连接失败(", "连接1成功!", "连接1成功!"}},
        QuirkCase{{"unplug:read=9,ms=2000,back=held,held-ms=9000"},
                  kWhole,
                  0,
                  15000,
                  {"第3连接失败(error code:5)", "连接1成功!"}},
        QuirkCase{
            {"unplug:write=6,ms=3000,back=held"}, kBroken, 2, 30000, {"连接失败", "重新连接失败!"}},
        QuirkCase{
            {"second-printer:first=1,held=1", "path:case=mixed,long=1", "unplug:msg=9,ms=100"},
            kWhole,
            0,
            0,
            {"连接1成功!"}}));

INSTANTIATE_TEST_SUITE_P(
    OfTheBlock, Quirks,
    testing::Values(
        QuirkCase{{"block:defect=signature"}, kNotStarted, 1, 0, {"不可识别打印机参数5212"}},
        QuirkCase{{"block:defect=short"}, kNotStarted, 1, 0, {"不可识别打印机参数0"}},
        QuirkCase{{"block:defect=head"}, kNotStarted, 1, 0, {"图像支持喷头模式异常"}},
        QuirkCase{{"block:defect=resolution"}, kBroken, 0, 0, {"Db-255", "Job start"}},
        QuirkCase{{"block:defect=width"}, kNotStarted, 1, 0, {"打印图像超出机器最大宽度 0"}},
        QuirkCase{{"block:defect=selector"}, kNotStarted, 1, 0, {"步进计量输入值异常:360-0"}},
        QuirkCase{{"block:defect=calib"}, kNotStarted, 1, 0, {"步进计量输入值异常:360-0"}},
        QuirkCase{{"block:defect=ink"}, kNotStarted, 1, 0, {"双喷头机型墨序不可识别"}},
        QuirkCase{{"block:defect=feather"}, kWhole, 0, 0, {"Job start"}}));

}  // namespace
