// One schedule of the whole-job simulation, drawn from a seed alone: machine, image, how the host
// behaves and what goes wrong. The same seed is the same plan on every system.
#ifndef QRN_TESTS_JOBS_SIM_PLAN_H_
#define QRN_TESTS_JOBS_SIM_PLAN_H_

#include <cstdint>
#include <string>
#include <vector>

#include "sim/machine.h"
#include "sim/quirks.h"

// splitmix64, so that a seed draws the same everywhere.
class SeedStream {
 public:
  explicit SeedStream(std::uint64_t seed) : state_(seed) {}
  std::uint64_t Next();
  // 0..end-1. Requires: end > 0.
  std::uint32_t Below(std::uint32_t end) { return static_cast<std::uint32_t>(Next() % end); }
  std::uint32_t Between(std::uint32_t first, std::uint32_t last) {
    return first + Below(last - first + 1);
  }
  bool Percent(std::uint32_t chance) { return Below(100) < chance; }

 private:
  std::uint64_t state_;
};

// What the host does that it should not, or may do at any time. Bits of SimPlan::mistakes.
enum HostMistake : std::uint32_t {
  kLongLines = 1u << 0,       // more bytes than a line has
  kShortLines = 1u << 1,      // fewer
  kBadColors = 1u << 2,       // colours from 8 on (line family)
  kNullLines = 1u << 3,       // no line at all
  kLinesBehind = 1u << 4,     // lines behind the last one
  kStopsShort = 1u << 5,      // the last lines never come
  kCallsBefore = 1u << 6,     // lines and ends in front of the start
  kNoEnd = 1u << 7,           // the next start comes instead of the end
  kEndsTwice = 1u << 8,       // two ends
  kAborts = 1u << 9,          // AbortPrint and ExitPrinter now and then
  kRepeatsColors = 1u << 10,  // a colour of a line twice, another line first (line family)
  kWrongOrder = 1u << 11,     // the colour that completes a line comes first (line family)
  kBadJob = 1u << 12,         // a job that no printer takes
};

enum class ImageKind : std::uint8_t { kRandom, kSolid, kSparse, kDot, kBlank };

// A job that the printer does not take: which word of its description is wrong.
enum class BadJob : std::uint8_t {
  kNull,
  kResolution,
  kColors,
  kBits,
  kLinesAnInch,
  kTooWide,
  kCount,
};

struct SimPlan {
  std::uint64_t seed = 0;
  qrn::sim::Machine machine;
  std::uint32_t resolution = 1440;
  std::uint32_t widthPixels = 48;
  std::uint32_t lines = 1;
  ImageKind image = ImageKind::kRandom;

  bool lineApi = false, nextLineApi = false;  // of the job, and of the clean one behind it
  std::uint32_t mistakes = 0;                 // HostMistake
  std::uint32_t linesHanded = 0;              // fewer than `lines` when the host stops short
  BadJob badJob = BadJob::kNull;
  std::uint32_t restEveryLines = 0, restMs = 0;  // the host takes its time; 0 = it does not

  bool chinese = false;
  std::uint32_t boxOpenMs = 500;
  std::uint32_t writeLatencyMaxMs = 0, readLatencyMaxMs = 0;  // on top of the printer's own
  std::uint32_t startTickMs = 1000;
  bool noThread = false;  // the system gives the library no thread
  // A transfer that hangs for so long makes somebody pull the plug, for good.
  std::uint32_t patienceMs = 120'000;
  std::vector<std::string> quirks;

  static SimPlan Draw(std::uint64_t seed);

  bool Makes(HostMistake mistake) const { return (mistakes & mistake) != 0; }
  std::vector<std::string> MistakeNames() const;
  std::uint32_t LineBytes() const { return (widthPixels * 2 + 31) / 32 * 4; }
  qrn::sim::QuirkScript Script() const;
  // Virtual time in which both jobs and all that befalls them are over.
  std::uint64_t BoundMs() const;

  std::string Text() const;  // in one line
  // The command that runs this plan alone, with the build that this program is of.
  std::string RerunLine(const std::string& program) const;
};

// What a quirk may do to a job.
struct QuirkEffect {
  bool mayEndJob = true;     // more than a delay
  bool altersPage = false;   // the driver prints with other parameters than the machine's
  bool pullsLink = false;    // transfers fail
  std::uint64_t costMs = 0;  // of virtual time, at most
};
QuirkEffect EffectOf(const qrn::sim::Quirk& quirk, const SimPlan& plan);
// Whether it takes the device away before the host opens it: a start then fails at once.
bool IsAwayAtStart(const qrn::sim::Quirk& quirk);
// Of the attempts to reconnect after one loss of the link, at most.
std::uint64_t ReconnectMs(const SimPlan& plan);

#endif  // QRN_TESTS_JOBS_SIM_PLAN_H_
