// The printer's wire must notice every broken word, and pack replies that a host can join.
#include "sim/wire.h"

#include <gtest/gtest.h>

#include <functional>
#include <numeric>

#include "platform/bytes.h"
#include "support/wire_bytes.h"

namespace qrn::sim {
namespace {

class Wire : public testing::Test {
 protected:
  std::string Take(const Bytes& bytes) {
    receiver.Take(bytes.data(), bytes.size(), &messages);
    return receiver.Violation();
  }
  WireReceiver receiver;
  std::vector<WireMessage> messages;
};

TEST_F(Wire, NoticesEachBrokenPart) {
  struct Case {
    const char* name;
    std::function<Bytes()> write;
    const char* place;
  };
  const auto broken = [](std::size_t at, int by, bool sign) {
    Bytes packet = CommandWrite(5);
    PutU16(&packet[at], Low16(static_cast<std::uint32_t>(U16(&packet[at]) + by)));
    if (sign) Sign(&packet);
    return packet;
  };
  std::vector<Case> cases;
  for (std::size_t word = 0; word < 7; ++word) {
    cases.push_back({"constant word", [=] { return broken(2 * word, 1, true); }, "constant word"});
  }
  for (std::size_t word = 7; word < 16; ++word) {
    cases.push_back(
        {"header word without its check", [=] { return broken(2 * word, 1, false); }, "check"});
  }
  cases.insert(
      cases.end(),
      {
          {"kind", [&] { return broken(16, 1, true); }, "kind"},
          {"number", [&] { return broken(18, 1, true); }, "number 6 instead of 5"},
          {"index", [&] { return broken(20, 1, true); }, "F008 for index 1"},
          {"word 22", [&] { return broken(22, -1, true); }, "word 22"},
          {"count", [&] { return broken(24, 1, true); }, "2 chunks"},
          {"length high", [&] { return broken(26, 1, true); }, "chunks announced"},
          {"length: two chunks", [&] { return broken(28, 16, true); }, "chunks announced"},
          {"payload without the packet check", [&] { return broken(40, 1, false); },
           "packet check"},
          {"fill", [&] { return broken(100, 1, true); }, "not zero behind word 32"},
          {"too short a packet",
           [] {
             Bytes b = CommandWrite(5);
             b.resize(126);
             return b;
           },
           "of 126 bytes"},
          {"no header", [] { return Bytes(31); }, "no frame header"},
          {"data with its zero tail",
           [] {
             Bytes b = DataWrite(5, 10);
             b.resize(b.size() + 32);
             return b;
           },
           "group of 84 bytes, not 52"},
          {"data cut short",
           [] {
             Bytes b = DataWrite(5, 10);
             b.resize(b.size() - 2);
             return b;
           },
           "group of 50 bytes, not 52"},
          {"data word 22", [] { return Frame(0x85B5, 0xF008, 5, 0, 8, 1, 10, 52); },
           "9 words in a chunk of 10"},
          {"slot too full", [] { return Frame(0x85B5, 0xF008, 5, 0, 4064, 1, 4065, 8162); },
           "4065 words in a slot"},
          {"unknown type", [] { return Frame(0x1234, 0xF008, 5, 0, 9, 1, 10, 52); },
           "type word 1234"},
          {"first of two slots alone",
           [] { return Frame(0x85B5, 0xF001, 5, 0, 4063, 2, 5000, 8192); }, "ends in slot 1"},
      });
  for (const Case& expected : cases) {
    SCOPED_TRACE(expected.name);
    receiver = WireReceiver{};
    messages.clear();
    EXPECT_EQ("", Take(CommandWrite(4)));
    const std::string violation = Take(expected.write());
    EXPECT_NE(std::string::npos, violation.find(expected.place)) << violation;
    EXPECT_EQ(0u, violation.find("write 2: "));
    EXPECT_EQ(1u, messages.size());
  }
}

TEST_F(Wire, JoinsDataAndTakesAnInterruptedMessageAgain) {
  Bytes group = Frame(0x85B5, 0xF001, 9, 0, 4063, 2, 4074, 8192);
  std::iota(group.begin() + 32, group.begin() + 8160, std::uint8_t{0});
  const Bytes last = Frame(0x85B5, 0xF002, 9, 1, 9, 2, 4074, 52);
  group.insert(group.end(), last.begin(), last.end());
  EXPECT_EQ("", Take(group));
  ASSERT_EQ(1u, messages.size());
  EXPECT_TRUE(messages[0].isData);
  EXPECT_EQ(8148u, messages[0].bytes.size());
  EXPECT_EQ(0x0F, messages[0].bytes[15]);

  EXPECT_EQ("", Take(Frame(0x0BAA, 0xF001, 10, 0, 47, 2, 60, 128)));
  receiver.Reopened();  // the second packet never came
  EXPECT_EQ("", Take(CommandWrite(10)));
  EXPECT_EQ("", Take(CommandWrite(11)));
  EXPECT_NE("", Take(CommandWrite(11)));
}

TEST(ReplyPacker, CutsRepliesIntoPacketsThatTheReceiverWouldJoin) {
  ReplyPacker packer;
  std::vector<std::uint8_t> reply(216);
  std::iota(reply.begin(), reply.end(), std::uint8_t{1});
  const auto packets = packer.Pack(reply);
  ASSERT_EQ(3u, packets.size());
  std::vector<std::uint8_t> joined;
  const std::uint16_t kinds[3] = {0xF001, 0xF004, 0xF002}, words[3] = {47, 47, 14};
  for (std::size_t i = 0; i < 3; ++i) {
    ASSERT_EQ(128u, packets[i].size());
    EXPECT_EQ(kinds[i], U16(&packets[i][16]));
    EXPECT_EQ(words[i], U16(&packets[i][22]));
    Bytes signedAgain = packets[i];
    Sign(&signedAgain);
    EXPECT_EQ(signedAgain, packets[i]);
    joined.insert(joined.end(), packets[i].begin() + 32, packets[i].begin() + 32 + 2 * words[i]);
  }
  EXPECT_EQ(reply, joined);
  EXPECT_EQ(0xF008, U16(&packer.Pack(Bytes(8))[0][16]));
}

}  // namespace
}  // namespace qrn::sim
