// What the firmware holds against a host: packets, their order, and a spool that is overrun.
#include "sim/firmware/firmware.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <sstream>
#include <string>

#include "base/bytes.h"
#include "sim/virtual_printer.h"
#include "support/quirk_text.h"
#include "support/wire_bytes.h"

namespace qrn::sim {
namespace {

using Words = std::vector<int>;

Bytes With(Bytes packet, std::size_t at, std::uint8_t value) {
  packet[at] = value;
  return packet;
}

// What a host sends: a command packet, or the data of a swath. It hears the reply, or the reply is
// lost on its way.
struct Sent {
  Bytes bytes;
  bool isData = false, heard = true;
};
// clang-format off
const std::map<std::string, Sent> kSent = {
    {"connect", {Connect()}}, {"create", {JobCreate()}}, {"end", {InJob(5)}},
    {"cancel", {InJob(9)}}, {"poll", {InJob(10)}}, {"test", {Command(10)}},
    {"query", {BufferQuery(320)}}, {"feed", {Swath(1, 0)}}, {"feed-2", {Swath(2, 0)}},
    {"swath", {Swath(1, 320)}}, {"data", {Bytes(320), true}},
    // The wrong ones.
    {"short", {Bytes(62)}}, {"unknown", {Command(7)}},
    {"create-8", {With(JobCreate(), 8, 8)}},
    {"feed-unheard", {Swath(1, 0), false, false}},
    {"feed-other", {With(Swath(1, 0), 34, 1)}},
    {"feed-askew", {With(With(Swath(1, 0), 30, 2), 32, 2)}},
    {"feed-bit-31", {With(Swath(1, 0), 59, 0x80)}},
    {"data-640", {Bytes(640), true}}, {"data-phb", {With(Bytes(320), 1, 1), true}},
};
// clang-format on

class FirmwareTest : public testing::Test {
 protected:
  void SwitchOn(const char* quirk, const Machine& machine) {
    triggers = QuirkTriggers(*quirk != '\0' ? Script({quirk}) : QuirkScript());
    firmware.emplace(machine, triggers);
  }
  // The reply's words code, ok, sub, status; empty when there is none.
  Words Tell(const Sent& sent) {
    const auto reply = firmware->Take({sent.isData, sent.bytes}, now);
    if (!reply) return {};
    if (sent.heard) firmware->ReplyRead(*reply);
    return {U16(reply->data()), U16(reply->data() + 2), U16(reply->data() + 4),
            U16(reply->data() + 6)};
  }
  // Messages by name, 5 ms apart; "open": the device is opened anew. None but the last may break a
  // rule.
  void Play(const std::string& messages) {
    std::istringstream names(messages);
    for (std::string name; names >> name;) {
      EXPECT_EQ("", firmware->Violation());
      now += 5;
      if (name == "open") {
        firmware->Reopened();
      } else {
        Tell(kSent.at(name));
      }
    }
  }
  std::uint32_t Room(std::uint32_t forBytes = 0) {
    const auto reply = firmware->Take({false, BufferQuery(forBytes)}, now);
    firmware->ReplyRead(*reply);
    return U32(reply->data() + 8);
  }
  // A swath with data, as a host sends it that knows of room.
  Words Send(std::uint32_t number, std::uint32_t bytes, bool heard = true) {
    Room(bytes);
    EXPECT_EQ(Words{}, Tell({Swath(number, bytes)}));
    return Tell({Bytes(bytes), true, heard});
  }

  std::uint32_t now = 1000;
  QuirkTriggers triggers{{}};
  std::optional<Firmware> firmware{std::in_place, Machine{}, triggers};
};

// Each byte of each packet, changed: a violation where the value is given, none where it is free.
TEST_F(FirmwareTest, HoldsEachGivenByteOfAPacketAgainstTheHost) {
  struct Case {
    const char* before;
    Bytes packet;
    std::vector<std::pair<std::size_t, std::size_t>> given;  // first, last
  };
  for (const Case& command : {
           Case{"", Connect(), {{4, 63}}},
           // Constants and zeros, passes, carriage, resolution.
           Case{"connect", JobCreate(), {{4, 6}, {8, 8}, {10, 11}, {13, 17}, {30, 31}, {34, 63}}},
           // Size of the data, direction twice, zeros, number.
           Case{"connect create", Swath(1, 0), {{4, 32}, {40, 41}, {46, 55}}},
           Case{"connect create", BufferQuery(0), {{4, 7}, {12, 63}}},
           Case{"connect create", InJob(5), {{4, 63}}},
       }) {
    for (std::size_t at = 4; at < 64; ++at) {
      SCOPED_TRACE(testing::Message() << "command " << int{command.packet[0]} << ", byte " << at);
      SwitchOn("", {});
      Play(command.before);
      Tell({With(command.packet, at, command.packet[at] ^ 1u)});
      bool given = false;
      for (const auto& [first, last] : command.given) given |= at >= first && at <= last;
      EXPECT_EQ(given, !firmware->Violation().empty()) << firmware->Violation();
    }
  }
}

TEST_F(FirmwareTest, HoldsBrokenRulesAgainstTheHost) {
  struct Case {
    const char *quirk, *messages, *violation;
    Heads heads = Heads::kBoth;
  };
  for (const Case& broken : {
           Case{"", "short", "message 1: command packet of 62 bytes"},
           Case{"", "unknown", "message 1: unknown command 7"},
           Case{"", "feed-bit-31", "bit 31 of the feed steps"},
           Case{"", "feed-askew", "swath direction"},
           Case{"", "connect create", "message 2: job of 4 passes", Heads::kPha},
           Case{"", "connect create-8 query swath data-phb", "dots for a head", Heads::kPha},
           Case{"", "end", "message 1: job end without a job"},
           Case{"", "create", "job create without a connect"},
           Case{"refuse:on=connect", "connect create", "message 2: job create without a connect"},
           Case{"", "connect query", "buffer query without a job"},
           Case{"", "connect create create", "message 3: second job create"},
           Case{"", "connect create open end", "message 3: job end after a reopening without"},
           Case{"", "connect create test", "answer test of a link that was not reopened"},
           Case{"", "connect create end feed", "swath after the job's end"},
           Case{"", "connect create poll", "pause poll of a job that was not reported as paused"},
           Case{"pause:ms=9", "connect create feed poll poll poll", "pause poll of a job that"},
           Case{"pause:ms=9", "connect create feed poll connect create poll", "pause poll of a"},
           Case{"", "connect create cancel", "cancel of a job that was not reported as cancelled"},
           Case{"cancel", "connect create feed cancel cancel end poll", "pause poll after the"},
           Case{"", "connect create feed-2", "swath 2 after swath 0"},
           Case{"", "connect create feed feed", "swath 1 again, which was reported as taken"},
           Case{"", "connect create feed-unheard feed-unheard feed-other", "again, but changed"},
           Case{"", "connect create swath", "swath 1 without room for its data"},
           Case{"buffer-full", "connect create query swath", "swath 1 without room for its data"},
           Case{"", "connect create data", "swath data without a swath command"},
           Case{"", "connect create query swath data-640", "640 bytes of swath data, announced"},
           Case{"", "connect create query swath query", "a command instead of swath data"},
       }) {
    SCOPED_TRACE(broken.messages);
    Machine machine;
    machine.heads = broken.heads;
    SwitchOn(broken.quirk, machine);
    Play(broken.messages);
    EXPECT_NE(std::string::npos, firmware->Violation().find(broken.violation))
        << firmware->Violation();
    EXPECT_EQ(0u, firmware->InkLaid());
  }
}

TEST_F(FirmwareTest, SpoolsDataDrainsThemAndRefusesWhatDoesNotFitByHalf) {
  constexpr std::uint32_t large = 100u << 20;  // of 128 MiB
  Play("connect create");
  EXPECT_EQ(128u << 20, Room());
  EXPECT_EQ((Words{4, 1, 5, 0}), Send(1, large));
  EXPECT_EQ(28u << 20, Room());
  firmware->TransferFailed();  // of a buffer query: a host then sends without knowing of room
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

// Through the bulk-out pipe: what the wire has found, or else the firmware.
TEST(VirtualPrinter, TellsWhatItHoldsAgainstTheHost) {
  for (const auto& [write, violation] :
       {std::pair{Bytes(31), "write 1: "}, std::pair{CommandWrite(5), "message 1: "}}) {
    VirtualPrinter printer(Machine{}, {});
    std::uint32_t error = 0;
    const std::uint32_t handle = printer.Open(printer.PathAt(1, 0), 0, &error);
    printer.Write(handle, write.data(), Low32(write.size()), 0);
    EXPECT_EQ(0u, printer.Violation().find(violation)) << printer.Violation();
  }
}

}  // namespace
}  // namespace qrn::sim
