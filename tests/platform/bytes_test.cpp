#include "platform/bytes.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace qrn {
namespace {

TEST(TruncateLow16, IsDefinedForEveryNumber) {
  struct Case {
    double value;
    std::uint16_t wanted;
  };
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  for (const Case& expected :
       {Case{0.999, 0}, Case{-0.999, 0}, Case{65535.9, 65535}, Case{65536.0, 0}, Case{-1.0, 65535},
        Case{-65537.5, 65535}, Case{4294967296.0 + 7, 7}, Case{1e300, 0}, Case{-1e300, 0},
        Case{kInfinity, 0}, Case{-kInfinity, 0}, Case{std::nan(""), 0}}) {
    EXPECT_EQ(expected.wanted, TruncateLow16(expected.value)) << expected.value;
  }
}

}  // namespace
}  // namespace qrn
