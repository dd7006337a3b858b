#include "jobs/sim_quirk_draw.h"

#include <array>

using qrn::sim::Defect;
using qrn::sim::Quirk;
using qrn::sim::Update;

namespace {

constexpr std::uint32_t kMessagesMax = 60, kSwathsMax = 20, kBytesMax = 20'000'000;

std::string Number(const char* field, std::uint32_t value) {
  return std::string(field) + "=" + std::to_string(value);
}

// For so long; 0 = for good.
std::string ForMs(const char* field, std::uint32_t ms) {
  return ms != 0 ? "," + Number(field, ms) : "";
}

template <std::size_t kWords>
std::string Word(const char* field, const std::array<const char*, kWords>& words,
                 SeedStream& random) {
  return std::string(field) + "=" + words[random.Below(kWords)];
}

// The first messages are the ones that start a job.
std::string MessageMoment(SeedStream& random) {
  return Number("msg", random.Between(1, random.Percent(30) ? 4 : kMessagesMax));
}

// A moment of one of the three clocks that most kinds know.
std::string AnyMoment(SeedStream& random) {
  switch (random.Below(4)) {
    case 0:
      return Number("at", random.Between(1, kSwathsMax));
    case 1:
      return Number("t", random.Below(20'000));
    default:
      return MessageMoment(random);
  }
}

std::string TransferMoment(const char* transfer, std::uint32_t most, SeedStream& random) {
  return random.Percent(50) ? Number(transfer, random.Between(1, most)) : MessageMoment(random);
}

std::string DrawConnectRefused(SeedStream& random) {
  constexpr std::array<std::uint32_t, 8> kStatus = {0, 3, 4, 5, 0x50, 0x5F, 0x21, 1};
  const std::uint32_t status = random.Percent(70)   ? kStatus[random.Below(6)]
                               : random.Percent(50) ? kStatus[random.Below(8)]
                                                    : random.Below(0x10000);
  return "refuse:on=connect," + Number("status", status) + "," +
         Number("count", random.Between(1, 4));
}

std::string DrawRefuse(SeedStream& random) {
  constexpr std::array<const char*, 6> kMessages = {"create", "swath", "end",
                                                    "cancel", "poll",  "query"};
  constexpr std::array<std::uint32_t, 4> kStatus = {0, 1, 7, 0xFFFF};
  return "refuse:" + Word("on", kMessages, random) + "," +
         Number("status", kStatus[random.Below(4)]) + "," + AnyMoment(random) + "," +
         Number("count", random.Between(1, 4));
}

std::string DrawPause(SeedStream& random) {
  constexpr std::array<const char*, 3> kVia = {"swath", "query", "poll"};
  constexpr std::array<const char*, 5> kUpdates = {"none", "same", "db", "calib", "short"};
  return "pause:" + AnyMoment(random) + "," +
         Number("ms",
                random.Percent(80) ? random.Between(1, 12'000) : random.Between(12'000, 200'000)) +
         "," + Word("on", kVia, random) + "," + Word("update", kUpdates, random);
}

std::string DrawUnplug(SeedStream& random) {
  constexpr std::array<const char*, 3> kBack = {"same", "other", "held"};
  std::string moment = Number("t", 0);  // see IsAwayAtStart
  switch (random.Percent(10) ? 5 : random.Below(5)) {
    case 0:
      moment = Number("write", random.Between(1, 300));
      break;
    case 1:
      moment = Number("read", random.Between(1, kMessagesMax));
      break;
    case 2:
      moment = Number("byte", random.Between(1, kBytesMax));
      break;
    case 3:
      moment = Number("byte", 8192 * random.Between(1, kBytesMax / 8192));
      break;
    case 4:
      moment = random.Percent(50) ? MessageMoment(random) : Number("t", random.Below(20'000));
  }
  const std::uint32_t ms = random.Percent(15) ? 0 : random.Between(1, 40'000);
  std::string text = "unplug:" + moment + ForMs("ms", ms) + "," + Word("back", kBack, random);
  if (text.find("held") != std::string::npos)
    text += ForMs("held-ms", random.Percent(20) ? 0 : random.Between(1, 20'000));
  return text;
}

std::string DrawGarbage(SeedStream& random) {
  constexpr std::array<const char*, 8> kForms = {"kind",  "random", "words",    "short",
                                                 "empty", "split",  "overlong", "restart"};
  return "garbage:" + AnyMoment(random) + "," + Word("form", kForms, random) + "," +
         Number("count", random.Between(1, random.Percent(80) ? 2 : 20));
}

// In front of the answer to a test after a reconnection.
std::string DrawZeroAnswers(SeedStream& random) {
  std::string text = "say:on=test,first=1,words=8*0";
  for (std::uint32_t more = random.Between(1, 5); more > 1; --more) text += "/8*0";
  return text;
}

std::string DrawTransferFails(SeedStream& random) {
  constexpr std::array<const char*, 3> kWhere = {"any", "packet", "data"};
  const std::string count = Number("count", random.Percent(70) ? 1 : random.Between(2, 9));
  const std::string error = Number("error", random.Percent(50) ? 31 : random.Between(1, 2000));
  if (random.Percent(50))
    return "read-fails:" + TransferMoment("read", kMessagesMax, random) + "," + count + "," + error;
  return "write-fails:" + TransferMoment("write", 300, random) + "," + count + "," + error + "," +
         Word("where", kWhere, random);
}

std::string DrawBlock(SeedStream& random) {
  constexpr std::array<const char*, 9> kDefects = {
      "signature", "short", "head", "resolution", "width", "selector", "calib", "ink", "feather"};
  return "block:" + Word("defect", kDefects, random) + "," + Number("count", random.Between(1, 2));
}

std::string DrawDelay(SeedStream& random) {
  if (random.Percent(70))
    return "late:" + AnyMoment(random) + "," +
           Number("ms", random.Percent(50) ? random.Between(1, 300) : random.Between(300, 15'000));
  return "silence:" + AnyMoment(random) +
         ForMs("ms", random.Percent(35) ? 0 : random.Between(1, 40'000));
}

std::string DrawBus(SeedStream& random) {
  constexpr std::array<const char*, 3> kCases = {"lower", "upper", "mixed"};
  if (random.Percent(50)) {
    return "second-printer:" + Number("held", random.Below(2)) + "," +
           Number("first", random.Below(2));
  }
  return "path:" + Word("case", kCases, random) + "," + Number("long", random.Below(2));
}

QuirkEffect Delay(std::uint64_t costMs) { return {false, false, false, costMs}; }

QuirkEffect LinkLoss(const Quirk& quirk, const SimPlan& plan, bool mayEndJob) {
  return {mayEndJob, false, true, quirk.count * ReconnectMs(plan) + quirk.ms + quirk.heldMs};
}

// Without an answer for `ms`; 0 = until somebody loses patience.
QuirkEffect Silence(const Quirk& quirk, const SimPlan& plan) {
  if (quirk.ms != 0) return Delay(quirk.ms + 2000);
  return {true, false, true, plan.patienceMs + ReconnectMs(plan)};
}

QuirkEffect Refused(const Quirk& quirk) {
  if (quirk.on != qrn::sim::Message::kConnect) return Delay(quirk.count * 5000ull);
  const std::uint32_t status = quirk.status;
  const bool asksAgain =
      status == 0 || (status & 0xFFF0u) == 0x50u || status == 3 || status == 4 || status == 5;
  return {!asksAgain, false, false, quirk.count * 3000ull};
}

QuirkEffect BlockDefect(const Quirk& quirk, const SimPlan& plan) {
  const bool oneHead = plan.machine.heads != qrn::sim::Heads::kBoth;
  const bool alters = quirk.defect == Defect::kResolution || quirk.defect == Defect::kFeather ||
                      (quirk.defect == Defect::kInk && oneHead);
  return {true, alters, false, 5000};
}

}  // namespace

std::string DrawQuirk(SeedStream& random) {
  switch (random.Below(16)) {
    case 0:
      return DrawConnectRefused(random);
    case 1:
      return "buffer-full:" + AnyMoment(random) + "," +
             Number("count", random.Percent(80) ? random.Between(1, 30) : 1000);
    case 2:
      return DrawRefuse(random);
    case 3:
    case 4:
      return DrawPause(random);
    case 5:
      return "cancel:" + AnyMoment(random) + "," +
             std::array{"on=swath", "gone=1", "on=poll", "on=query"}[random.Below(4)];
    case 6:
      return "other-code:" + AnyMoment(random) + "," + Number("count", random.Between(1, 5));
    case 7:
      return DrawDelay(random);
    case 8:
    case 9:
      return DrawGarbage(random);
    case 10:
      return DrawZeroAnswers(random);
    case 11:
      return DrawTransferFails(random);
    case 12:
    case 13:
      return DrawUnplug(random);
    case 14:
      return random.Percent(60) ? DrawBlock(random) : DrawBus(random);
    default:
      return "refuse:on=swath,status=7," + Number("at", random.Between(1, kSwathsMax)) + "," +
             Number("count", random.Between(1, 4));
  }
}

// The transfers of a reconnection or two, each answered late.
std::uint64_t ReconnectMs(const SimPlan& plan) {
  return 35'000 + 20ull * (plan.writeLatencyMaxMs + plan.readLatencyMaxMs);
}

bool IsAwayAtStart(const Quirk& quirk) {
  return quirk.kind == Quirk::Kind::kUnplug && quirk.moment == Quirk::Moment::kTime &&
         quirk.at == 0;
}

QuirkEffect EffectOf(const Quirk& quirk, const SimPlan& plan) {
  using Kind = Quirk::Kind;
  const std::uint64_t count = quirk.count;
  switch (quirk.kind) {
    case Kind::kRefuse:
      return Refused(quirk);
    case Kind::kBufferFull:
      return Delay(count * (600 + plan.readLatencyMaxMs + plan.writeLatencyMaxMs));
    case Kind::kPause: {
      QuirkEffect pause = Delay(quirk.ms + 10'000);
      pause.altersPage =
          quirk.update == Update::kCorrection || quirk.update == Update::kCalibration;
      return pause;
    }
    case Kind::kCancel:
      return {true, false, false, 5000};
    case Kind::kLate:
      return Delay(quirk.ms);
    case Kind::kSilence:
      return Silence(quirk, plan);
    case Kind::kOtherCode:
    case Kind::kGarbage:
    case Kind::kSay:
      return Delay(count * 2000);
    case Kind::kWriteFails:
    case Kind::kReadFails:
      // An attempt to reconnect lost to each; six make the link given up.
      return LinkLoss(quirk, plan, quirk.count > 5);
    case Kind::kUnplug: {
      const bool forGood =
          quirk.ms == 0 || (quirk.back == qrn::sim::Back::kHeld && quirk.heldMs == 0);
      return LinkLoss(quirk, plan,
                      forGood || quirk.ms + quirk.heldMs > 29'000 || IsAwayAtStart(quirk));
    }
    case Kind::kListFails:
    case Kind::kOpenFails:
    case Kind::kSecondPrinter:
    case Kind::kPath:
      return Delay(0);
    case Kind::kBlock:
      return BlockDefect(quirk, plan);
  }
  return {};
}
