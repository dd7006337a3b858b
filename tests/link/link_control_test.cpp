#include "link/link_control.h"

#include "link/usb_device.h"
#include "support/job_fixture.h"

namespace qrn {
namespace {

class LinkControl : public JobFixture {
 protected:
  LinkControl() {
    SetUsbIds(job);
    platform.paths = {"pid_a71d vid_5e3c"};
  }
  using Calls = std::vector<std::string>;
};

TEST_F(LinkControl, StartsTheThreadOnAnOpenDevice) {
  EXPECT_EQ(1, LinkStart(job));
  EXPECT_EQ(1, job.bTxRun);
  EXPECT_EQ(0, job.bTxEnd);
  EXPECT_EQ(1, job.bLinkInfoOk);
  EXPECT_EQ((Calls{"raise"}), platform.threadCalls);
  EXPECT_EQ("Link Start 300-1\r\n\r\n", TakeLog());
}

TEST_F(LinkControl, ReportsWhatItCannotStart) {
  platform.threadStarts = false;
  EXPECT_EQ(0, LinkStart(job));
  EXPECT_EQ("Create Tx thread fail!!!\r\r\n\r\n", TakeLog());
  EXPECT_EQ(1u, platform.openCount);  // until the stop
  EXPECT_EQ(1, job.bTxEnd);
  EXPECT_EQ(0, job.nErrCode);
  LinkStop(job);
  EXPECT_EQ(0u, platform.openCount);

  platform.paths.clear();
  EXPECT_EQ(0, LinkStart(job));
  EXPECT_EQ(0, job.bTxRun);
  EXPECT_EQ(1, job.bTxEnd);
  EXPECT_EQ(31, job.nErrCode);
  EXPECT_TRUE(HasLines(TakeLog(), {"打印机设备未连接",
                                   "无法开启目标设备，请确认连线已经正确或驱动已经安装成功 3-0-1",
                                   "Error: Device link fail!"}));
}

TEST_F(LinkControl, StopsInEachStateOfTheThread) {
  struct Case {
    const char* name;
    std::uint8_t run;
    std::size_t endsAtSleep;  // of LinkStop; 0 = has ended already
    Calls calls;
    std::size_t sleeps;
    const char* log;
  };
  for (const Case& expected : {
           Case{"ended by itself", 0, 0, {"raise", "release"}, 0, ""},
           Case{"ends in the first second", 1, 1, {"raise", "release"}, 1, ""},
           Case{"ends in the polls", 1, 4, {"raise", "release"}, 4, "Tx task end delay:300ms\r\n"},
           Case{"ends in the last poll",
                1,
                203,
                {"raise", "release"},
                203,
                "Tx task end delay:20200ms\r\n"},
           Case{"never ends",
                1,
                999,
                {"raise", "terminate", "release"},
                203,
                "\r\n强行退出TX线程,delay:20200ms\r\nTx task end delay:20200ms\r\n"},
       }) {
    SCOPED_TRACE(expected.name);
    platform.threadCalls.clear();
    ASSERT_EQ(1, LinkStart(job));
    TakeLog();
    job.bTxRun = expected.run;
    job.bTxEnd = expected.endsAtSleep == 0;
    platform.sleeps.clear();
    platform.onSleep = [&] { job.bTxEnd = platform.sleeps.size() >= expected.endsAtSleep; };
    LinkStop(job);
    EXPECT_EQ(expected.calls, platform.threadCalls);
    EXPECT_EQ(expected.sleeps, platform.sleeps.size());
    EXPECT_EQ(expected.log, TakeLog());
    EXPECT_EQ(0u, job.hDevice);
    EXPECT_EQ(0u, job.hTxThread);
    EXPECT_EQ(0, job.bTxRun);
    EXPECT_EQ(1, job.bTxEnd);
  }
}

}  // namespace
}  // namespace qrn
