// Quirks from the command line: each kind takes its own fields, within bounds, and nothing else.
#include "sim/quirks.h"

#include <gtest/gtest.h>

namespace qrn::sim {
namespace {

TEST(ParseQuirk, TakesWhatAKindHeedsAndFillsInTheRest) {
  using Kind = Quirk::Kind;
  using Moment = Quirk::Moment;
  const auto with = [](Quirk quirk, std::uint32_t Quirk::*field, std::uint32_t value) {
    quirk.*field = value;
    return quirk;
  };
  struct Case {
    const char* text;
    Quirk quirk;
  };
  for (const Case& expected : {
           Case{"connect-refused:count=2,status=0x54",
                {Kind::kConnectRefused, 1, 2, 84, 0, Moment::kStart}},
           Case{"buffer-full", {Kind::kBufferFull}},
           Case{"buffer-full:count=1000,at=4294967295", {Kind::kBufferFull, 0xFFFFFFFF, 1000}},
           Case{"pause:at=010,ms=3600000", {Kind::kPause, 10, 1, 0, 3600000}},
           Case{"pause:t=0,ms=1,update=short,via=poll",
                with({Kind::kPause, 0, 1, 0, 1, Moment::kTime, 2}, &Quirk::update, 4)},
           Case{"cancel:at=4", {Kind::kCancel, 4}},
           Case{"cancel:via=gone", {Kind::kCancel, 1, 1, 0, 0, Moment::kSwath, 3}},
           Case{"spool-overflow:at=3,count=5", {Kind::kSpoolOverflow, 3, 5}},
           Case{"unplug:at=9", {Kind::kUnplug, 9, 1, 0, 0, Moment::kMessage}},
           Case{"unplug:ms=6000", {Kind::kUnplug, 1, 1, 0, 6000, Moment::kMessage}},
           Case{"unplug:byte=70000,back=held,held-ms=5",
                with({Kind::kUnplug, 70000, 1, 0, 0, Moment::kByte, 2}, &Quirk::heldMs, 5)},
           Case{"garbage:form=restart", {Kind::kGarbage, 1, 1, 0, 0, Moment::kMessage, 7}},
           Case{"write-fails:where=data", {Kind::kWriteFails, 1, 1, 31, 0, Moment::kWrite, 2}},
       }) {
    SCOPED_TRACE(expected.text);
    Quirk quirk{Kind::kCancel, 77, 77, 77, 77};  // of which nothing may stay
    std::string error;
    ASSERT_TRUE(ParseQuirk(expected.text, &quirk, &error)) << error;
    EXPECT_EQ(expected.quirk.kind, quirk.kind);
    EXPECT_EQ(expected.quirk.moment, quirk.moment);
    for (const auto field : {&Quirk::at, &Quirk::count, &Quirk::value, &Quirk::durationMs,
                             &Quirk::which, &Quirk::update, &Quirk::heldMs}) {
      EXPECT_EQ(expected.quirk.*field, quirk.*field);
    }
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
           Case{"refuse:code=6", "code must be one of 3, 4, 5, 9, 10, 12"},
           Case{"pause:ms=2147483648", "ms must be"},
           Case{"pause:ms=18446744073709551617", "ms must be"},
           Case{"pause:ms=-1", "ms must be"},
           Case{"pause:ms=1x", "ms must be"},
           Case{"pause:ms=0x", "ms must be"},
           Case{"pause:ms=", "ms must be"},
           Case{"pause:ms=1,ms=2", "ms stands there twice"},
           Case{"pause:ms=1,", "'' is not one of at=, msg=, t=, ms=, via=, update="},
           Case{"pause:", "'' is not one of"},
           Case{"pause:ms", "'ms' is not one of"},
           Case{"pause:ms=1,count=2", "'count=2' is not one of at=, msg="},
           Case{"cancel:ms=4", "'ms=4' is not one of at="},
           Case{"pause:ms=1,at=2,t=3", "t is a second moment"},
           Case{"cancel:via=job", "via must be one of swath, buffer, poll, gone"},
           Case{"garbage:form=", "form must be one of kind, random,"},
           Case{"garbage", "needs form="},
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
