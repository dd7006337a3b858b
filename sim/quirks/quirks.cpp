#include "sim/quirks/quirks.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <set>
#include <sstream>
#include <type_traits>

#include "sim/wire/wire.h"

namespace qrn::sim {
namespace {

using Kind = Quirk::Kind;
using Trigger = Quirk::Trigger;
using Words = std::vector<std::string>;

// ---- The table: what each kind uses, and where the printer acts on it ----

struct KindRule {
  const char* name;
  Kind kind;
  Acts acts;
  // Names of fields. "!" after one: it must be given; "=31": what it is where it is not given;
  // ":a/b": one of these words, the first of them where it is not given.
  const char* fields;
};

constexpr KindRule kKinds[] = {
    {"list-fails", Kind::kListFails, Acts::kOnBus, "trigger count"},
    {"open-fails", Kind::kOpenFails, Acts::kOnBus, "trigger count error=5"},
    {"unplug", Kind::kUnplug, Acts::kOnBus, "trigger on ms back held-ms"},
    {"second-printer", Kind::kSecondPrinter, Acts::kOnBus, "first held"},
    {"path", Kind::kPath, Acts::kOnBus, "case long"},
    {"write-fails", Kind::kWriteFails, Acts::kOnWrite, "trigger on count error=31 where"},
    {"read-fails", Kind::kReadFails, Acts::kOnRead, "trigger on count error=31"},
    {"refuse", Kind::kRefuse, Acts::kInFirmware,
     "trigger on!:connect/create/swath/end/cancel/poll/query count status"},
    {"block", Kind::kBlock, Acts::kInFirmware, "trigger count defect!"},
    {"buffer-full", Kind::kBufferFull, Acts::kInFirmware, "trigger count"},
    {"pause", Kind::kPause, Acts::kInFirmware, "trigger on:swath/query/poll ms! update"},
    {"cancel", Kind::kCancel, Acts::kInFirmware, "trigger on:swath/query/poll gone"},
    {"say", Kind::kSay, Acts::kOnReply, "trigger on count words! first"},
    {"other-code", Kind::kOtherCode, Acts::kOnReply, "trigger on count"},
    {"garbage", Kind::kGarbage, Acts::kOnReply, "trigger on count form!"},
    {"late", Kind::kLate, Acts::kOnReply, "trigger on count ms!"},
    {"silence", Kind::kSilence, Acts::kOnReply, "trigger on ms"},
};

constexpr bool InOrder() {
  for (std::size_t i = 0; i < std::size(kKinds); ++i) {
    if (static_cast<std::size_t>(kKinds[i].kind) != i) return false;
  }
  return true;
}
static_assert(InOrder(), "a kind is the place of its rule");

// ---- Fields: each means the same, and takes the same values, in every kind ----

constexpr std::uint32_t kWordsMax = 4000;

struct Field {
  using Setter = void (*)(Quirk& quirk, std::uint32_t number);

  const char* name;
  std::uint32_t min = 0, max = 0;  // of a number
  Words words = {};                // else the value is the place of one of these
  Setter set = nullptr;            // null: what is to be said
};

template <auto kField>
void Set(Quirk& quirk, std::uint32_t number) {
  quirk.*kField = static_cast<std::remove_reference_t<decltype(quirk.*kField)>>(number);
}

template <Trigger kTrigger>
void SetTrigger(Quirk& quirk, std::uint32_t number) {
  quirk.trigger = kTrigger;
  quirk.at = number;
}

Field Number(const char* name, std::uint32_t min, std::uint32_t max, Field::Setter set) {
  return {.name = name, .min = min, .max = max, .set = set};
}

Field OneOf(const char* name, Field::Setter set, const Words& words) {
  return {.name = name, .words = words, .set = set};
}

const std::vector<Field>& Fields() {
  static const std::vector<Field> fields = {
      // The triggers; "trigger" in the table means all of them.
      Number("at", 1, UINT32_MAX, SetTrigger<Trigger::kSwath>),
      Number("msg", 1, UINT32_MAX, SetTrigger<Trigger::kMessage>),
      Number("write", 1, UINT32_MAX, SetTrigger<Trigger::kWrite>),
      Number("read", 1, UINT32_MAX, SetTrigger<Trigger::kRead>),
      Number("byte", 1, UINT32_MAX, SetTrigger<Trigger::kByte>),
      Number("t", 0, kQuirkMsMax, SetTrigger<Trigger::kTime>),
      // Numbers.
      Number("count", 1, kQuirkCountMax, Set<&Quirk::count>),
      Number("ms", 1, kQuirkMsMax, Set<&Quirk::ms>),
      Number("held-ms", 1, kQuirkMsMax, Set<&Quirk::heldMs>),
      Number("status", 0, 0xFFFF, Set<&Quirk::status>),
      Number("error", 1, 0xFFFF, Set<&Quirk::error>),
      Number("first", 0, 1, Set<&Quirk::first>),
      Number("held", 0, 1, Set<&Quirk::held>),
      Number("gone", 0, 1, Set<&Quirk::gone>),
      Number("long", 0, 1, Set<&Quirk::longPath>),
      // Words, in the order of their types.
      OneOf("on", Set<&Quirk::on>,
            {"any", "connect", "create", "swath", "end", "cancel", "poll", "query", "test"}),
      OneOf("update", Set<&Quirk::update>, {"none", "same", "db", "calib", "short"}),
      OneOf("form", Set<&Quirk::form>,
            {"kind", "random", "words", "short", "empty", "split", "overlong", "restart"}),
      OneOf("where", Set<&Quirk::where>, {"any", "packet", "data"}),
      OneOf("back", Set<&Quirk::back>, {"same", "other", "held"}),
      OneOf("case", Set<&Quirk::spelling>, {"upper", "lower", "mixed"}),
      OneOf("defect", Set<&Quirk::defect>,
            {"signature", "short", "head", "resolution", "width", "selector", "calib", "ink",
             "feather"}),
      {.name = "words"},
  };
  return fields;
}

constexpr std::size_t kTriggers = 6;

bool IsTrigger(const Field& field) { return &field < Fields().data() + kTriggers; }

// ---- Parsing ----

Words Split(const std::string& text, char separator) {
  Words parts;
  std::istringstream stream(text + separator);
  for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
  return parts;
}

std::string Join(const Words& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
  return text;
}

// Decimal, or hexadecimal after "0x".
bool ParseNumber(const std::string& text, std::uint64_t* number) {
  const bool hexadecimal = text.compare(0, 2, "0x") == 0;
  const char* end = text.data() + text.size();
  const auto parsed =
      std::from_chars(text.data() + (hexadecimal ? 2 : 0), end, *number, hexadecimal ? 16 : 10);
  return parsed.ec == std::errc() && parsed.ptr == end;
}

bool ParseWord(const std::string& text, std::uint16_t* word, std::uint64_t max = 0xFFFF) {
  std::uint64_t number = 0;
  if (!ParseNumber(text, &number) || number > max) return false;
  *word = static_cast<std::uint16_t>(number);
  return true;
}

// Words between dots; "8*0" is eight zeros.
bool ParseSaidWords(const std::string& text, std::vector<std::uint16_t>* words) {
  if (text.empty()) return true;
  for (const std::string& part : Split(text, '.')) {
    const std::size_t star = part.find('*');
    std::uint16_t times = 1, word = 0;
    if (star != std::string::npos && !ParseWord(part.substr(0, star), &times, kWordsMax))
      return false;
    if (!ParseWord(star == std::string::npos ? part : part.substr(star + 1), &word)) return false;
    words->insert(words->end(), times, word);
    if (words->size() > kWordsMax) return false;
  }
  return true;
}

// "WORDS", or "KIND:WORDS", or "KIND[ANNOUNCED]:WORDS" for one packet of this kind.
bool ParseSaidPacket(const std::string& text, SaidPacket* packet) {
  const std::size_t colon = text.find(':');
  if (colon == std::string::npos) return ParseSaidWords(text, &packet->words);
  if (!ParseSaidWords(text.substr(colon + 1), &packet->words)) return false;
  if (packet->words.size() > kPacketWords) return false;
  const std::size_t bracket = std::min(text.find('['), colon);
  const std::string kind = text.substr(0, bracket);
  const Words kinds = {"first", "last", "middle", "only"};
  constexpr std::uint16_t kKindWords[] = {kFirst, kLast, kMiddle, kOnly};
  const auto known = std::find(kinds.begin(), kinds.end(), kind);
  if (known != kinds.end()) packet->kind = kKindWords[known - kinds.begin()];
  if (known == kinds.end() && !ParseWord(kind, &packet->kind)) return false;
  packet->announced = static_cast<std::uint16_t>(packet->words.size());
  if (bracket == colon) return true;
  return text[colon - 1] == ']' &&
         ParseWord(text.substr(bracket + 1, colon - bracket - 2), &packet->announced);
}

std::string TakeSaid(const std::string& text, Quirk* quirk) {
  for (const std::string& part : Split(text, '/')) {
    if (!ParseSaidPacket(part, &quirk->words.emplace_back()))
      return "'" + part + "' is not a packet of words";
  }
  return "";
}

// What a kind says about one of its fields.
struct FieldUse {
  const Field* field = nullptr;
  bool needed = false;
  std::string initial;  // "": the quirk's own
  Words words;          // those that may be given, where they are not all
};

std::vector<FieldUse> UsesOf(const KindRule& rule) {
  std::vector<FieldUse> uses;
  for (const std::string& text : Split(rule.fields, ' ')) {
    const std::string name = text.substr(0, text.find_first_of("!=:"));
    for (const Field& field : Fields()) {
      if (name == "trigger" ? !IsTrigger(field) : name != field.name) continue;
      FieldUse use;
      use.field = &field;
      use.needed = text.find('!') != std::string::npos;
      if (const std::size_t at = text.find('='); at != std::string::npos)
        use.initial = text.substr(at + 1);
      if (const std::size_t at = text.find(':'); at != std::string::npos) {
        use.words = Split(text.substr(at + 1), '/');
        use.initial = use.words[0];
      }
      uses.push_back(use);
    }
  }
  return uses;
}

// Why the text is no value of the field, or "".
std::string TakeValue(const FieldUse& use, const std::string& text, Quirk* quirk) {
  const Field& field = *use.field;
  const std::string name = field.name;
  if (field.set == nullptr) return TakeSaid(text, quirk);
  if (!field.words.empty()) {
    const Words& allowed = use.words.empty() ? field.words : use.words;
    if (std::find(allowed.begin(), allowed.end(), text) == allowed.end())
      return name + " must be one of " + Join(allowed);
    const auto word = std::find(field.words.begin(), field.words.end(), text);
    field.set(*quirk, static_cast<std::uint32_t>(word - field.words.begin()));
    return "";
  }
  std::uint64_t number = 0;
  if (!ParseNumber(text, &number) || number < field.min || number > field.max) {
    return name + " must be a number from " + std::to_string(field.min) + " to " +
           std::to_string(field.max);
  }
  field.set(*quirk, static_cast<std::uint32_t>(number));
  return "";
}

// Takes one "name=value"; why it is not one of the kind's, or "".
std::string TakeField(const std::vector<FieldUse>& uses, const std::string& text, Quirk* quirk,
                      std::set<std::string>* named) {
  const std::size_t equals = std::min(text.find('='), text.size());
  const std::string name = text.substr(0, equals);
  const auto use = std::find_if(uses.begin(), uses.end(), [&name](const FieldUse& known) {
    return name == known.field->name;
  });
  if (use == uses.end() || equals == text.size()) {
    Words names;
    for (const FieldUse& known : uses) names.push_back(known.field->name + std::string("="));
    return "'" + text + "' is not one of " + Join(names);
  }
  std::string why = TakeValue(*use, text.substr(equals + 1), quirk);
  if (!why.empty()) return why;
  if (!named->insert(name).second) return name + " is given twice";
  if (IsTrigger(*use->field) && !named->insert("a trigger").second)
    return name + " is a second trigger";
  return "";
}

std::string Parse(const std::string& text, Quirk* quirk) {
  const std::size_t colon = text.find(':');
  const std::string name = text.substr(0, colon);
  const auto* const rule =
      std::find_if(std::begin(kKinds), std::end(kKinds),
                   [&name](const KindRule& known) { return name == known.name; });
  if (rule == std::end(kKinds)) return "no such kind";
  *quirk = Quirk{};
  quirk->kind = rule->kind;
  const std::vector<FieldUse> uses = UsesOf(*rule);
  for (const FieldUse& use : uses) {
    if (!use.initial.empty()) (void)TakeValue(use, use.initial, quirk);
  }
  std::set<std::string> named;
  if (colon != std::string::npos) {
    for (const std::string& field : Split(text.substr(colon + 1), ',')) {
      std::string why = TakeField(uses, field, quirk, &named);
      if (!why.empty()) return why;
    }
  }
  for (const FieldUse& use : uses) {
    if (use.needed && named.count(use.field->name) == 0)
      return "needs " + std::string(use.field->name) + "=";
  }
  return "";
}

}  // namespace

bool ParseQuirk(const std::string& text, Quirk* quirk, std::string* error) {
  const std::string why = Parse(text, quirk);
  quirk->text = text;
  if (!why.empty()) *error = "quirk '" + text + "': " + why;
  return why.empty();
}

Acts WhereActs(Quirk::Kind kind) { return kKinds[static_cast<std::size_t>(kind)].acts; }

}  // namespace qrn::sim
