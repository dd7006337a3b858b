// Quirks that are none: a text that is accepted anyway would leave a fault out unnoticed.
#include "sim/quirks/quirks.h"

#include <gtest/gtest.h>

namespace qrn::sim {
namespace {

TEST(ParseQuirk, RefusesWhatIsNoQuirkAndSaysWhy) {
  for (const auto& [text, why] : {
           std::pair{"Pause:ms=1", "no such kind"},
           std::pair{"pause:at=3", "needs ms="},
           std::pair{"pause:ms=0", "ms must be a number from 1 to 3600000"},
           std::pair{"pause:ms=3600001", "ms must be"},
           std::pair{"pause:ms=18446744073709551617", "ms must be"},
           std::pair{"pause:ms=1x", "ms must be"},
           std::pair{"pause:ms=0x", "ms must be"},
           std::pair{"pause:ms=1,ms=2", "ms is given twice"},
           std::pair{"pause:ms=1,", "'' is not one of at=, msg=, write=, read=, byte=, t=, on=,"},
           std::pair{"pause:ms=1,count=2", "'count=2' is not one of at=, msg="},
           std::pair{"pause:ms=1,at=2,t=3", "t is a second trigger"},
           std::pair{"refuse:on=test", "on must be one of connect, create, swath, end, cancel"},
           std::pair{"cancel:at=0", "at must be a number from 1"},
           std::pair{"say:words=1.", "'1.' is not a packet of words"},
           std::pair{"say:words=only[3:1", "'only[3:1' is not a packet of words"},
           std::pair{"say:words=once:1", "'once:1' is not a packet of words"},
           std::pair{"say:words=only:48*0", "'only:48*0' is not a packet of words"},
           std::pair{"say:words=4001*0", "'4001*0' is not a packet of words"},
       }) {
    Quirk quirk;
    std::string error;
    EXPECT_FALSE(ParseQuirk(text, &quirk, &error)) << text;
    EXPECT_EQ(0u, error.find("quirk '" + std::string(text) + "': " + why)) << error;
  }
}

}  // namespace
}  // namespace qrn::sim
