// What a virtual printer is made to do wrong, and when.
#ifndef QRN_SIM_QUIRKS_QUIRKS_H_
#define QRN_SIM_QUIRKS_QUIRKS_H_

#include <cstdint>
#include <string>
#include <vector>

namespace qrn::sim {

// What the driver sends. A swath and its data are one here.
enum class Message {
  kAny,
  kConnect,
  kCreate,
  kSwath,
  kEnd,
  kCancel,
  kPoll,
  kQuery,
  kTest,  // whether the printer answers, after a reconnection
};

// The parameter update in a pause reply: none, what the connect said, another bidirectional
// correction, another feed calibration, or one cut short.
enum class Update { kNone, kSame, kCorrection, kCalibration, kShort };
enum class Garbage {
  kKind,      // before the reply, a packet of no known chunk kind
  kRandom,    // before the reply, one of random bytes
  kWords,     // before the reply, a packet that announces more words than it holds
  kShort,     // the reply ends after its code
  kEmpty,     // before the reply, one of no words
  kSplit,     // the reply in pieces of four bytes: first, middle, last
  kOverlong,  // the reply goes on, with zeros, past 3000 bytes
  kRestart,   // a reply that begins, breaks off and begins again
};
enum class Where { kAny, kPacket, kData };
// How an unplugged device comes back.
enum class Back { kSamePath, kOtherPath, kHeld };
enum class PathCase { kUpper, kLower, kMixed };
enum class Defect {
  kSignature,
  kShort,       // half of the block
  kHead,        // an unknown head type
  kResolution,  // the corrections of all resolutions are wild
  kWidth,       // a carriage that reaches nowhere
  kSelector,    // a calibration that is not in the table
  kCalibration,
  kInk,
  kFeather,
};

// Words that are said in one packet; one without a kind becomes as many as its words need.
struct SaidPacket {
  std::uint16_t kind = 0;
  std::uint16_t announced = 0;  // how many words the packet says it holds
  std::vector<std::uint16_t> words;
};

struct Quirk {
  // What it does. docs/simulator.md says it in full; the table in quirks.cpp, with which fields.
  enum class Kind {
    kListFails,
    kOpenFails,
    kUnplug,
    kSecondPrinter,
    kPath,
    kWriteFails,
    kReadFails,
    kRefuse,
    kBlock,
    kBufferFull,
    kPause,
    kCancel,
    kSay,
    kOtherCode,
    kGarbage,
    kLate,
    kSilence,
  };
  // What `at` counts; the first is 1. A quirk is due from its trigger on, until it is used up.
  enum class Trigger {
    kStart,    // nothing: the quirk is due from the start
    kSwath,    // swaths of a job, feed-only ones included; a swath's buffer query belongs to it
    kMessage,  // messages since the printer was switched on: a command is one, its data another
    kWrite,    // bulk writes, failed ones included
    kRead,     // bulk reads, failed ones included
    kByte,     // bytes that the host has written
    kTime,     // milliseconds since the host first looked at the bus
  };

  std::string text;  // as it was given
  Kind kind = Kind::kListFails;
  Trigger trigger = Trigger::kStart;
  std::uint32_t at = 0;
  Message on = Message::kAny;  // acts on these messages alone
  std::uint32_t count = 1;     // how often it acts
  std::uint32_t ms = 0;        // how long; 0 = for good
  std::uint32_t heldMs = 0;    // how long another program holds the printer; 0 = for good
  std::uint16_t status = 0;    // of a refusal
  std::uint16_t error = 0;     // of the system
  Update update = Update::kNone;
  Garbage form = Garbage::kKind;
  Where where = Where::kAny;
  Back back = Back::kSamePath;
  PathCase spelling = PathCase::kUpper;
  Defect defect = Defect::kSignature;
  bool first = false;     // before the other printer, or before the reply
  bool held = false;      // the second printer
  bool gone = false;      // the job that is cancelled
  bool longPath = false;  // more than 255 characters
  std::vector<SaidPacket> words;
};

using QuirkScript = std::vector<Quirk>;

// A quirk costs a job at most this much: the driver comes back within three seconds, so that 1000
// times make an hour. A script of 100 quirks stays below the seven days after which virtual time
// gives a job up.
constexpr std::uint32_t kQuirkCountMax = 1000;
constexpr std::uint32_t kQuirkMsMax = 3'600'000;

// One quirk a string, such as "pause:at=3,ms=5000"; docs/simulator.md lists the kinds and their
// fields. False, with a one-line reason, when it is not one.
bool ParseQuirk(const std::string& text, Quirk* quirk, std::string* error);

// Where the virtual printer does what a quirk says.
enum class Acts { kOnBus, kOnWrite, kOnRead, kInFirmware, kOnReply };
Acts WhereActs(Quirk::Kind kind);

}  // namespace qrn::sim

#endif  // QRN_SIM_QUIRKS_QUIRKS_H_
