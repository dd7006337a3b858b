// Quirks from the command line: each kind takes its own fields, within bounds, and nothing else.
#include "sim/quirks.h"

#include <gtest/gtest.h>

namespace qrn::sim {
namespace {

Quirk Parsed(const std::string& text) {
  Quirk quirk;
  quirk.count = quirk.ms = quirk.at = 77;  // of which nothing may stay
  std::string error;
  EXPECT_TRUE(ParseQuirk(text, &quirk, &error)) << error;
  return quirk;
}

TEST(ParseQuirk, TakesWhatAKindHeedsAndFillsInTheRest) {
  const Quirk refuse = Parsed("refuse:on=connect,count=2,status=0x54");
  EXPECT_EQ(Quirk::Kind::kRefuse, refuse.kind);
  EXPECT_EQ(Quirk::Moment::kStart, refuse.moment);
  EXPECT_EQ(Message::kConnect, refuse.on);
  EXPECT_EQ(2u, refuse.count);
  EXPECT_EQ(0x54, refuse.status);
  const Quirk pause = Parsed("pause:ms=3600000,at=010,update=short");
  EXPECT_EQ(Quirk::Moment::kSwath, pause.moment);
  EXPECT_EQ(10u, pause.at);
  EXPECT_EQ(1u, pause.count);
  EXPECT_EQ(3'600'000u, pause.ms);
  EXPECT_EQ(Update::kShort, pause.update);
  EXPECT_EQ(Message::kSwath, pause.on);  // the first of those that it may be
  EXPECT_EQ(Message::kPoll, Parsed("pause:ms=1,on=poll").on);
  const Quirk unplug = Parsed("unplug:t=0,back=held,held-ms=5");
  EXPECT_EQ(Quirk::Moment::kTime, unplug.moment);
  EXPECT_EQ(0u, unplug.at);
  EXPECT_EQ(0u, unplug.ms);
  EXPECT_EQ(Back::kHeld, unplug.back);
  EXPECT_EQ(5u, unplug.heldMs);
  EXPECT_EQ(Message::kAny, unplug.on);
  EXPECT_EQ(31, Parsed("write-fails:where=data").error);
  EXPECT_EQ(5, Parsed("open-fails").error);
  EXPECT_EQ(Garbage::kRestart, Parsed("garbage:form=restart").form);
  EXPECT_TRUE(Parsed("cancel:gone=1").gone);
}

TEST(ParseQuirk, TakesWordsThatAreSaidAndTheirPackets) {
  const auto said = Parsed("say:words=4.0x10.3*7/only[49]:1.2/0xF003:,first=1").words;
  ASSERT_EQ(3u, said.size());
  EXPECT_EQ(0, said[0].kind);
  EXPECT_EQ((std::vector<std::uint16_t>{4, 16, 7, 7, 7}), said[0].words);
  EXPECT_EQ(0xF008, said[1].kind);
  EXPECT_EQ(49, said[1].announced);
  EXPECT_EQ(0xF003, said[2].kind);
  EXPECT_EQ(0, said[2].announced);
  EXPECT_TRUE(said[2].words.empty());
}

TEST(ParseQuirk, SaysWhatIsWrong) {
  struct Case {
    const char* text;
    const char* why;
  };
  for (const Case& expected : {
           Case{"", "no such kind"},
           Case{"Pause:ms=1", "no such kind"},
           Case{"pause:at=3", "needs ms="},
           Case{"refuse:status=1", "needs on="},
           Case{"pause:ms=0", "ms must be a number from 1 to 3600000"},
           Case{"pause:ms=3600001", "ms must be"},
           Case{"pause:ms=18446744073709551617", "ms must be"},
           Case{"pause:ms=-1", "ms must be"},
           Case{"pause:ms=1x", "ms must be"},
           Case{"pause:ms=0x", "ms must be"},
           Case{"pause:ms=", "ms must be"},
           Case{"pause:ms=1,ms=2", "ms stands there twice"},
           Case{"pause:ms=1,", "'' is not one of at=, msg=, write=, read=, byte=, t=, on=, ms="},
           Case{"pause:", "'' is not one of"},
           Case{"pause:ms", "'ms' is not one of"},
           Case{"pause:ms=1,count=2", "'count=2' is not one of at=, msg="},
           Case{"pause:ms=1,at=2,t=3", "t is a second moment"},
           Case{"cancel:on=connect", "on must be one of swath, query, poll"},
           Case{"refuse:on=test", "on must be one of connect, create, swath, end, cancel, poll"},
           Case{"garbage:form=", "form must be one of kind, random,"},
           Case{"cancel:at=0", "at must be a number from 1"},
           Case{"buffer-full:count=1001", "count must be a number from 1 to 1000"},
           Case{"refuse:on=end,status=65536", "status must be"},
           Case{"say:words=1.", "'1.' is no packet of words"},
           Case{"say:words=only[3:1", "'only[3:1' is no packet of words"},
           Case{"say:words=once:1", "'once:1' is no packet of words"},
           Case{"say:words=only:48*0", "'only:48*0' is no packet of words"},
           Case{"say:words=4001*0", "'4001*0' is no packet of words"},
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
