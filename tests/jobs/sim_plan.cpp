#include "jobs/sim_plan.h"

#include <algorithm>
#include <array>
#include <sstream>

#include "jobs/sim_quirk_draw.h"

using qrn::sim::Heads;
using qrn::sim::Machine;
using qrn::sim::Quirk;

namespace {

constexpr std::array<std::uint32_t, 4> kResolutions = {1080, 1440, 1620, 2160};
constexpr std::array<std::uint32_t, 4> kPasses = {3, 4, 6, 8};  // of a band with two heads
constexpr std::uint32_t kGroupPixels = 48;  // widths in whole groups print in every mode

std::size_t IndexOf(std::uint32_t resolution) {
  return static_cast<std::size_t>(std::find(kResolutions.begin(), kResolutions.end(), resolution) -
                                  kResolutions.begin());
}

template <class Range>
void Shuffle(Range& range, SeedStream& random) {
  for (std::uint32_t left = static_cast<std::uint32_t>(range.size()); left > 1; --left)
    std::swap(range[left - 1], range[random.Below(left)]);
}

void DrawInks(Machine& machine, SeedStream& random) {
  std::array<std::uint8_t, 8> inks{0, 1, 2, 3, 4, 5, 6, 7};
  Shuffle(inks, random);
  if (machine.heads != Heads::kBoth) {
    // Mostly a row an ink; else inks with two rows, or none.
    if (random.Percent(20)) {
      for (std::uint8_t& ink : inks) ink = static_cast<std::uint8_t>(random.Below(8));
    }
    machine.inkOrder.fill(inks);
    return;
  }
  if (random.Percent(50)) return;  // the driver's own order
  if (random.Percent(5)) {         // a row on each head
    machine.inkOrder[0] = machine.inkOrder[1] = inks;
    return;
  }
  for (std::size_t head = 0; head < 2; ++head) {
    auto& rows = machine.inkOrder[head];
    for (std::size_t row = 0; row < rows.size(); ++row) rows[row] = inks[4 * head + row / 2];
    Shuffle(rows, random);
  }
}

Machine DrawMachine(SeedStream& random) {
  Machine machine;
  const std::uint32_t heads = random.Below(100);
  machine.heads = heads < 48   ? Heads::kBoth
                  : heads < 72 ? Heads::kPha
                  : heads < 96 ? Heads::kPhb
                               : Heads::kNone;
  machine.twoHeadCarriage = machine.heads == Heads::kBoth || random.Percent(50);
  machine.mirroredHeads = random.Percent(40);
  machine.bidirectional = random.Percent(65);
  machine.fixedDir = static_cast<std::uint8_t>(random.Below(2));
  DrawInks(machine, random);
  const bool byTheBook = random.Percent(40);
  machine.headGapX.fill(static_cast<std::uint8_t>(byTheBook ? 0 : random.Below(256)));
  machine.headGapY.fill(static_cast<std::uint8_t>(byTheBook ? 0 : random.Below(256)));
  machine.biDirShift.fill(static_cast<std::uint8_t>(byTheBook ? 32 : random.Between(20, 50)));
  constexpr std::array<std::uint8_t, 6> kFeathers = {0, 0, 0, 10, 50, 98};
  machine.featherPercent =
      random.Percent(80) ? kFeathers[random.Below(6)] : static_cast<std::uint8_t>(random.Below(99));
  machine.margin = static_cast<std::uint16_t>(random.Below(100));
  machine.flashEvery = static_cast<std::uint8_t>(random.Below(5));
  machine.flashParam = static_cast<std::uint16_t>(random.Below(1000));
  machine.speed = static_cast<std::uint8_t>(random.Between(1, 20));
  return machine;
}

// Mostly small: what goes wrong seldom needs a long page.
void DrawPage(SimPlan& plan, SeedStream& random) {
  plan.resolution = kResolutions[random.Percent(60) ? random.Below(2) : random.Below(4)];
  const std::uint32_t width = random.Below(100);
  plan.widthPixels =
      kGroupPixels * (width < 75 ? random.Between(1, 6) : random.Between(7, width < 97 ? 30 : 90));
  if (random.Percent(8)) plan.widthPixels += random.Between(1, kGroupPixels - 1);
  const std::uint32_t lines = random.Below(100);
  plan.lines = lines < 45   ? random.Between(1, 120)
               : lines < 85 ? random.Between(100, 600)
               : lines < 97 ? random.Between(600, 1300)
                            : random.Between(1300, 2500);
  const std::uint32_t image = random.Below(100);
  plan.image = image < 45   ? ImageKind::kRandom
               : image < 55 ? ImageKind::kSolid
               : image < 90 ? ImageKind::kSparse
               : image < 97 ? ImageKind::kDot
                            : ImageKind::kBlank;
}

void DrawHost(SimPlan& plan, SeedStream& random) {
  plan.lineApi = random.Percent(50);
  plan.nextLineApi = random.Percent(50);
  const std::uint32_t mistakes = random.Percent(50) ? 0 : random.Between(1, 3);
  for (std::uint32_t i = 0; i < mistakes; ++i) plan.mistakes |= 1u << random.Below(13);
  constexpr std::uint32_t kLineFamilyOnly = kBadColors | kRepeatsColors | kWrongOrder;
  if (!plan.lineApi) plan.mistakes &= ~kLineFamilyOnly;
  if (plan.widthPixels % kGroupPixels != 0) plan.mistakes &= ~std::uint32_t{kLongLines};
  plan.linesHanded = plan.Makes(kStopsShort) ? random.Below(plan.lines) : plan.lines;
  plan.badJob = static_cast<BadJob>(random.Below(static_cast<std::uint32_t>(BadJob::kCount)));
  if (random.Percent(30)) {
    plan.restEveryLines = random.Between(1, 200);
    plan.restMs = random.Between(1, 1500);
  }
}

void DrawWorld(SimPlan& plan, SeedStream& random) {
  plan.chinese = random.Percent(50);
  plan.boxOpenMs = random.Percent(70) ? random.Between(1, 2000) : random.Between(2000, 30'000);
  const bool slow = random.Percent(40);
  plan.writeLatencyMaxMs = slow ? random.Between(1, random.Percent(20) ? 130 : 20) : 0;
  plan.readLatencyMaxMs = slow ? random.Between(1, random.Percent(20) ? 400 : 60) : 0;
  // Now and then the tick count comes round in the middle of a job.
  plan.startTickMs =
      random.Percent(70) ? random.Between(1, 1'000'000) : UINT32_MAX - random.Between(0, 60'000);
  plan.noThread = random.Percent(1);
  plan.patienceMs = random.Between(60'000, 180'000);
  const std::uint32_t quirks = random.Below(100);
  const int count = quirks < 15 ? 0 : quirks < 55 ? 1 : quirks < 80 ? 2 : quirks < 92 ? 3 : 4;
  for (int i = 0; i < count; ++i) plan.quirks.push_back(DrawQuirk(random));
}

// A host that goes on while its thread hangs in a read: too much at once to come of itself.
void DrawHang(SimPlan& plan, SeedStream& random) {
  if (!plan.Makes(kNoEnd) || !random.Percent(30)) return;
  plan.quirks.push_back("silence:msg=" + std::to_string(random.Between(3, 6)));
  plan.restEveryLines = plan.lines;
  plan.restMs = random.Between(200, 1500);
}

const char* NameOf(ImageKind kind) {
  constexpr std::array<const char*, 5> kNames = {"random", "solid", "sparse", "dot", "blank"};
  return kNames[static_cast<std::size_t>(kind)];
}

const char* NameOf(Heads heads) {
  constexpr std::array<const char*, 4> kNames = {"both", "PHA", "PHB", "none"};
  return kNames[static_cast<std::size_t>(heads)];
}

constexpr std::array<const char*, 13> kMistakeNames = {
    "long-lines",     "short-lines",  "bad-colors", "null-lines", "lines-behind",
    "stops-short",    "calls-before", "no-end",     "ends-twice", "aborts",
    "repeats-colors", "wrong-order",  "bad-job"};

}  // namespace

std::uint64_t SeedStream::Next() {
  state_ += 0x9E3779B97F4A7C15u;
  std::uint64_t z = state_;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
  return z ^ (z >> 31);
}

SimPlan SimPlan::Draw(std::uint64_t seed) {
  SeedStream random(seed);
  SimPlan plan;
  plan.seed = seed;
  plan.machine = DrawMachine(random);
  DrawPage(plan, random);
  DrawHost(plan, random);
  DrawWorld(plan, random);
  DrawHang(plan, random);
  return plan;
}

qrn::sim::QuirkScript SimPlan::Script() const {
  qrn::sim::QuirkScript script;
  for (const std::string& text : quirks) {
    Quirk quirk;
    std::string error;
    if (qrn::sim::ParseQuirk(text, &quirk, &error)) script.push_back(quirk);
  }
  return script;
}

std::uint64_t SimPlan::BoundMs() const {
  const std::uint64_t passes = kPasses[IndexOf(resolution)];
  const std::uint64_t bandLinesMin = 112;
  const std::uint64_t swaths = (lines / bandLinesMin + 7) * 2 * passes;
  const std::uint64_t dataBytes = (resolution * 6400ull / 254 + 8ull * LineBytes()) * 360 / passes;
  const std::uint64_t transfers = dataBytes / 57344 + 8;
  const std::uint64_t latencyMs = writeLatencyMaxMs + readLatencyMaxMs + 2;
  // A swath waits for its turn, for room, and for its transfers.
  std::uint64_t bound = 60'000 + swaths * (1200 + transfers * latencyMs);
  if (restEveryLines != 0) bound += std::uint64_t{lines / restEveryLines + 1} * restMs;
  bool pulled = false;
  for (const Quirk& quirk : Script()) {
    const QuirkEffect effect = EffectOf(quirk, *this);
    bound += effect.costMs;
    pulled |= effect.pullsLink;
  }
  // The link is given up once, with two boxes; a thread that hangs is ended by force.
  if (pulled) bound += 45'000;
  return bound + 8ull * boxOpenMs + 2 * 22'000;
}

std::vector<std::string> SimPlan::MistakeNames() const {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < kMistakeNames.size(); ++i) {
    if (((mistakes >> i) & 1u) != 0) names.push_back(kMistakeNames[i]);
  }
  return names;
}

std::string SimPlan::Text() const {
  std::ostringstream text;
  text << "seed=" << seed << " " << resolution << "dpi " << widthPixels << "x" << lines << " "
       << NameOf(image) << " heads=" << NameOf(machine.heads)
       << (machine.twoHeadCarriage ? "/2" : "/1") << (machine.mirroredHeads ? " mirrored" : "")
       << (machine.bidirectional   ? " bidirectional"
           : machine.fixedDir != 0 ? " reverse"
                                   : " forward")
       << " feather=" << int{machine.featherPercent} << " gaps=" << int{machine.headGapX[0]} << "/"
       << int{machine.headGapY[0]} << " db=" << int{machine.biDirShift[0]}
       << " flash=" << int{machine.flashEvery} << " inks=";
  for (const auto& head : machine.inkOrder) {
    for (const std::uint8_t ink : head) text << int{ink};
    text << (&head != &machine.inkOrder.back() ? "-" : "");
  }
  text << " api=" << (lineApi ? "line" : "stream") << "," << (nextLineApi ? "line" : "stream");
  for (const std::string& mistake : MistakeNames()) text << " " << mistake;
  if (Makes(kStopsShort)) text << "=" << linesHanded;
  if (Makes(kBadJob)) text << " bad=" << int{static_cast<std::uint8_t>(badJob)};
  if (restEveryLines != 0) text << " rest=" << restMs << "ms/" << restEveryLines;
  text << (chinese ? " chinese" : " english") << " box=" << boxOpenMs
       << "ms latency=" << writeLatencyMaxMs << "/" << readLatencyMaxMs << " tick=" << startTickMs
       << (noThread ? " no-thread" : "") << " patience=" << patienceMs;
  for (const std::string& quirk : quirks) text << " quirk=" << quirk;
  return text.str();
}

std::string SimPlan::RerunLine(const std::string& program) const {
  return program + " --seed=" + std::to_string(seed);
}
