// Frames to the byte, and replies joined from packets.
#include "link/transport.h"

#include <cstring>
#include <numeric>

#include "link/frame.h"
#include "link/replies.h"
#include "support/job_fixture.h"

namespace qrn {
namespace {

class Transport : public JobFixture {
 protected:
  std::uint16_t Word(std::size_t write, std::size_t offset) {
    return U16(&platform.written[write][offset]);
  }
  // The number that the next message will carry, whatever tests ran before.
  std::uint16_t NextNumber() {
    platform.written.clear();
    const std::uint8_t message[2] = {};
    EXPECT_EQ(1, LinkSend(1, message, 2, kTypeCmm));
    const std::uint16_t number = Word(0, 18);
    platform.written.clear();
    return static_cast<std::uint16_t>(number + 1);
  }
  void Send(std::uint32_t words, int expected = 1) {
    platform.written.clear();
    std::vector<std::uint8_t> data(2 * std::size_t{words} + 2);
    std::iota(data.begin(), data.end(), std::uint8_t{1});
    EXPECT_EQ(expected, LinkSend(1, data.data(), 2 * words, kTypeData));
  }
};

TEST_F(Transport, CommandBlockIsOnePacketOfKnownBytes) {
  const std::uint16_t number = NextNumber();
  std::uint8_t block[64] = {10};
  ASSERT_EQ(1, LinkSend(1, block, 65, kTypeCmm));  // the odd byte stays behind
  ASSERT_EQ(1u, platform.written.size());
  const Bytes& packet = platform.written[0];
  ASSERT_EQ(128u, packet.size());
  const std::uint16_t header[15] = {0xABCD, 0xEC38, 0xB92B, 0x7CAE, 0x9899, 0xC2F0, 0xDC35, 0x0BAA,
                                    0xF008, number, 0x0000, 0x002F, 0x0001, 0x0000, 0x0020};
  for (std::size_t i = 0; i < 15; ++i) EXPECT_EQ(header[i], Word(0, 2 * i)) << "word " << i;
  // Number 1 gives 019F and 0348: both sums grow with the number, the packet's twice (header and
  // its check).
  EXPECT_EQ(Low16(0x019E + number), Word(0, 30));
  EXPECT_EQ(Low16(0x0346 + 2 * number), Word(0, 126));
  EXPECT_EQ(0, std::memcmp(block, &packet[32], 64));
  for (std::size_t i = 96; i < 126; ++i) EXPECT_EQ(0, packet[i]);
}

TEST_F(Transport, LongCommandIsCutIntoPackets) {
  std::uint8_t message[2 * 100];
  std::iota(message, message + sizeof message, std::uint8_t{0});
  ASSERT_EQ(1, LinkSend(1, message, sizeof message, kTypeCmm));
  ASSERT_EQ(3u, platform.written.size());
  const std::uint16_t kinds[3] = {0xF001, 0xF004, 0xF002};
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(kinds[i], Word(i, 16));
    EXPECT_EQ(i, Word(i, 20));
    EXPECT_EQ(47, Word(i, 22));
    EXPECT_EQ(3, Word(i, 24));
    EXPECT_EQ(Word(0, 18), Word(i, 18));
  }
  EXPECT_EQ(0, std::memcmp(message + 188, &platform.written[2][32], 12));
  EXPECT_EQ(0, platform.written[2][44]);  // nothing of the packet before
}

TEST_F(Transport, SwathDataTravelInGroupsOfSevenSlots) {
  struct Case {
    std::uint32_t words;
    std::vector<std::size_t> writes;
    std::uint16_t firstKind, lastCount;
  };
  for (const Case& expected : {
           Case{0, {}, 0, 0},
           Case{1, {34}, 0xF008, 0},
           Case{4064, {8160}, 0xF008, 4063},
           Case{5000, {10096}, 0xF001, 935},
           Case{7 * 4064, {57344}, 0xF001, 4063},
           Case{7 * 4064 + 1, {57344, 34}, 0xF001, 0},
           Case{6 * 4064 + 100, {57344}, 0xF001, 99},
           Case{14 * 4064 + 4064 + 3, {57344, 57344, 8192 + 38}, 0xF001, 2},
       }) {
    const std::uint16_t number = NextNumber();
    Send(expected.words);
    SCOPED_TRACE(expected.words);
    ASSERT_EQ(expected.writes.size(), platform.written.size());
    std::uint32_t chunk = 0;
    for (std::size_t i = 0; i < platform.written.size(); ++i) {
      ASSERT_EQ(expected.writes[i], platform.written[i].size());
      for (std::size_t at = 0; at + 32 < platform.written[i].size(); at += 8192, ++chunk) {
        const std::uint32_t left = expected.words - chunk * 4064;
        const std::uint32_t words = std::min(left, 4064u);
        EXPECT_EQ(0x85B5, Word(i, at + 14));
        EXPECT_EQ(number, Word(i, at + 18));
        EXPECT_EQ(chunk, Word(i, at + 20));
        EXPECT_EQ(words - 1, Word(i, at + 22));
        EXPECT_EQ(expected.words >> 16, Word(i, at + 26));
        EXPECT_EQ(expected.words & 0xFFFF, Word(i, at + 28));
        EXPECT_EQ(WordSum16(&platform.written[i][at], 15), Word(i, at + 30));
        EXPECT_EQ(Low8(1 + 2 * 4064 * chunk),
                  platform.written[i][at + 32]);  // the data go on where they stopped
        for (std::size_t tail = at + 32 + 2 * words;
             tail < std::min(at + 64 + 2 * words, platform.written[i].size()); ++tail) {
          ASSERT_EQ(0, platform.written[i][tail]);
        }
        if (left <= 4064) {
          EXPECT_EQ(expected.words <= 4064 ? 0xF008 : 0xF002, Word(i, at + 16));
        }
      }
    }
    if (!expected.writes.empty()) {
      EXPECT_EQ(expected.firstKind, Word(0, 16));
    }
    EXPECT_EQ(static_cast<std::uint16_t>(number + 1), NextNumber() - 1);
  }
}

TEST_F(Transport, FailedWriteEndsTheMessageAndKeepsItsNumber) {
  const std::uint16_t number = NextNumber();
  platform.failWriteAfter = 1;
  Send(8 * 4064, 0);
  EXPECT_TRUE(HasLines(TakeLog(), {"Tx error:31", "Last数据发送异常:8/8"}));
  platform.failWriteAfter = 0;
  Send(8 * 4064, 0);
  EXPECT_TRUE(HasLines(TakeLog(), {"Tx error:31", "数据发送异常:7/8"}));
  platform.failWriteAfter = UINT32_MAX;
  EXPECT_EQ(number, NextNumber() - 1);
  const std::uint8_t message[2] = {};
  EXPECT_EQ(1, LinkSend(1, message, 2, 7));
  EXPECT_TRUE(platform.written.empty());
  EXPECT_EQ("Tx未定义数据类型:7\r\r\n\r\n", TakeLog());
}

TEST_F(Transport, SlowTransferIsLogged) {
  platform.transferMs = 100;
  Send(1);
  EXPECT_EQ("", TakeLog());
  platform.transferMs = 101;
  Send(1);
  EXPECT_EQ("hold:101\r\r\n\r\n", TakeLog());
}

struct Joined {
  const char* name;
  std::vector<Bytes> packets;
  std::uint32_t capacity;
  int result;
  std::uint32_t bytes;
  Bytes kept;
  const char* log;
};

TEST_F(Transport, RepliesAreJoinedFromTheirPackets) {
  const Bytes a = Words({1, 2}), b = Words({3}), c = Words({4, 5});
  const Bytes full(96, 7);
  for (const Joined& expected : {
           Joined{"only", {Packet(0xF008, 2, a)}, 100, 1, 4, a, ""},
           Joined{"first, middle, last",
                  {Packet(0xF001, 2, a), Packet(0xF004, 1, b), Packet(0xF002, 2, c)},
                  100,
                  1,
                  10,
                  Words({1, 2, 3, 4, 5}),
                  ""},
           Joined{"a second first starts anew",
                  {Packet(0xF001, 2, a), Packet(0xF001, 1, b), Packet(0xF002, 2, c)},
                  100,
                  1,
                  6,
                  Words({3, 4, 5}),
                  ""},
           Joined{"an only in the middle",
                  {Packet(0xF001, 2, a), Packet(0xF008, 1, b)},
                  100,
                  1,
                  2,
                  b,
                  ""},
           Joined{
               "unknown kind", {Packet(0xF003, 2, a)}, 100, 1, 0, {}, "usb接收到不可识别数据包:4"},
           Joined{"48 words are the most", {Packet(0xF008, 48, full)}, 100, 1, 96, full, ""},
           Joined{"49 words announced",
                  {Packet(0xF008, 49, full)},
                  200,
                  1,
                  0,
                  {},
                  "usb接收到不可识别数据包:4"},
           Joined{"just fits", {Packet(0xF008, 2, a)}, 5, 1, 4, a, ""},
           Joined{"as long as the capacity", {Packet(0xF008, 2, a)}, 4, 1, 4, {}, "REC溢出"},
           Joined{"second chunk too long",
                  {Packet(0xF001, 2, a), Packet(0xF002, 2, c)},
                  8,
                  1,
                  8,
                  a,
                  "REC溢出"},
           Joined{"read fails", {Packet(0xF001, 2, a)}, 100, 0, 0, a, "Rx error:31"},
       }) {
    SCOPED_TRACE(expected.name);
    platform.replies.assign(expected.packets.begin(), expected.packets.end());
    Bytes buffer(expected.capacity, 0xCC);
    std::uint32_t bytes = 99;
    EXPECT_EQ(expected.result, LinkRecv(job, buffer.data(), expected.capacity, &bytes));
    EXPECT_EQ(expected.bytes, bytes);
    EXPECT_TRUE(std::equal(expected.kept.begin(), expected.kept.end(), buffer.begin()));
    if (expected.kept.size() < buffer.size()) {
      EXPECT_EQ(0xCC, buffer.back());
    }
    const std::string log = TakeLog();
    EXPECT_EQ(*expected.log == '\0', log.empty()) << log;
    EXPECT_TRUE(HasLines(log, {expected.log}));
  }
}

}  // namespace
}  // namespace qrn
