// Quirks from the command line: each kind takes its own fields, within bounds, and nothing else.
#include "sim/quirks.h"

#include <gtest/gtest.h>

namespace qrn::sim {
namespace {

TEST(ParseQuirk, TakesWhatAKindHeedsAndFillsInTheRest) {
  struct Case {
    const char* text;
    Quirk quirk;
  };
  for (const Case& expected :
       {Case{"connect-refused:count=2,status=0x54", {Quirk::Kind::kConnectRefused, 1, 2, 84, 0}},
        Case{"buffer-full", {Quirk::Kind::kBufferFull, 1, 1, 0, 0}},
        Case{"buffer-full:count=1000,at=4294967295",
             {Quirk::Kind::kBufferFull, 0xFFFFFFFF, 1000, 0, 0}},
        Case{"pause:at=010,ms=3600000", {Quirk::Kind::kPause, 10, 1, 0, 3600000}},
        Case{"cancel:at=4", {Quirk::Kind::kCancel, 4, 1, 0, 0}},
        Case{"spool-overflow:at=3,count=5", {Quirk::Kind::kSpoolOverflow, 3, 5, 0, 0}},
        Case{"unplug:at=9", {Quirk::Kind::kUnplug, 9, 1, 0, 0}},
        Case{"unplug:ms=6000", {Quirk::Kind::kUnplug, 1, 1, 0, 6000}}}) {
    SCOPED_TRACE(expected.text);
    Quirk quirk{Quirk::Kind::kCancel, 77, 77, 77, 77};  // of which nothing may stay
    std::string error;
    ASSERT_TRUE(ParseQuirk(expected.text, &quirk, &error)) << error;
    EXPECT_EQ(expected.quirk.kind, quirk.kind);
    EXPECT_EQ(expected.quirk.at, quirk.at);
    EXPECT_EQ(expected.quirk.count, quirk.count);
    EXPECT_EQ(expected.quirk.value, quirk.value);
    EXPECT_EQ(expected.quirk.durationMs, quirk.durationMs);
  }
}

TEST(ParseQuirk, SaysWhatIsWrong) {
  struct Case {
    const char* text;
    const char* why;
  };
  for (const Case& expected : {
           Case{"", "no such kind"},
           Case{"Pause:ms=1", "no such kind"},
           Case{"pause", "needs ms="},
           Case{"pause:at=3", "needs ms="},
           Case{"pause:ms=0", "ms must be a number from 1 to 3600000"},
           Case{"pause:ms=3600001", "ms must be"},
           Case{"pause:ms=2147483648", "ms must be"},
           Case{"pause:ms=18446744073709551617", "ms must be"},
           Case{"pause:ms=-1", "ms must be"},
           Case{"pause:ms=1x", "ms must be"},
           Case{"pause:ms=0x", "ms must be"},
           Case{"pause:ms=", "ms must be"},
           Case{"pause:ms=1,ms=2", "ms stands there twice"},
           Case{"pause:ms=1,", "'' is not one of at=, ms="},
           Case{"pause:", "'' is not one of"},
           Case{"pause:ms", "'ms' is not one of"},
           Case{"pause:ms=1,count=2", "'count=2' is not one of at=, ms="},
           Case{"cancel:ms=4", "'ms=4' is not one of at="},
           Case{"cancel:at=0", "at must be a number from 1"},
           Case{"unplug:ms=3600001", "ms must be a number from 0"},
           Case{"buffer-full:count=0", "count must be a number from 1 to 1000"},
           Case{"buffer-full:count=1001", "count must be"},
           Case{"connect-refused:count=1", "needs status="},
           Case{"connect-refused:status=65536", "status must be"},
       }) {
    Quirk quirk;
    std::string error;
    EXPECT_FALSE(ParseQuirk(expected.text, &quirk, &error)) << expected.text;
    EXPECT_EQ(0u, error.find("quirk '" + std::string(expected.text) + "': " + expected.why))
        << error;
  }
}

}  // namespace
}  // namespace qrn::sim
