// Frames to the byte, and which device is the printer.
#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "link/frame.h"
#include "link/transport.h"
#include "link/usb_device.h"
#include "support/job_fixture.h"
#include "support/wire_bytes.h"

namespace qrn {
namespace {

using sim::Bytes;
using Link = JobFixture;

// The number of the next message: every one that goes out completely has the next one.
std::uint16_t NextNumber(FakePlatform& platform) {
  const Bytes message(2);
  EXPECT_EQ(1, LinkSend(1, message.data(), 2, kTypeCmm));
  const std::uint16_t number = U16(&platform.written.back()[18]);
  platform.written.clear();
  return Low16(number + 1u);
}

// No two chunks are alike.
Bytes Counting(std::size_t bytes) {
  Bytes data(bytes);
  for (std::size_t i = 0; i < bytes; ++i) data[i] = static_cast<std::uint8_t>(i * 7 / 5);
  return data;
}

TEST_F(Link, APollHasKnownBytes) {
  const std::uint16_t number = NextNumber(platform);
  const Bytes poll = sim::Command(10);
  ASSERT_EQ(1, LinkSend(1, poll.data(), 64, kTypeCmm));
  Bytes packet = {0xCD, 0xAB, 0x38, 0xEC, 0x2B, 0xB9, 0xAE, 0x7C, 0x99, 0x98, 0xF0,
                  0xC2, 0x35, 0xDC, 0xAA, 0x0B, 0x08, 0xF0, 0,    0,    0,    0,
                  0x2F, 0,    1,    0,    0,    0,    0x20, 0,    0,    0,    10};
  packet.resize(128);
  // The sums are 019E and 0346 for number 0; the packet's counts the header's check, too.
  PutU16(&packet[18], number);
  PutU16(&packet[30], Low16(0x019Eu + number));
  PutU16(&packet[126], Low16(0x0346u + 2u * number));
  EXPECT_EQ(packet, platform.written.at(0));
}

TEST_F(Link, LongCommandsGoInPacketsOf47Words) {
  const std::uint16_t number = NextNumber(platform);
  const Bytes message = Counting(200);
  ASSERT_EQ(1, LinkSend(1, message.data(), 200, kTypeCmm));
  for (const auto& [index, kind, words] :
       {std::tuple{0, 0xF001, 47}, {1, 0xF004, 47}, {2, 0xF002, 6}}) {
    Bytes packet = sim::Frame(0x0BAA, Low16(kind), number, Low16(index), 47, 3, 100, 128);
    std::copy_n(message.begin() + 94 * index, 2 * words, packet.begin() + 32);
    PutU16(&packet[126], WordSum16(packet.data(), 63));
    EXPECT_EQ(packet, platform.written.at(static_cast<std::size_t>(index)));
  }
}

TEST_F(Link, DataGoInSlotsOf4064WordsWrittenBySevens) {
  for (const std::uint32_t words : {1u, 4064u, 4065u, 7 * 4064u, 7 * 4064u + 1, 22 * 4064u + 3}) {
    const std::uint16_t number = NextNumber(platform);
    const Bytes data = Counting(2 * words);
    const std::uint32_t slots = DivUp(words, 4064u);
    std::vector<Bytes> writes;
    for (std::uint16_t slot = 0; slot < slots; ++slot) {
      const std::uint32_t at = slot * 4064u, here = std::min(words - at, 4064u);
      const bool last = slot + 1u == slots;
      const std::uint16_t kind = slots == 1 ? 0xF008 : last ? 0xF002 : slot == 0 ? 0xF001 : 0xF004;
      Bytes frame =
          sim::Frame(0x85B5, kind, number, slot, Low16(here - 1), Low16(slots), words, 8192);
      std::copy_n(data.begin() + 2 * at, 2 * here, frame.begin() + 32);
      if (last && slot % 7 != 6) frame.resize(32 + 2 * here);  // a short group ends with its words
      if (slot % 7 == 0) writes.emplace_back();
      writes.back().insert(writes.back().end(), frame.begin(), frame.end());
    }
    ASSERT_EQ(1, LinkSend(1, data.data(), 2 * words, kTypeData));
    EXPECT_TRUE(writes == platform.written) << words;
  }
  platform.written.clear();
  EXPECT_EQ(1, LinkSend(1, nullptr, 0, kTypeData));
  EXPECT_EQ(1, LinkSend(1, nullptr, 2, 7));
  EXPECT_TRUE(platform.written.empty());
  EXPECT_EQ("Tx未定义数据类型:7\r\r\n\r\n", TakeLog());
}

// A reply of three packets of 4, 96 and 2 bytes: what does not end before the room does is left
// out, but counted.
TEST_F(Link, RepliesAreJoinedAsFarAsTheirRoomGoes) {
  const Bytes whole = Counting(102);
  for (const auto& [room, kept] : {std::pair{200u, 102u}, {103u, 102u}, {102u, 100u}, {100u, 4u}}) {
    std::size_t at = 0;
    for (const auto& [kind, words] : {std::pair{0xF001, 2}, {0xF004, 48}, {0xF002, 1}}) {
      Bytes packet = sim::Frame(0x0BAA, static_cast<std::uint16_t>(kind), 1, 0,
                                static_cast<std::uint16_t>(words), 3, 51, 128);
      std::copy_n(whole.begin() + static_cast<std::ptrdiff_t>(at), 2 * words, packet.begin() + 32);
      platform.replies.push_back(packet);
      at += 2u * static_cast<std::size_t>(words);
    }
    Bytes buffer(room, 0xCC), expected(room, 0xCC);
    std::copy_n(whole.begin(), kept, expected.begin());
    std::uint32_t bytes = 0;
    EXPECT_EQ(1, LinkRecv(job, buffer.data(), room, &bytes));
    EXPECT_EQ(102u, bytes);
    EXPECT_EQ(expected, buffer) << room;
    EXPECT_EQ(kept == 102, TakeLog().empty());
  }
}

// 255 characters of a path count, whatever their case.
TEST_F(Link, ThePrinterIsTheFirstPathWithBothIdentifiersThatOpens) {
  SetUsbIds(job);
  const std::string fits = std::string(239, 'x') + "PID_A71Dvid_5e3c and more", cut = 'x' + fits;
  platform.paths = {"",   "vid_5e3c",         "pid_a71d", cut, "held pid_a71d vid_5e3c",
                    fits, "pid_a71d vid_5e3c"};
  EXPECT_EQ(1, UsbOpen(job));
  EXPECT_EQ(1, UsbOpen(job));  // the one before is closed
  EXPECT_EQ((std::vector{fits, fits}), platform.opened);
  EXPECT_EQ(1u, platform.openCount);
  platform.paths = {cut};
  EXPECT_EQ(0, UsbOpen(job));
  UsbClose(job);
  EXPECT_EQ(0u, platform.openCount);
}

}  // namespace
}  // namespace qrn
