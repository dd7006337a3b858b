// Flash requests: which swaths carry one, for which head, how strong.
#include "protocol/printer_state.h"
#include "support/job_fixture.h"

namespace qrn {
namespace {

class Spit : public JobFixture {
 protected:
  Spit() {
    job.flashEvery = 3;
    job.flashParam = 127;
  }
  // Mode of a swath of this direction and size.
  int Swath1(int dir = 1, std::uint32_t bytes = 320) {
    Swath swath{};
    swath.header.spitMode = 0xEE;
    swath.header.startPos = dir == 1 ? 600 : 377;
    swath.header.endPos = dir == 1 ? 377 : 600;
    swath.dataSize = bytes;
    SpitPlan(job, swath);
    amount = swath.header.spitAmount;
    return swath.header.spitMode;
  }
  // Modes of the next few requests.
  std::vector<int> Requests(int count) {
    std::vector<int> modes;
    while (static_cast<int>(modes.size()) < count) {
      const int mode = Swath1();
      if (mode != 0) modes.push_back(mode);
    }
    return modes;
  }
  int amount = 0;
};

TEST_F(Spit, ComesWithEveryThirdSwathTowardsTheStation) {
  std::string modes;
  for (int swath = 1; swath <= 9; ++swath) {
    modes += static_cast<char>('0' + Swath1());
    EXPECT_EQ(0, Swath1(0));     // the other direction neither counts nor flashes
    EXPECT_EQ(0, Swath1(1, 0));  // nor does one that only feeds
    EXPECT_EQ(swath % 3, job.nSpitCount);
  }
  EXPECT_EQ("001001001", modes);
  EXPECT_TRUE(HasLines(TakeLog(), {"启动闪喷spit:3000-3, mode:0x1\r\n"}));
  job.flashEvery = 0;
  EXPECT_EQ(0, Swath1());
}

TEST_F(Spit, NamesTheHeadWhoseTurnItIsAlsoInTheNextJob) {
  job.twoHeadCarriage = 1;
  job.dualHead = 1;
  const int first = Requests(1)[0];
  const int other = 3 - first;
  ASSERT_TRUE(first == 1 || first == 2);
  EXPECT_EQ((std::vector<int>{other, first, other}), Requests(3));
  job.nSpitCount = 0;  // as a new job starts
  job.flashOpt = 1;
  EXPECT_EQ((std::vector<int>{0x10 + first, 0x10 + other}), Requests(2));
  job.dualHead = 0;
  job.singleHead = 1;
  EXPECT_EQ((std::vector<int>{0x12, 0x12}), Requests(2));
  job.singleHead = 0;
  EXPECT_EQ((std::vector<int>{0x11}), Requests(1));
  job.twoHeadCarriage = 0;
  EXPECT_EQ((std::vector<int>{1}), Requests(1));
}

TEST_F(Spit, StrengthIsCutToSixteenBits) {
  job.flashEvery = 1;
  for (const auto& [param, wanted] :
       std::vector<std::pair<int, int>>{{127, 3000}, {0, 0}, {65535, 65535 * 6000 / 254 % 65536}}) {
    job.flashParam = static_cast<std::uint16_t>(param);
    Swath1();
    EXPECT_EQ(wanted, amount);
  }
}

}  // namespace
}  // namespace qrn
