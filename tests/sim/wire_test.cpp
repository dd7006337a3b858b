// The printer's wire must notice every broken word, and pack replies that a host can join.
#include "sim/wire/wire.h"

#include <gtest/gtest.h>

#include <numeric>

#include "base/bytes.h"
#include "support/wire_bytes.h"

namespace qrn::sim {
namespace {

constexpr std::size_t kGroupBytes = 7 * 8192;

// The first write of swath data number 5, as a host frames them: `words` of them, seven slots a
// write, the last one cut after its words.
Bytes Group(std::uint32_t words) {
  const std::uint32_t slots = DivUp(words, 4064u);
  Bytes group;
  for (std::uint32_t slot = 0; slot < std::min(slots, 7u); ++slot) {
    const std::uint32_t here = std::min(words - slot * 4064, 4064u);
    const bool last = slot + 1 == slots;
    const int kind = slots == 1 ? 0xF008 : slot == 0 ? 0xF001 : last ? 0xF002 : 0xF004;
    const Bytes frame =
        Frame(0x85B5, static_cast<std::uint16_t>(kind), 5, Low16(slot), Low16(here - 1),
              Low16(slots), words, last && slot < 6 ? 32 + 2 * std::size_t{here} : 8192);
    group.insert(group.end(), frame.begin(), frame.end());
  }
  return group;
}

// A write of command number 5, or of swath data, with one word of it changed.
Bytes Broken(std::size_t at, int by, bool sign) {
  Bytes packet = CommandWrite(5);
  PutU16(&packet[at], Low16(static_cast<std::uint32_t>(U16(&packet[at]) + by)));
  if (sign) Sign(&packet);
  return packet;
}
Bytes With(Bytes write, std::size_t at) {
  write.at(at) = 1;
  return write;
}
Bytes Cut(Bytes write, std::size_t bytes) {
  write.resize(bytes);
  return write;
}
Bytes Part(std::uint16_t number, std::uint16_t index, std::uint32_t words = 150) {
  const auto kind = static_cast<std::uint16_t>(index == 0 ? 0xF001 : index == 3 ? 0xF002 : 0xF004);
  return Frame(0x0BAA, kind, number, index, 47, 4, words, 128);
}

TEST(Wire, NoticesEachBrokenPart) {
  struct Case {
    std::vector<Bytes> writes;  // of which the last one breaks a rule
    const char* violation;
  };
  std::vector<Case> cases = {
      {{Broken(16, 1, true)}, "kind F009 for index 0"},
      {{Broken(18, 1, true)}, "number 6 instead of 5"},
      {{Broken(20, 1, true)}, "F008 for index 1"},
      {{Broken(22, -1, true)}, "word 22"},
      {{Broken(24, 1, true)}, "2 chunks"},
      {{Broken(26, 1, true)}, "chunks announced"},
      {{Broken(28, 16, true)}, "chunks announced"},
      {{Frame(0x0BAA, 0xF008, 5, 0, 47, 0, 0, 128)}, "0 chunks announced for 0 words"},
      {{Broken(40, 1, false)}, "packet check"},
      {{Broken(96, 1, true)}, "not zero after word 32"},
      {{Broken(124, 1, true)}, "not zero after word 32"},
      {{Cut(CommandWrite(5), 126)}, "of 126 bytes"},
      {{Bytes(31)}, "no frame header"},
      {{Part(5, 1)}, "starts with chunk 1"},
      {{Part(5, 0), Part(5, 2)}, "chunk 2 instead of 1"},
      {{Part(5, 0), Part(6, 1)}, "chunk 1 belongs to another message"},
      {{Part(5, 0), Part(5, 1, 151)}, "chunk 1 belongs to another message"},
      {{Frame(0x1234, 0xF008, 5, 0, 9, 1, 10, 52)}, "type word 1234"},
      {{Cut(Group(10), 84)}, "group of 84 bytes, not 52"},  // with its zero tail
      {{Cut(Group(10), 50)}, "group of 50 bytes, not 52"},
      {{Frame(0x85B5, 0xF008, 5, 0, 8, 1, 10, 52)}, "9 words in a chunk of 10"},
      {{Frame(0x85B5, 0xF008, 5, 0, 4064, 1, 4065, 8162)}, "4065 words in a slot"},
      {{Cut(Group(5000), 8192)}, "ends in slot 1"},
      {{With(Group(5000), 8160)}, "slot 0 is not zero after word 4064"},
      {{With(Group(5000), 8191)}, "slot 0 is not zero after word 4064"},
      {{With(Group(6 * 4064 + 10), kGroupBytes - 8192 + 52)}, "slot 6 is not zero after word 10"},
      {{Cut(Group(6 * 4064 + 10), kGroupBytes - 8192 + 52)}, "group of 49204 bytes, not 57344"},
      {{Cut(Group(7 * 4064 + 10), kGroupBytes + 52)}, "group of 57396 bytes, not 57344"},
  };
  for (std::size_t word = 0; word < 7; ++word)
    cases.push_back({{Broken(2 * word, 1, true)}, "constant word"});
  for (std::size_t word = 7; word < 16; ++word)
    cases.push_back({{Broken(2 * word, 1, false)}, "check"});
  for (const Case& expected : cases) {
    SCOPED_TRACE(expected.violation);
    WireReceiver receiver;
    std::vector<WireMessage> messages;
    const auto take = [&](const Bytes& write) {
      EXPECT_EQ("", receiver.Violation());
      receiver.Take(write.data(), write.size(), &messages);
    };
    take(CommandWrite(4));
    for (const Bytes& write : expected.writes) take(write);
    const std::string place = "write " + std::to_string(1 + expected.writes.size()) + ": ";
    EXPECT_EQ(0u, receiver.Violation().find(place));
    EXPECT_NE(std::string::npos, receiver.Violation().find(expected.violation))
        << receiver.Violation();
    EXPECT_EQ(1u, messages.size());
  }
}

TEST(Replies, AreCutIntoPacketsAndJoinedAgain) {
  ReplyPacker packer;
  ReplyJoiner joiner;
  (void)packer.Pack(Bytes(8));  // number 1
  Bytes reply(216);
  std::iota(reply.begin(), reply.end(), std::uint8_t{1});
  const auto packets = packer.Pack(reply);
  ASSERT_EQ(3u, packets.size());
  EXPECT_FALSE(joiner.Take(packets[0].data()).has_value());  // breaks off and begins again
  const std::uint16_t kinds[3] = {0xF001, 0xF004, 0xF002}, words[3] = {47, 47, 14};
  for (std::uint16_t i = 0; i < 3; ++i) {
    Bytes expected = Frame(0x0BAA, kinds[i], 2, i, words[i], 3, 108, 128);
    std::copy_n(reply.begin() + 94 * i, 2 * words[i], expected.begin() + 32);
    Sign(&expected);
    EXPECT_EQ(expected, packets[i]);
    const auto joined = joiner.Take(packets[i].data());
    EXPECT_EQ(i == 2 ? reply : Bytes{}, joined.value_or(Bytes{}));
  }
  // A packet has room for 48 words, of which 47 are used.
  EXPECT_EQ(96u, joiner.Take(Frame(0x0BAA, 0xF008, 3, 0, 48, 1, 48, 128).data())->size());
  EXPECT_FALSE(joiner.Take(Frame(0x0BAA, 0xF008, 4, 0, 49, 1, 49, 128).data()).has_value());
}

}  // namespace
}  // namespace qrn::sim
