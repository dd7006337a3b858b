#include "params/ink_order.h"

#include <cstring>

#include "support/job_fixture.h"

namespace qrn {
namespace {

using InkOrder = JobFixture;

TEST_F(InkOrder, OfTwoHeadsNeedsEveryColourTwice) {
  struct Case {
    const char* name;
    std::uint8_t order[16];
    bool accepted;
    const char* log;
  };
  for (const Case& expected : {
           Case{"zeros: the default",
                {},
                true,
                "PHA:3-3, 0-0, 4-4, 7-7\r\nPHB:1-1, 5-5, 2-2, 6-6\r\n"},
           Case{"0..7 on each head",
                {0, 1, 2, 3, 4, 5, 6, 7, 0, 1, 2, 3, 4, 5, 6, 7},
                true,
                "Ink order: colors 0xFF have one row on each head, they print wrong\r\n"
                "PHA:0-1, 2-3, 4-5, 6-7\r\nPHB:0-1, 2-3, 4-5, 6-7\r\n"},
           Case{"pairs on one head each",
                {7, 3, 2, 1, 7, 2, 3, 1, 0, 4, 0, 5, 6, 6, 5, 4},
                true,
                "PHA:7-3, 2-1, 7-2, 3-1\r\nPHB:0-4, 0-5, 6-6, 5-4\r\n"},
           Case{"an entry of 8",
                {8, 3, 2, 1, 7, 2, 3, 1, 0, 4, 0, 5, 6, 6, 5, 4},
                false,
                "双喷头机型墨序不可识别\r\n"},
           Case{"colour 0 thrice",
                {0, 0, 0, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7},
                false,
                "双喷头机型墨序不可识别\r\n"},
       }) {
    SCOPED_TRACE(expected.name);
    std::uint8_t bytes[32] = {};
    std::memcpy(bytes, expected.order, sizeof expected.order);
    bytes[24] = 5;  // head 3
    job.dualHead = 1;
    job.headMask = 0x30;
    EXPECT_EQ(expected.accepted, SetInkOrder(job, bytes));
    EXPECT_EQ(expected.log, TakeLog());
    EXPECT_EQ(5, GetInkColor(job, 9, 0));
  }
}

TEST_F(InkOrder, OfOneHeadIsTakenAsItIs) {
  std::uint8_t bytes[32] = {9, 9, 9};
  for (const auto& [mask, log] : std::vector<std::pair<int, const char*>>{
           {0x10, "PHA:9-9, 9-0, 0-0, 0-0\r\n"}, {0x20, "PHB:0-0, 0-0, 0-0, 0-0\r\n"}, {0, ""}}) {
    job.singleHead = mask == 0x20 ? 1 : 0;
    job.headMask = static_cast<std::uint8_t>(mask);
    EXPECT_TRUE(SetInkOrder(job, bytes));
    EXPECT_EQ(9, job.inkOrder[0][0]);
    EXPECT_EQ(std::string("One head: colors 0xFE have no nozzle row\r\n") + log, TakeLog());
  }
}

}  // namespace
}  // namespace qrn
