// The firmware's answers, and what it holds against the host.
#include "sim/firmware.h"

#include <gtest/gtest.h>

#include <optional>

#include "platform/bytes.h"
#include "support/quirk_text.h"
#include "support/wire_bytes.h"

namespace qrn::sim {
namespace {

using Words = std::vector<int>;

class FirmwareTest : public testing::Test {
 protected:
  // Reply's words code, ok, sub, status; empty when there is none. It is lost on its way when the
  // host is not to hear it.
  Words Tell(const Bytes& packet, bool isData = false, bool heard = true) {
    const auto reply = firmware->Take({isData, packet}, now);
    if (!reply) return {};
    if (heard) firmware->Told(*reply);
    return {U16(reply->data()), U16(reply->data() + 2), U16(reply->data() + 4),
            U16(reply->data() + 6)};
  }
  void SwitchOn(const std::vector<const char*>& quirks) {
    moments = QuirkMoments(Script(quirks));
    firmware.emplace(Machine{}, moments);
  }
  void Restart(const std::vector<const char*>& quirks) {
    SwitchOn(quirks);
    Tell(Connect());
    Tell(JobCreate());
  }
  std::uint32_t Room(std::uint32_t forBytes = 0) {
    const auto reply = firmware->Take({false, BufferQuery(forBytes)}, now);
    firmware->Told(*reply);
    return U32(reply->data() + 8);
  }
  // A swath with data as a host sends it that was told of room.
  Words Send(std::uint32_t number, std::uint32_t bytes, bool heard = true) {
    Room(bytes);
    EXPECT_EQ(Words{}, Tell(Swath(number, bytes)));
    return Tell(Bytes(bytes), true, heard);
  }
  std::uint32_t now = 1000;
  QuirkMoments moments{{}};
  std::optional<Firmware> firmware{std::in_place, Machine{}, moments};
};

TEST_F(FirmwareTest, AnswersAJobFromConnectToEnd) {
  const auto connect = firmware->Take({false, Connect()}, now);
  ASSERT_EQ(216u, connect->size());
  EXPECT_EQ(0x5213, U16(connect->data() + 8 + 204));
  EXPECT_EQ((Words{3, 1, 5, 0}), Tell(JobCreate()));
  EXPECT_EQ((Words{4, 1, 5, 0}), Send(1, 320));
  EXPECT_EQ((Words{4, 1, 5, 0}), Tell(Swath(2, 0), false, false));
  firmware->Reopened();
  EXPECT_EQ((Words{10, 1, 5, 0}), Tell(Command(10)));  // the answer test
  EXPECT_EQ((Words{4, 1, 5, 0}), Tell(Swath(2, 0)));   // taken, not printed twice
  EXPECT_EQ(2u, firmware->Swaths());
  EXPECT_EQ(1u, firmware->FeedOnlySwaths());
  EXPECT_EQ((Words{5, 1, 5, 0}), Tell(InJob(5)));
  EXPECT_EQ(1u, firmware->JobsEnded());
  EXPECT_EQ("", firmware->Violation());
}

TEST_F(FirmwareTest, HoldsBrokenRulesAgainstTheHost) {
  struct Case {
    const char* name;
    Bytes packet;
    bool isData;
    const char* place;
  };
  const auto with = [](Bytes packet, std::size_t at, std::uint8_t value) {
    packet[at] = value;
    return packet;
  };
  for (const Case& expected : {
           Case{"short packet", Bytes(62), false, "of 62 bytes"},
           Case{"unknown code", Command(7), false, "unknown command 7"},
           Case{"connect body", with(Connect(), 20, 1), false, "connect body"},
           Case{"bytes behind the body", with(Connect(), 63, 1), false, "bytes 36..63"},
           Case{"job create", with(JobCreate(), 10, 24), false, "job create body"},
           Case{"buffer query", with(Command(12), 5, 1), false, "buffer query"},
           Case{"swath's zeros", with(Swath(1, 0), 13, 1), false, "zero bytes"},
           Case{"header's zeros", with(Swath(1, 0), 28, 1), false, "zero bytes"},
           Case{"two directions", with(Swath(1, 0), 30, 1), false, "direction"},
           Case{"data size", Swath(1, 100), false, "data size"},
           Case{"feed bit 31", with(Swath(1, 0), 59, 0x80), false, "bit 31"},
           Case{"number left out", Swath(2, 0), false, "swath 2 behind swath 0"},
           Case{"data without a swath", Bytes(320), true, "without a swath command"},
           Case{"another body", Command(5), false, "without the job create's body"},
       }) {
    SCOPED_TRACE(expected.name);
    Restart({});
    Tell(expected.packet, expected.isData);
    EXPECT_NE(std::string::npos, firmware->Violation().find(expected.place))
        << firmware->Violation();
    EXPECT_EQ(0u, firmware->Violation().find("message 3: "));
  }
  Restart({});
  Room(320);
  Tell(Swath(1, 320));
  Tell(Bytes(640), true);
  EXPECT_NE(std::string::npos,
            firmware->Violation().find("640 bytes of swath data, announced 320"));
  Restart({});
  Room(320);
  Tell(Swath(1, 320));
  Room(320);
  EXPECT_NE(std::string::npos, firmware->Violation().find("instead of swath data"));
  Restart({});
  Tell(Swath(1, 0), false, false);
  Tell(with(Swath(1, 0), 34, 1));
  EXPECT_NE(std::string::npos, firmware->Violation().find("swath 1 came again, but changed"));
}

TEST_F(FirmwareTest, HoldsMessagesOutOfOrderAgainstTheHost) {
  // Beside command codes: the answer test, a swath with data, the last swath again.
  constexpr int kTest = 0, kData = 104, kAgain = 204;
  struct Case {
    std::vector<const char*> quirks;
    std::vector<int> messages;
    const char* violation;
  };
  for (const Case& expected : {
           Case{{}, {5}, "message 1: job end without a job"},
           Case{{}, {3}, "message 1: job create without a connect"},
           Case{{"refuse:on=connect,status=3"}, {2, 3}, "message 2: job create without a connect"},
           Case{{}, {2, 12}, "message 2: buffer query without a job"},
           Case{{}, {2, 3, 3}, "message 3: second job create"},
           Case{{}, {2, 3, 10}, "message 3: pause poll of a job that was not reported as paused"},
           Case{{"pause:ms=9"}, {2, 3, 4, 10, 10, 10}, "message 6: pause poll of a job that"},
           Case{{"pause:ms=9"}, {2, 3, 4, 10, 2, 3, 10}, "message 7: pause poll of a job that"},
           Case{{}, {2, 3, 9}, "message 3: cancel of a job that was not reported as cancelled"},
           Case{{"cancel"}, {2, 3, 4, 9, 9, 5, 10}, "message 7: pause poll after the job's end"},
           Case{{}, {2, 3, kData}, "message 3: swath 1 without room for its data"},
           Case{{"buffer-full"}, {2, 3, 12, kData}, "message 4: swath 1 without room for its data"},
           Case{{}, {2, 3, 4, kAgain}, "message 4: swath 1 again, which was reported as taken"},
           Case{{}, {2, 3, 5, 4}, "message 4: swath after the job's end"},
           Case{{}, {2, 3, kTest}, "message 3: answer test of a link that was not reopened"},
       }) {
    SCOPED_TRACE(expected.violation);
    SwitchOn(expected.quirks);
    std::uint32_t swaths = 0;
    for (const int message : expected.messages) {
      EXPECT_EQ("", firmware->Violation());
      now += 5;
      Tell(message == 2        ? Connect()
           : message == 4      ? Swath(++swaths, 0)
           : message == kAgain ? Swath(swaths, 0)
           : message == kData  ? Swath(++swaths, 320)
           : message == 12     ? BufferQuery(320)
           : message == kTest  ? Command(10)
                               : InJob(static_cast<std::uint8_t>(message)));
    }
    EXPECT_EQ(0u, firmware->Violation().find(expected.violation)) << firmware->Violation();
  }
  Restart({});
  firmware->Reopened();
  Tell(InJob(5));
  EXPECT_EQ("message 3: job end after a reopening without an answer test", firmware->Violation());
}

TEST_F(FirmwareTest, SpoolsDataDrainsThemAndRefusesWhatDoesNotFitByHalf) {
  constexpr std::uint32_t kLarge = 100u << 20;  // of 128 MiB
  Restart({});
  EXPECT_EQ(128u << 20, Room());
  EXPECT_EQ((Words{4, 1, 5, 0}), Send(1, kLarge));
  EXPECT_EQ(28u << 20, Room());
  firmware->TransferFailed();  // of a buffer query: a host then sends without having been told
  EXPECT_EQ((Words{4, 0, 5, 7}), Send(2, kLarge));
  EXPECT_EQ(28u << 20, Room());
  now += 22 * 32;  // 22 MiB at 32 KiB a millisecond
  EXPECT_EQ(50u << 20, Room());
  EXPECT_EQ((Words{4, 1, 5, 0}), Send(2, kLarge, false));
  EXPECT_EQ(0u, Room());
  firmware->TransferFailed();
  EXPECT_EQ((Words{4, 1, 5, 0}), Send(2, kLarge));  // not spooled twice
  now += 51 * 32;
  EXPECT_EQ(1u << 20, Room());
  now += 0x80000000;  // a day later, across the wrap
  EXPECT_EQ(128u << 20, Room());
  EXPECT_EQ("", firmware->Violation());
}

TEST_F(FirmwareTest, DoesWhatItsQuirksSay) {
  SwitchOn({"refuse:on=connect,count=2,status=0x54"});
  EXPECT_EQ((Words{2, 0, 0, 0x54}), Tell(Connect()));
  EXPECT_EQ((Words{2, 0, 0, 0x54}), Tell(Connect()));
  EXPECT_EQ((Words{2, 1, 0, 0}), Tell(Connect()));

  Restart({"buffer-full:at=2"});
  EXPECT_NE(0u, Room());
  Tell(Swath(1, 0));
  EXPECT_EQ(0u, Room());
  EXPECT_NE(0u, Room());

  Restart({"refuse:on=swath,status=7,at=1"});
  EXPECT_EQ((Words{4, 0, 5, 7}), Tell(Swath(1, 0)));
  EXPECT_EQ((Words{4, 1, 5, 0}), Tell(Swath(1, 0)));

  Restart({"pause:at=1,ms=300"});
  EXPECT_EQ((Words{4, 1, 3, 0}), Tell(Swath(1, 0)));
  EXPECT_EQ(0u, Room());
  now += 299;
  EXPECT_EQ((Words{10, 1, 3, 0}), Tell(InJob(10)));
  now += 1;
  EXPECT_EQ((Words{10, 1, 4, 0}), Tell(InJob(10), false, false));
  EXPECT_EQ((Words{10, 1, 5, 0}), Tell(InJob(10)));

  Restart({"cancel:at=1"});
  EXPECT_EQ((Words{4, 1, 2, 0}), Tell(Swath(1, 0)));
  EXPECT_EQ((Words{9, 1, 2, 0}), Tell(InJob(9)));

  Restart({"cancel:at=2,on=query"});
  Tell(Swath(1, 0));
  Tell(Connect());
  Tell(JobCreate());
  EXPECT_EQ((Words{12, 1, 5, 0}), Tell(BufferQuery(0)));  // each job counts its own swaths
  EXPECT_EQ("", firmware->Violation());
}

TEST_F(FirmwareTest, RefusesMessagesOfACodeAndTakesThemWhenTheyComeAgain) {
  Restart({"refuse:on=swath,status=9,at=2", "refuse:on=end,count=2", "refuse:on=query,msg=6"});
  EXPECT_EQ((Words{4, 1, 5, 0}), Tell(Swath(1, 0)));
  EXPECT_EQ((Words{12, 1, 5, 0}), Tell(BufferQuery(320)));
  EXPECT_EQ((Words{}), Tell(Swath(2, 320)));
  EXPECT_EQ((Words{4, 0, 5, 9}), Tell(Bytes(320), true));
  EXPECT_EQ(1u, firmware->Swaths());
  EXPECT_EQ((Words{12, 0, 5, 0}), Tell(Command(12)));
  EXPECT_EQ((Words{4, 1, 5, 0}), Tell(Swath(2, 0)));
  EXPECT_EQ(2u, firmware->Swaths());
  EXPECT_EQ((Words{5, 0, 5, 0}), Tell(InJob(5)));
  EXPECT_EQ((Words{5, 0, 5, 0}), Tell(InJob(5)));
  EXPECT_EQ(0u, firmware->JobsEnded());
  EXPECT_EQ((Words{5, 1, 5, 0}), Tell(InJob(5)));
  EXPECT_EQ("", firmware->Violation());
}

// A pause or cancel shows in the reply that it names, and no sooner.
TEST_F(FirmwareTest, ReportsPauseAndCancelWhereTheyAreToShow) {
  constexpr std::uint8_t kAsked[] = {12, 10, 4};
  struct Case {
    const char* quirk;
    int state;  // there, and in every reply behind it
    std::uint8_t shownBy;
  };
  for (const Case& expected :
       {Case{"pause:ms=5,on=swath", 3, 4}, Case{"pause:ms=5,on=query", 3, 12},
        Case{"pause:ms=5,on=poll", 3, 10}, Case{"cancel:on=swath", 2, 4},
        Case{"cancel:gone=1", 0, 4}, Case{"cancel:on=query", 2, 12},
        Case{"cancel:on=poll", 2, 10}}) {
    SCOPED_TRACE(expected.quirk);
    Restart({expected.quirk});
    const auto ask = [this](std::uint8_t code) {
      return Tell(code == 4 ? Swath(1, 0) : code == 10 ? InJob(10) : Command(12))[2];
    };
    for (const std::uint8_t other : kAsked) {
      EXPECT_TRUE(other == expected.shownBy || ask(other) == 5) << int{other};
    }
    EXPECT_EQ(expected.state, ask(expected.shownBy));
    for (const std::uint8_t code : kAsked) EXPECT_EQ(expected.state, ask(code));
  }
}

TEST_F(FirmwareTest, SendsTheParameterUpdateWithThePause) {
  const auto block = ParameterBlock(Machine{});
  const Bytes section(block.begin() + 8, block.begin() + 78);
  struct Case {
    const char* quirk;
    std::size_t bytes;
    std::vector<std::pair<std::size_t, int>> changed;  // place in the block, by how much
  };
  for (const Case& expected :
       {Case{"pause:ms=5,update=none", 16, {}}, Case{"pause:ms=5,update=same", 84, {}},
        Case{"pause:ms=5,update=db", 84, {{41, 1}, {42, 1}, {43, 1}, {44, 1}}},
        Case{"pause:ms=5,update=calib", 84, {{72, 1}}}, Case{"pause:ms=5,update=short", 24, {}}}) {
    SCOPED_TRACE(expected.quirk);
    Restart({expected.quirk});
    const auto reply = firmware->Take({false, Swath(1, 0)}, now);
    ASSERT_EQ(expected.bytes, reply->size());
    if (expected.bytes == 16) continue;
    EXPECT_EQ(0x1122, U16(reply->data() + 12));
    Bytes update = section;
    for (const auto& [at, by] : expected.changed) update[at - 8] = Low8(update[at - 8] + by);
    EXPECT_TRUE(std::equal(reply->begin() + 14, reply->end(), update.begin()));
    now += 5;
    EXPECT_EQ(16u, firmware->Take({false, InJob(10)}, now)->size());  // resumed
  }
}

TEST_F(FirmwareTest, ReportsABlockWithADefectAndThenAWholeOne) {
  struct Case {
    const char* quirk;
    std::size_t at;  // in the block
    int value;
  };
  for (const Case& expected :
       {Case{"block:defect=signature", 204, 0x12}, Case{"block:defect=head", 91, 0x21},
        Case{"block:defect=resolution", 41, 255}, Case{"block:defect=width", 193, 0},
        Case{"block:defect=selector", 8, 5}, Case{"block:defect=calib", 77, 0},
        Case{"block:defect=ink", 9, 8}, Case{"block:defect=feather", 109, 101}}) {
    SCOPED_TRACE(expected.quirk);
    SwitchOn({expected.quirk});
    const auto spoilt = firmware->Take({false, Connect()}, now);
    ASSERT_EQ(216u, spoilt->size());
    EXPECT_EQ(expected.value, (*spoilt)[8 + expected.at]);
    const auto whole = firmware->Take({false, Connect()}, now);
    EXPECT_NE(expected.value, (*whole)[8 + expected.at]);
  }
  SwitchOn({"block:defect=short"});
  EXPECT_EQ(8u + 104u, firmware->Take({false, Connect()}, now)->size());
}

}  // namespace
}  // namespace qrn::sim
