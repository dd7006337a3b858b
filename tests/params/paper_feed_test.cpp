// The steps of a swath must be exact to the last one.
#include <cstdint>
#include <random>

#include "params/param_fixture.h"
#include "support/test_seed.h"

namespace qrn {
namespace {

using PaperFeed = ParamFixture;

// Feed of `lines` lines by a slow route: 253.99999187200024 is a whole number of 2^-45, taken bit
// by bit.
std::uint16_t SlowSteps(std::uint32_t lines, std::uint32_t base, std::uint32_t divisor) {
  const auto factor = static_cast<unsigned __int128>(253.99999187200024 * 35184372088832.0);
  const unsigned __int128 product = factor * (static_cast<std::uint64_t>(lines) * base);
  return static_cast<std::uint16_t>((product / divisor) >> 45);
}

TEST_F(PaperFeed, IsExactForEveryInput) {
  std::mt19937_64 random(TestSeed());
  ASSERT_TRUE(Parse());
  for (int i = 0; i < 200'000; ++i) {
    const std::uint64_t bits = random();
    job.passStep = static_cast<std::uint16_t>(i % 4 == 0 ? 65535 : 1 + bits % 120);
    job.stepCalib = static_cast<std::uint16_t>(i % 5 == 0 ? 1 : 1 + (bits >> 16) % 65535);
    job.nResY = static_cast<std::uint16_t>(i % 7 == 0 ? 65535 : 360);
    const auto base = static_cast<std::uint32_t>(i % 3 == 0 ? 0xFFFFFFFF : bits >> 32);
    PutU32(GetPrinterParams().bytes + 128, base);
    ASSERT_TRUE(CalcSwathSteps(job));
    ASSERT_EQ(SlowSteps(job.passStep, base, static_cast<std::uint32_t>(job.stepCalib) * job.nResY),
              job.swathSteps)
        << job.passStep << " lines, " << base << " / (" << job.stepCalib << " x " << job.nResY
        << ")";
  }
}

TEST_F(PaperFeed, FallsShortOfAWholeStepByTheConstantsTinyBit) {
  // 72000 / (2540 x 360) x 254 is 20; the constant is just below 254, so 90 lines make 1799 steps.
  PutU32(&block[128], 72000);
  ASSERT_TRUE(Parse());
  EXPECT_EQ(1799, job.swathSteps);
  EXPECT_NEAR(20.0, job.stepsPerLine, 1e-6);
}

}  // namespace
}  // namespace qrn
