// What a virtual printer is made to do wrong, and when.
#ifndef QRN_SIM_QUIRKS_H_
#define QRN_SIM_QUIRKS_H_

#include <cstdint>
#include <string>
#include <vector>

namespace qrn::sim {

// Which reply reports a pause or a cancel: to a swath, to a buffer query, to a pause poll; or a
// swath's reply that knows no job any more.
enum class Via : std::uint32_t { kSwath, kBuffer, kPoll, kGone };
// The parameter update in a pause reply: none, what the connect said, another bidirectional
// correction, another feed calibration, or one cut short.
enum class Update : std::uint32_t { kNone, kSame, kCorrection, kCalibration, kShort };
enum class Garbage : std::uint32_t {
  kKind,      // in front of the reply: a packet of no known chunk kind
  kRandom,    // in front of it: a reply of random bytes
  kWords,     // in front of it: a packet that announces more words than it holds
  kShort,     // the reply ends behind its code
  kEmpty,     // a reply of no words in front of the reply
  kSplit,     // the reply in pieces of four bytes: first, middle, last
  kOverlong,  // the reply goes on, with zeros, past 3000 bytes
  kRestart,   // a reply that begins, breaks off and begins again
};
enum class Where : std::uint32_t { kAny, kPacket, kData };
// How an unplugged device comes back.
enum class Back : std::uint32_t { kSamePath, kOtherPath, kHeld };
enum class PathCase : std::uint32_t { kUpper, kLower, kMixed };
enum class Defect : std::uint32_t {
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

struct Quirk {
  enum class Kind {
    kConnectRefused,  // `count` connects are refused with status `value`
    kBufferFull,      // `count` buffer queries answer no room
    kRefuse,          // `count` messages with code `code` are refused with status `value`
    kSpoolOverflow,   // swath `at` is refused `count` times with status 7
    kPause,           // the job is paused for `durationMs`, then resumed
    kCancel,          // the operator cancels
    kOtherCode,       // `count` replies to other codes come in front of a reply
    kLate,            // a reply comes `durationMs` later
    kSilence,         // no reply for `durationMs`; 0 = none until the device is opened again
    kGarbage,         // `count` replies are spoilt
    kZeroAnswers,     // `count` answers of zeros in front of the answer to an answer test
    kWriteFails,      // `count` bulk writes fail with error `value`
    kReadFails,       // `count` bulk reads fail with error `value`
    kUnplug,          // the device is gone for `durationMs`; 0 = for good
    kSecondPrinter,   // another printer of the kind stands on the bus
    kPath,            // how the device path is spelled
    kBlock,           // the parameter blocks of `count` connects have a defect
  };
  // What `at` counts; the first is 1. A quirk is due from its moment on, until it is used up.
  enum class Moment {
    kStart,    // nothing: the quirk is due from the start
    kSwath,    // swaths of a job, feed-only ones included; a swath's buffer query belongs to it
    kMessage,  // messages since the printer was switched on: a command is one, its data another
    kWrite,    // bulk writes, failed ones included
    kRead,     // bulk reads, failed ones included
    kByte,     // bytes that the host has written
    kChunk,    // frames: a command packet is one, each slot of a group another
    kTime,     // milliseconds since the host first looked at the bus
  };

  Kind kind = Kind::kConnectRefused;
  std::uint32_t at = 1;
  std::uint32_t count = 1;
  std::uint32_t value = 0;
  std::uint32_t durationMs = 0;
  Moment moment = Moment::kSwath;
  std::uint32_t which = 0;   // Via, Garbage, Where, Back, PathCase or Defect, by the kind
  std::uint32_t update = 0;  // Update
  std::uint32_t code = 0;
  std::uint32_t heldMs = 0;  // 0 = for good
  std::uint32_t held = 0, first = 0, longPath = 0;

  template <class Word>
  bool Is(Word word) const {
    return which == static_cast<std::uint32_t>(word);
  }
};

using QuirkScript = std::vector<Quirk>;

// A quirk costs a job at most this much: the driver comes back within three seconds, so that 1000
// times make an hour. A script of a hundred quirks stays below the seven days after which virtual
// time gives a job up.
constexpr std::uint32_t kQuirkCountMax = 1000;
constexpr std::uint32_t kQuirkMsMax = 3'600'000;

// One quirk a string, such as "pause:at=3,ms=5000"; docs/simulator.md lists the kinds and their
// fields. False, with a one-line reason, when it is not one.
bool ParseQuirk(const std::string& text, Quirk* quirk, std::string* error);

}  // namespace qrn::sim

#endif  // QRN_SIM_QUIRKS_H_
