// What the firmware holds against a host: packets, their order, and a spool that is overrun.
#include "sim/firmware/firmware.h"

#include <gtest/gtest.h>

#include <optional>

#include "base/bytes.h"
#include "support/quirk_text.h"
#include "support/wire_bytes.h"

namespace qrn::sim {
namespace {

using Words = std::vector<int>;

class FirmwareTest : public testing::Test {
 protected:
  void SwitchOn(const std::vector<const char*>& quirks, const Machine& machine = {}) {
    moments = QuirkMoments(Script(quirks));
    firmware.emplace(machine, moments);
  }
  void StartJob(const Machine& machine = {}) {
    SwitchOn({}, machine);
    Tell(Connect());
    Tell(JobCreate());
  }
  // Reply's words code, ok, sub, status; empty when there is none. It is lost on its way when the
  // host is not to hear it.
  Words Tell(const Bytes& packet, bool isData = false, bool heard = true) {
    const auto reply = firmware->Take({isData, packet}, now);
    if (!reply) return {};
    if (heard) firmware->Told(*reply);
    return {U16(reply->data()), U16(reply->data() + 2), U16(reply->data() + 4),
            U16(reply->data() + 6)};
  }
  std::uint32_t Room(std::uint32_t forBytes = 0) {
    const auto reply = firmware->Take({false, BufferQuery(forBytes)}, now);
    firmware->Told(*reply);
    return U32(reply->data() + 8);
  }
  // A swath with data as a host sends it that was told of room.
  Words Send(std::uint32_t number, const Bytes& data, bool heard = true) {
    Room(Low32(data.size()));
    EXPECT_EQ(Words{}, Tell(Swath(number, Low32(data.size()))));
    return Tell(data, true, heard);
  }
  testing::AssertionResult Violates(const std::string& text) const {
    const std::string& found = firmware->Violation();
    return found.find(text) != std::string::npos ? testing::AssertionSuccess()
                                                 : testing::AssertionFailure() << found;
  }
  std::uint32_t now = 1000;
  QuirkMoments moments{{}};
  std::optional<Firmware> firmware{std::in_place, Machine{}, moments};
};

// Each byte of each packet, changed: a violation where the value is given, none where it is free.
TEST_F(FirmwareTest, HoldsEachGivenByteOfAPacketAgainstTheHost) {
  struct Case {
    Bytes packet;
    std::vector<std::pair<std::size_t, std::size_t>> given;  // first, last
  };
  for (const Case& command : {
           Case{Connect(), {{4, 63}}},
           // Constants and zeros, passes, carriage, resolution.
           Case{JobCreate(), {{4, 6}, {8, 8}, {10, 11}, {13, 17}, {30, 31}, {34, 63}}},
           // Size of the data, direction twice, zeros, number.
           Case{Swath(1, 0), {{4, 32}, {40, 41}, {46, 55}}},
           Case{BufferQuery(0), {{4, 7}, {12, 63}}},
           Case{InJob(5), {{4, 63}}},
       }) {
    for (std::size_t at = 4; at < 64; ++at) {
      SCOPED_TRACE(testing::Message() << "command " << int{command.packet[0]} << ", byte " << at);
      SwitchOn({});
      if (command.packet[0] > 2) Tell(Connect());
      if (command.packet[0] > 3) Tell(JobCreate());
      Bytes packet = command.packet;
      packet[at] ^= 1;
      Tell(packet);
      bool given = false;
      for (const auto& [first, last] : command.given) given |= at >= first && at <= last;
      EXPECT_EQ(given, !firmware->Violation().empty()) << firmware->Violation();
    }
  }
}

TEST_F(FirmwareTest, HoldsBrokenRulesAgainstTheHost) {
  const auto with = [](Bytes packet, std::size_t at, std::uint8_t value) {
    packet[at] = value;
    return packet;
  };
  struct Case {
    Bytes packet;
    bool isData;
    const char* violation;
  };
  for (const Case& expected : {Case{Bytes(62), false, "message 3: command packet of 62 bytes"},
                               Case{Command(7), false, "unknown command 7"},
                               Case{with(Swath(1, 0), 59, 0x80), false, "bit 31 of the feed"},
                               Case{with(with(Swath(1, 0), 30, 2), 32, 2), false, "direction"},
                               Case{Swath(2, 0), false, "swath 2 behind swath 0"},
                               Case{Bytes(320), true, "without a swath command"}}) {
    StartJob();
    Tell(expected.packet, expected.isData);
    EXPECT_TRUE(Violates(expected.violation));
  }
  StartJob();
  Room(320);
  Tell(Swath(1, 320));
  Tell(Bytes(640), true);
  EXPECT_TRUE(Violates("640 bytes of swath data, announced 320"));
  StartJob();
  Room(320);
  Tell(Swath(1, 320));
  Room(320);
  EXPECT_TRUE(Violates("instead of swath data"));
  StartJob();
  Tell(Swath(1, 0), false, false);
  Tell(with(Swath(1, 0), 34, 1));
  EXPECT_TRUE(Violates("swath 1 came again, but changed"));
  Machine pha;
  pha.heads = Heads::kPha;
  StartJob(pha);
  EXPECT_TRUE(Violates("job of 4 passes"));
  SwitchOn({}, pha);
  Tell(Connect());
  Tell(with(JobCreate(), 8, 8));
  EXPECT_EQ("", firmware->Violation());
  Send(1, with(Bytes(320), 1, 1));
  EXPECT_TRUE(Violates("dots for a head that is not in use"));
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
  StartJob();
  firmware->Reopened();
  Tell(InJob(5));
  EXPECT_EQ("message 3: job end after a reopening without an answer test", firmware->Violation());
}

TEST_F(FirmwareTest, SpoolsDataDrainsThemAndRefusesWhatDoesNotFitByHalf) {
  const Bytes large(100u << 20);  // of 128 MiB
  StartJob();
  EXPECT_EQ(128u << 20, Room());
  EXPECT_EQ((Words{4, 1, 5, 0}), Send(1, large));
  EXPECT_EQ(28u << 20, Room());
  firmware->TransferFailed();  // of a buffer query: a host then sends without having been told
  EXPECT_EQ((Words{4, 0, 5, 7}), Send(2, large));
  EXPECT_EQ(28u << 20, Room());
  now += 22 * 32;  // 22 MiB at 32 KiB a millisecond
  EXPECT_EQ(50u << 20, Room());
  EXPECT_EQ((Words{4, 1, 5, 0}), Send(2, large, false));
  EXPECT_EQ(0u, Room());
  firmware->TransferFailed();
  EXPECT_EQ((Words{4, 1, 5, 0}), Send(2, large));  // not spooled twice
  now += 51 * 32;
  EXPECT_EQ(1u << 20, Room());
  now += 0x80000000;  // a day later, across the wrap
  EXPECT_EQ(128u << 20, Room());
  EXPECT_EQ("", firmware->Violation());
}

}  // namespace
}  // namespace qrn::sim
