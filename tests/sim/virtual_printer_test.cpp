// The printer at its border, as a host meets it that knows nothing but paths, writes and reads:
// what each quirk of the bus, of the transfers and of the replies does there.
#include "sim/virtual_printer.h"

#include <gtest/gtest.h>

#include <optional>

#include "platform/bytes.h"
#include "support/quirk_text.h"
#include "support/wire_bytes.h"

namespace qrn::sim {
namespace {

constexpr std::uint32_t kPatienceMs = 60'000;

class PrinterTest : public testing::Test {
 protected:
  void SwitchOn(const std::vector<const char*>& quirks) {
    printer.emplace(Machine{}, Script(quirks));
    number = 1;
  }
  std::vector<std::string> Paths() {
    std::vector<std::string> paths;
    while (const char* path = printer->PathAt(static_cast<std::uint32_t>(paths.size()), now))
      paths.push_back(path);
    return paths;
  }
  // Opens the path at this place; the system error, 0 when it is open.
  std::uint32_t Open(std::size_t place = 1) {
    printer->Close(handle, now);
    std::uint32_t error = 0;
    handle = printer->Open(Paths().at(place).c_str(), now, &error);
    EXPECT_EQ(handle == 0, error != 0);
    return error;
  }
  bool Write(const Bytes& bytes) {
    step = printer->Write(handle, bytes.data(), static_cast<std::uint32_t>(bytes.size()), now);
    return step.state == UsbStep::kDone;
  }
  bool Send(const Bytes& command) {
    Bytes write = CommandWrite(number);
    std::copy(command.begin(), command.end(), write.begin() + 32);
    Sign(&write);
    if (!Write(write)) return false;
    ++number;
    return true;
  }
  // Swath data of 8 full slots: a group of seven, then one.
  bool SendData() {
    constexpr std::uint32_t kWords = 8 * 4000;
    Bytes group(7 * 8192);
    for (std::uint32_t slot = 0; slot < 8; ++slot) {
      const std::uint32_t words = slot < 7 ? 4064 : kWords - 7 * 4064;
      const auto kind = static_cast<std::uint16_t>(slot == 0 ? 0xF001 : slot < 7 ? 0xF004 : 0xF002);
      const Bytes frame = Frame(0x85B5, kind, number, Low16(slot), Low16(words - 1), 8, kWords, 32);
      if (slot == 7 && !Write(group)) return false;
      if (slot == 7) group.assign(32 + 2 * words, 0);
      std::copy(frame.begin(), frame.end(), group.begin() + (slot % 7) * 8192);
    }
    if (!Write(group)) return false;
    ++number;
    return true;
  }
  static constexpr std::uint32_t kDataBytes = 2 * 8 * 4000;
  static Bytes DataSwath() { return Swath(1, kDataBytes); }
  // The next packet, waited for; empty when none comes or the read fails.
  Bytes Packet() {
    Bytes packet(128);
    for (const std::uint32_t begin = now; now - begin < kPatienceMs; now = step.value) {
      step = printer->Read(handle, packet.data(), 128, now);
      if (step.state == UsbStep::kDone) return packet;
      if (step.state == UsbStep::kFailed) return {};
    }
    return {};
  }
  // The next reply as a host puts it together; empty for a packet that is none.
  Bytes Receive() {
    Bytes reply;
    for (Bytes packet = Packet(); !packet.empty(); packet = Packet()) {
      const std::uint16_t kind = U16(&packet[16]), words = U16(&packet[22]);
      if ((kind & 0xFFF0) != 0xF000 || (kind & 0xF) == 3 || words > 48) return {};
      if (kind == 0xF001 || kind == 0xF008) reply.clear();
      reply.insert(reply.end(), packet.begin() + 32, packet.begin() + 32 + 2 * words);
      if (kind == 0xF002 || kind == 0xF008) return reply;
    }
    return {};
  }
  // The code of the next reply; -1 when there is none.
  int Code() {
    const Bytes reply = Receive();
    return reply.size() < 2 ? -1 : U16(reply.data());
  }
  void StartJob() {
    ASSERT_EQ(0u, Open());
    ASSERT_TRUE(Send(Connect()) && Code() == 2);
    ASSERT_TRUE(Send(JobCreate()) && Code() == 3);
    ASSERT_TRUE(Send(BufferQuery(kDataBytes)) && Code() == 12);
  }

  std::uint32_t now = 0xFFFFFF00;  // the clock wraps on the way
  std::optional<VirtualPrinter> printer;
  std::uint32_t handle = 0;
  std::uint16_t number = 1;
  UsbStep step{};
};

TEST_F(PrinterTest, SendsRepliesToOtherCodesAndZeroAnswersInFront) {
  SwitchOn({"other-code:msg=2,count=2", "say:on=test,first=1,words=8*0/8*0"});
  ASSERT_EQ(0u, Open());
  Send(Connect());
  EXPECT_EQ(2, Code());
  Send(JobCreate());
  for (const int code : {0x103, 3}) EXPECT_EQ(code, Code());
  ASSERT_EQ(0u, Open());
  Send(Command(10));
  for (const int code : {0, 0, 5, 10}) EXPECT_EQ(code, Code());
  ASSERT_EQ(0u, Open());
  Send(Command(10));
  EXPECT_EQ(10, Code());
  EXPECT_EQ("", printer->Violation());
}

TEST_F(PrinterTest, AnswersLateOrNotAtAll) {
  SwitchOn({"late:msg=2,ms=700", "silence:msg=4,ms=5000", "silence:t=40000"});
  ASSERT_EQ(0u, Open());
  const std::uint32_t begin = now;
  const auto delay = [this](const Bytes& command) {
    const std::uint32_t sent = now;
    Send(command);
    return Code() < 0 ? -1 : static_cast<int>(now - sent);
  };
  EXPECT_EQ(1, delay(Connect()));
  EXPECT_EQ(701, delay(JobCreate()));
  EXPECT_EQ(1, delay(BufferQuery(0)));
  Send(BufferQuery(0));
  now += 2000;
  ASSERT_EQ(0u, Open());  // silent until its time, whoever asks
  EXPECT_EQ(3000, delay(Command(10)));
  EXPECT_EQ(1, delay(BufferQuery(0)));
  now = begin + 40000;
  EXPECT_EQ(-1, delay(BufferQuery(0)));
  EXPECT_EQ(UsbStep::kWait, step.state);
  ASSERT_EQ(0u, Open());
  EXPECT_EQ(1, delay(Command(10)));
  EXPECT_EQ("", printer->Violation());

  SwitchOn({"silence", "read-fails:read=2"});
  ASSERT_EQ(0u, Open());
  EXPECT_EQ(-1, delay(Connect()));
  ASSERT_EQ(0u, Open());  // the read that was given up is the first
  EXPECT_EQ(-1, delay(Command(10)));
  EXPECT_EQ(UsbStep::kFailed, step.state);
}

TEST_F(PrinterTest, SpoilsReplies) {
  struct Case {
    const char* form;
    std::vector<std::uint16_t> kinds;  // of the packets that come
    std::size_t bytes;                 // of the reply that a host makes of the first ones
    bool rightReply;                   // whether its first words are the reply's
    bool thenRight;                    // whether the reply follows
  };
  for (const Case& expected :
       {Case{"garbage:msg=2,form=kind", {0xF003}, 0, false, true},
        Case{"garbage:msg=2,form=words", {0xF008}, 0, false, true},
        Case{"garbage:msg=2,form=empty", {0xF008}, 0, false, true},
        Case{"garbage:msg=2,form=short", {0xF008}, 2, false, false},
        Case{"garbage:msg=2,form=split", {0xF001, 0xF004, 0xF004, 0xF002}, 16, true, false},
        Case{"garbage:msg=2,form=overlong", {0xF001, 0xF004}, 3200, true, false},
        Case{"garbage:msg=2,form=restart", {0xF001, 0xF004, 0xF008}, 16, true, false}}) {
    SCOPED_TRACE(expected.form);
    for (const bool joined : {false, true}) {
      SwitchOn({expected.form});
      ASSERT_EQ(0u, Open());
      Send(Connect());
      ASSERT_EQ(2, Code());
      Send(JobCreate());
      if (!joined) {
        for (const std::uint16_t kind : expected.kinds) EXPECT_EQ(kind, U16(&Packet()[16]));
        continue;
      }
      const Bytes reply = Receive();
      EXPECT_EQ(expected.bytes, reply.size());
      const Bytes right = {3, 0, 1, 0, 5, 0, 0, 0};
      const auto isRight = [&right](const Bytes& bytes) {
        return bytes.size() >= 8 && std::equal(right.begin(), right.end(), bytes.begin());
      };
      EXPECT_EQ(expected.rightReply, isRight(reply));
      EXPECT_EQ(expected.thenRight, isRight(Receive()));
    }
  }
  // Random bytes in a whole frame, the same in each run, then the reply.
  Bytes first[2];
  for (Bytes& random : first) {
    SwitchOn({"garbage:form=random"});
    ASSERT_EQ(0u, Open());
    Send(Connect());
    random = Receive();
    EXPECT_GE(random.size(), 16u);
    EXPECT_EQ(2, Code());
  }
  EXPECT_EQ(first[0], first[1]);
}

// Whatever fails, the message comes again from its start under the same number, and the swath is
// printed once.
TEST_F(PrinterTest, FailsOneTransferAndStaysThere) {
  struct Case {
    const char* quirk;
    int fails;  // 0 the swath's packet, 1 its data, 2 the read of its reply
    std::uint32_t error;
  };
  for (const Case& expected :
       {Case{"write-fails:write=4", 0, 31}, Case{"write-fails:write=5,error=5", 1, 5},
        Case{"write-fails:write=6", 1, 31}, Case{"write-fails:where=data", 1, 31},
        Case{"write-fails:msg=4,where=packet", 0, 31}, Case{"write-fails:msg=5", 1, 31},
        Case{"read-fails:msg=5,error=995", 2, 995}, Case{"read-fails:read=6", 2, 31}}) {
    SCOPED_TRACE(expected.quirk);
    SwitchOn({expected.quirk});
    StartJob();  // three writes, three packets of a block and two of replies
    const auto trySwath = [this] {
      if (!Send(DataSwath())) return 0;
      if (!SendData()) return 1;
      return Code() == 4 ? 3 : 2;
    };
    EXPECT_EQ(expected.fails, trySwath());
    EXPECT_EQ(UsbStep::kFailed, step.state);
    EXPECT_EQ(expected.error, step.value);
    ASSERT_EQ(0u, Open());
    EXPECT_TRUE(Send(Command(10)) && Code() == 10);
    EXPECT_EQ(3, trySwath());
    EXPECT_EQ(1u, printer->Stats().swaths);
    EXPECT_EQ("", printer->Violation());
  }
}

TEST_F(PrinterTest, LeavesTheBusAtItsMomentAndComesBack) {
  struct Case {
    const char* quirk;
    int fails;  // as above
  };
  for (const Case& expected :
       {Case{"unplug:ms=500,msg=4", 1}, Case{"unplug:ms=500,msg=5", 2},
        Case{"unplug:ms=500,write=4", 0}, Case{"unplug:ms=500,write=6", 1},
        Case{"unplug:ms=500,read=6", 2}, Case{"unplug:ms=500,byte=513", 1},
        Case{"unplug:ms=500,byte=512", 0}, Case{"unplug:ms=500,t=1000", 2}}) {
    SCOPED_TRACE(expected.quirk);
    SwitchOn({expected.quirk, "late:msg=5,ms=5000"});
    Paths();
    const std::uint32_t begin = now;
    StartJob();
    const int failed = !Send(DataSwath()) ? 0 : !SendData() ? 1 : Code() == 4 ? 3 : 2;
    EXPECT_EQ(expected.fails, failed);
    const bool timed = std::string(expected.quirk).find(",t=") != std::string::npos;
    EXPECT_EQ(timed, now - begin == 1000);  // in the middle of a wait
    EXPECT_EQ(1u, Paths().size());
    EXPECT_NE("", printer->Trouble());
    now += 499;
    EXPECT_EQ(1u, Paths().size());
    now += 1;
    ASSERT_EQ(2u, Paths().size());
    EXPECT_FALSE(Send(Command(10)));  // the old handle is dead
    ASSERT_EQ(0u, Open());
    EXPECT_TRUE(Send(Command(10)) && Code() == 10);
    EXPECT_EQ("", printer->Violation());
  }
}

TEST_F(PrinterTest, ComesBackElsewhereOrHeldOrNotAtAll) {
  SwitchOn({"unplug:msg=1,ms=100,back=other", "unplug:msg=2,ms=100,back=held,held-ms=900",
            "unplug:msg=3"});
  ASSERT_EQ(0u, Open());
  const std::string path = Paths().at(1);
  Send(Connect());
  now += 100;
  EXPECT_NE(path, Paths().at(1));
  std::uint32_t error = 0;
  EXPECT_EQ(0u, printer->Open(path.c_str(), now, &error));
  EXPECT_EQ(2u, error);
  ASSERT_EQ(0u, Open());
  Send(Command(10));
  now += 100;
  EXPECT_EQ(5u, Open());
  now += 899;
  EXPECT_EQ(5u, Open());
  now += 1;
  ASSERT_EQ(0u, Open());
  Send(Command(10));
  now += 0x7FFFFFFF;
  EXPECT_EQ(1u, Paths().size());
}

TEST_F(PrinterTest, StandsBesideASecondOneAndStaysTheOneThatWasOpened) {
  struct Case {
    const char* quirk;
    std::uint32_t errors[2];  // of the first and the second on the bus
  };
  for (const Case& expected :
       {Case{"second-printer", {0, 5}}, Case{"second-printer:first=1", {0, 5}},
        Case{"second-printer:first=1,held=1", {5, 0}}, Case{"second-printer:held=1", {0, 5}}}) {
    SCOPED_TRACE(expected.quirk);
    SwitchOn({expected.quirk, "unplug:msg=1,ms=100"});
    const std::size_t mine = expected.errors[0] == 0 ? 1 : 2;
    for (const int round : {0, 1}) {
      ASSERT_EQ(3u, Paths().size());
      for (const std::size_t place : {1, 2}) EXPECT_EQ(expected.errors[place - 1], Open(place));
      ASSERT_EQ(0u, Open(mine));
      Send(Connect());
      if (round == 0) {
        EXPECT_EQ(2u, Paths().size());
        EXPECT_EQ(5u, Open(1));
      }
      now += 100;
    }
  }
}

TEST_F(PrinterTest, LeavesTheBusBeforeItWasOpened) {
  SwitchOn({"second-printer:first=1,held=1", "unplug:t=0,ms=100"});
  EXPECT_EQ(2u, Paths().size());
  EXPECT_EQ(5u, Open(1));  // the second one stays
  now += 100;
  EXPECT_EQ(0u, Open(2));
}

TEST_F(PrinterTest, SpellsItsPathAsAsked) {
  struct Case {
    const char* quirk;
    const char* identifiers;
    bool isLong;
  };
  for (const Case& expected : {Case{"path", "#VID_5E3C&PID_A71D#", false},
                               Case{"path:case=lower", "#vid_5e3c&pid_a71d#", false},
                               Case{"path:case=mixed,long=1", "#vId_5E3C&PiD_A71d#", true}}) {
    SwitchOn({expected.quirk});
    const std::string path = Paths().at(1);
    EXPECT_NE(std::string::npos, path.find(expected.identifiers)) << path;
    EXPECT_EQ(expected.isLong, path.size() > 255);
    EXPECT_EQ(0u, Open());
  }
}

// Two quirks at one moment, each used up on its own.
TEST_F(PrinterTest, ActsOnSeveralQuirksAtOnce) {
  SwitchOn({"late:msg=2,ms=300", "other-code:msg=2", "garbage:msg=2,form=split",
            "refuse:on=create,status=8"});
  ASSERT_EQ(0u, Open());
  Send(Connect());
  EXPECT_EQ(2, Code());
  const std::uint32_t sent = now;
  Send(JobCreate());
  EXPECT_EQ(0x103, Code());
  EXPECT_EQ((Bytes{3, 0, 0, 0, 5, 0, 8, 0}), Bytes([this] {
              Bytes reply = Receive();
              reply.resize(8);
              return reply;
            }()));
  EXPECT_EQ(301u, now - sent);
  Send(JobCreate());
  EXPECT_EQ(3, Code());
  EXPECT_EQ(302u, now - sent);
  EXPECT_EQ("", printer->Violation());

  SwitchOn({"unplug:msg=1,ms=100", "other-code:msg=1"});
  ASSERT_EQ(0u, Open());
  Send(Connect());
  now += 100;
  ASSERT_EQ(0u, Open());
  Send(Command(10));
  EXPECT_EQ(0x10A, Code());  // a reply that was never sent has used up nothing
}

}  // namespace
}  // namespace qrn::sim
