#include "jobs/plan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "jobs/draw.h"

using qrn::sim::Quirk;
using scenarios::HostStep;
using scenarios::Scenario;
using Kind = Quirk::Kind;

namespace {

// One line of a scenario begins at each line break; docs/testing.md and docs/simulator.md explain
// the words. Widths are whole groups in every mode.
const Grammar kGrammar = {
    {"plan", "{50*<job>\n<machine>\n<system><printer>|<hang>}"},
    {"job",
     "job {line <page>\nhost {<good>|<line host>}|stream <page>\nhost {<good>|<stream host>}} "
     "<end>"},
    {"page",
     "{3*<narrow>|{336|672|1440|2880}}x{9*{1..120}|8*{100..600}|2*{600..1300}|{1300..2500}} "
     "{2*1080|2*1440|1620|2160} <image><bad>"},
    {"narrow", "{48|96|144|192|240|288}"},
    {"image",
     "{4*random seed={1..1000000}|solid|4*{all|pha} lines={0..60}-{50..90},{100..300}-{250..330},"
     "{400..1900}-{1000..1950}|pha lines={0..100}|blank}"},
    {"bad", "{40*| undescribed| resX=1200| colors=7| bits=1| resY=180| width=1000000}"},

    {"good", "start {3*lines|lines:rest={1..30}|lines={1..500} rest={1..1500} lines}"},
    {"line host",
     "{4*|call={0..7} ask |lines end }start <line step> <line step> <line step>{3* lines|}"
     "{3*| call={0..7}| lines call=0 call=1}"},
    {"line step",
     "{lines={1..200}|lines={1..9}:bytes={0..300}|call={0..7}:null|call={8..9}|call=0xffffffff|"
     "call={0..7}|call=0:bytes={0..9}|lines={1..3}:null|ask|call=7 call=0 call=1}"},
    {"stream host",
     "{4*|write={1..9} ask |lines end }start <stream step> <stream step>{3* lines|}{3*| "
     "write={1..17}}"},
    {"stream step",
     "{lines={1..200}|lines={1..9}:bytes={0..300}|write:null|write={1..20}|lines={1..3}:null|ask|"
     "call=0}"},
    {"end", "{8*end|end end|<no end>}"},
    {"no end", "{rest={1..1500}|}\njob line 48x2 1440 pha undescribed\nhost start end"},
    {"hang",
     "job line 48x2 1440 pha\nhost start lines rest={900..2000} <no end>\nprinter "
     "silence:on=swath,at={1..4}"},

    {"machine",
     "machine heads={10*both{3*|<two heads>}|5*pha <carriage> ink_order_pha=<rows>|"
     "5*phb <carriage> ink_order_phb=<rows>|2*none <carriage> ink_order_fourth=<rows>}\n"
     "machine mirrored_heads=<flag> bidirectional=<flag> fixed_direction={0|1}\n"
     "machine {2*|head_gap_x={0..255} head_gap_y={0..255} bidirectional_shift={20..50} }"
     "feathering_percent={3*0|10|50|98|{1..98}} margin={0..99} speed={1..20}\n"
     "machine flash_interval={0..4} flash_amount={0..999}"},
    {"flag", "{true|false}"},
    {"carriage", "two_head_carriage=<flag>"},
    {"rows",
     "{4*{0,1,2,3,4,5,6,7|7,6,5,4,3,2,1,0|5,1,2,3,4,0,6,7|2,7,4,1,0,3,6,5}|"
     "{0..7},{0..7},{0..7},{0..7},{0..7},{0..7},{0..7},{0..7}}"},
    {"two heads",
     " ink_order_{4*pha=7,3,2,1,7,2,3,1 ink_order_phb=0,4,0,5,6,6,5,4|"
     "4*pha=5,5,1,1,0,0,2,2 ink_order_phb=3,4,7,6,6,7,4,3|"
     "pha=0,1,2,3,4,5,6,7 ink_order_phb=0,1,2,3,4,5,6,7}"},

    {"system",
     "system {chinese |}box={7*{1..2000}|3*{2000..30000}} "
     "tick={2*{1..1000000}|{4294907296..4294967295}} "
     "seed={1..1000000}{99*| no-thread}"},

    {"printer",
     "{3*|8*\nprinter <quirk>|5*\nprinter <quirk> <quirk>|2*\nprinter <quirk> <quirk> <quirk>|"
     "\nprinter silence:<trigger> unplug:t={30000..120000},ms={1..40000}}"},
    {"trigger", "{at={{1..4}|{1..20}}|t={{0..2000}|{0..20000}}|2*<message>}"},
    {"message", "msg={2*{1..4}|2*{5..20}|{1..60}}"},
    {"quirk",
     "{refuse:on=connect,status={0|3|4|5|0x50|0x5f|0x21|1|{0..65535}},count={1..4}|"
     "buffer-full:<trigger>,count={4*{1..30}|1000}|"
     "refuse:on={create|swath|end|cancel|poll|query},status={0|1|7|0xffff},<trigger>,count={1..4}|"
     "2*pause:<trigger>,ms={4*{1..12000}|{12000..200000}},on={swath|query|poll},"
     "update={none|same|db|calib|short}|"
     "cancel:<trigger>{,on=swath|,gone=1|,on=poll|,on=query}|"
     "other-code:<trigger>,count={1..5}|"
     "late:<trigger>,ms={{1..300}|{300..15000}}|late:<trigger>,ms={1..40},count=1000|"
     "silence:<trigger>,ms={1..40000}|"
     "2*garbage:<trigger>,form={kind|random|words|short|empty|split|overlong|restart},count={4*{1.."
     "2}|{1..20}}|"
     "say:on=test,first=1,words=8*0{|/8*0/8*0}|"
     "read-fails:{read={1..60}|<message>},<failure>|"
     "write-fails:{write={1..300}|<message>},where={any|packet|data},<failure>|"
     "2*unplug:{9*{write={1..300}|read={1..60}|byte={1..20000000}|<message>|t={1..20000}}|t=0}"
     "{,ms={1..40000}|,ms={1..9000}|},back={same|other|held,held-ms={1..20000}}|"
     "block:defect={signature|short|head|resolution|width|selector|calib|ink|feather},count={1..2}|"
     "second-printer:held={0|1},first={0|1}|path:case={lower|upper|mixed},long={0|1}|"
     "refuse:on=swath,status=7,at={1..20},count={1..4}}"},
    {"failure", "count={3*1|{2..9}},error={31|{1..2000}}"},

    // Every thread sleeps in earnest: what the printer does is over within a fraction of a second.
    {"small plan", "{50*<small job>|<hang>}"},
    {"small job",
     "job {line|stream} 48x2 1080 solid\nhost start lines{15*|=1} {15*end|rest={1..999} <no end>}\n"
     "machine heads=pha two_head_carriage=false ink_order_pha=7,6,5,4,3,2,1,0<small printer>"},
    {"small printer", "{8*|50*\nprinter <small quirk>}"},
    {"small quirk",
     "{9*unplug:msg={1..18},ms={3|150}|unplug:msg={1..18}|2*unplug:byte={1..20}00000,ms=3|"
     "6*pause:at={1..5},ms=120,on={swath|query}|8*cancel:at={1..5}{|,on=query|,gone=1}|"
     "4*buffer-full:at={1..5},count=6|2*refuse:on=swath,status=7,at={1..5},count=2|"
     "2*refuse:on=swath,status=2,at={1..5}|2*refuse:on=connect,status=0x52,count={1..3}|"
     "2*refuse:on=connect,status={1..2}|4*write-fails:write={1..30}|4*read-fails:read={1..18}|"
     "2*late:msg={1..18},ms=10|2*garbage:form=kind,msg={1..18}}"},
};

// A printer that goes away for a while is found by the first attempt after that; the sixth attempt
// is the last.
constexpr std::uint64_t kGivenUpMs = 32'000, kNextAttemptMs = 8'000, kOpenedMs = 1'300;
// The second that a thread has to end.
constexpr std::uint64_t kThreadEndMs = 1'100;

// The longest that a driver rests before it goes on.
std::uint64_t RestMs(Kind kind) {
  switch (kind) {
    case Kind::kLate:
    case Kind::kPath:
    case Kind::kSecondPrinter:
      return 0;
    case Kind::kBufferFull:
      return 510;
    case Kind::kPause:
      return 5'000;
    default:
      return 3'100;
  }
}

bool PullsLink(const Quirk& quirk) {
  return quirk.kind == Kind::kUnplug || quirk.kind == Kind::kReadFails ||
         quirk.kind == Kind::kWriteFails;
}

void PullLink(const Quirk& quirk, Fate* fate) {
  const std::uint64_t awayMs = std::uint64_t{quirk.ms} + quirk.heldMs, failed = quirk.count - 1;
  const bool isUnplug = quirk.kind == Kind::kUnplug;
  const bool isForGood =
      quirk.ms == 0 || (quirk.back == qrn::sim::Back::kHeld && quirk.heldMs == 0);
  // It may be that no attempt finds the printer.
  const bool loses = isUnplug ? isForGood || awayMs > 29'000 : failed >= 5;
  // 4.2 seconds pass between the first two attempts, and one more each time.
  const std::uint64_t ms = isUnplug ? awayMs + kNextAttemptMs : failed * (3'700 + 500 * failed);
  fate->costMs += loses ? kGivenUpMs : std::min(ms + kOpenedMs, kGivenUpMs);
  fate->mayLose |= loses;
}

// Whether the driver asks again after such a refusal of its connect.
bool AsksAgain(std::uint32_t status) {
  return status == 0 || (status >= 3 && status <= 5) || (status & 0xFFF0u) == 0x50u;
}

// A short update that an overlong reply fills up has other values, too.
bool AltersPage(const Quirk& quirk, const Scenario& plan) {
  using qrn::sim::Defect;
  using qrn::sim::Update;
  const bool isFilled = std::any_of(plan.quirks.begin(), plan.quirks.end(), [](const Quirk& other) {
    return other.form == qrn::sim::Garbage::kOverlong;
  });
  return quirk.update == Update::kCorrection || quirk.update == Update::kCalibration ||
         (quirk.update == Update::kShort && isFilled) || quirk.defect == Defect::kResolution ||
         quirk.defect == Defect::kFeather ||
         (quirk.defect == Defect::kInk && plan.machine.heads != qrn::sim::Heads::kBoth);
}

void AddQuirk(const Quirk& quirk, const Scenario& plan, Fate* fate) {
  const bool isRefused = quirk.kind == Kind::kRefuse && quirk.on == qrn::sim::Message::kConnect &&
                         !AsksAgain(quirk.status);
  const bool isAwayAtStart =
      quirk.kind == Kind::kUnplug && quirk.trigger == Quirk::Trigger::kTime && quirk.at == 0;
  const bool isSilentForGood = quirk.kind == Kind::kSilence && quirk.ms == 0;
  fate->mayFail |= isRefused || isAwayAtStart || quirk.kind == Kind::kBlock;
  fate->mayCancel |= quirk.kind == Kind::kCancel;
  fate->altersPage |= AltersPage(quirk, plan);
  if (PullsLink(quirk)) return PullLink(quirk, fate);
  fate->costMs += quirk.count * (RestMs(quirk.kind) + quirk.ms) + kThreadEndMs;
  if (isSilentForGood) fate->costMs += 120'000;
}

}  // namespace

Scenario DrawPlan(const std::string& name, std::uint64_t seed) {
  Scenario plan;
  plan.title = name + " " + std::to_string(seed);
  std::istringstream text(Drawing(kGrammar, seed).Draw("<" + name + ">"));
  for (std::string line; std::getline(text, line);) plan.lines.push_back(line);
  std::string error;
  EXPECT_TRUE(Understand(&plan, &error)) << error;
  return plan;
}

std::string TextOf(const Scenario& plan) {
  std::string text = "== " + plan.title + "\n";
  for (const std::string& line : plan.lines) text += line + "\n";
  return text;
}

Fate FateOf(const Scenario& plan) {
  Fate fate;
  fate.mayFail = plan.system.failThreadStart || plan.jobs[0].misdescribed || plan.jobs.size() > 1;
  for (const Quirk& quirk : plan.quirks) AddQuirk(quirk, plan, &fate);
  if (std::count_if(plan.quirks.begin(), plan.quirks.end(), PullsLink) > 1) {
    // One hinders the attempts that the other has made necessary.
    fate.mayLose = true;
    fate.costMs += kGivenUpMs;
  }
  for (const HostStep& step : plan.jobs[0].host) {
    if (step.what == HostStep::kRest) fate.costMs += step.count;
    if (step.what == HostStep::kLines)
      fate.costMs += std::uint64_t{step.restMs} * std::min(step.count, plan.jobs[0].height);
  }
  return fate;
}
