#include "sim/quirks.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <set>

namespace qrn::sim {
namespace {

using Moment = Quirk::Moment;

struct Field {
  const char* name;
  std::uint32_t Quirk::*value;
  std::optional<std::uint32_t> initial;  // none: the field is required
  std::uint32_t min = 0, max = 0;
  std::vector<const char*> words = {};   // instead of numbers: the value is the word's place
  std::optional<Moment> moment = {};     // the field says what `at` counts; a quirk has one
  std::vector<std::uint32_t> only = {};  // of the numbers; empty = all
};

struct KindRule {
  const char* name;
  Quirk::Kind kind;
  std::vector<Field> fields;  // all that the kind heeds; its own moment comes first
};

Field MomentField(const char* name, Moment moment) {
  return {name, &Quirk::at, 1, 1, UINT32_MAX, {}, moment};
}

Field WordField(const char* name, std::uint32_t Quirk::*value, std::optional<std::uint32_t> initial,
                std::vector<const char*> words) {
  return {name, value, initial, 0, 0, std::move(words)};
}

const std::vector<KindRule>& Kinds() {
  using Kind = Quirk::Kind;
  const Field at = MomentField("at", Moment::kSwath), msg = MomentField("msg", Moment::kMessage),
              atMessage = MomentField("at", Moment::kMessage),
              write = MomentField("write", Moment::kWrite),
              read = MomentField("read", Moment::kRead), byte = MomentField("byte", Moment::kByte),
              chunk = MomentField("chunk", Moment::kChunk);
  const Field t{"t", &Quirk::at, 1, 0, kQuirkMsMax, {}, Moment::kTime};
  const Field count{"count", &Quirk::count, 1, 1, kQuirkCountMax};
  const Field statusNeeded{"status", &Quirk::value, std::nullopt, 0, 0xFFFF};
  const Field status{"status", &Quirk::value, 0, 0, 0xFFFF};
  const Field error{"error", &Quirk::value, 31, 1, 0xFFFF};
  const Field ms{"ms", &Quirk::durationMs, std::nullopt, 1, kQuirkMsMax};
  const Field msOrForGood{"ms", &Quirk::durationMs, 0, 0, kQuirkMsMax};
  const Field heldMs{"held-ms", &Quirk::heldMs, 0, 0, kQuirkMsMax};
  // What the driver sends; the connect and the buffer query have quirks of their own.
  const Field code{"code", &Quirk::code, std::nullopt, 3, 12, {}, {}, {3, 4, 5, 9, 10, 12}};
  const Field held{"held", &Quirk::held, 0, 0, 1}, first{"first", &Quirk::first, 0, 0, 1};
  const Field longPath{"long", &Quirk::longPath, 0, 0, 1};
  const auto word = [](const char* name, std::optional<std::uint32_t> initial,
                       std::vector<const char*> words) {
    return WordField(name, &Quirk::which, initial, std::move(words));
  };
  static const std::vector<KindRule> kinds = {
      {"connect-refused", Kind::kConnectRefused, {count, statusNeeded}},
      {"buffer-full", Kind::kBufferFull, {at, msg, t, count}},
      {"refuse", Kind::kRefuse, {msg, at, t, code, status, count}},
      {"spool-overflow", Kind::kSpoolOverflow, {at, count}},
      {"pause",
       Kind::kPause,
       {at, msg, t, ms, word("via", 0, {"swath", "buffer", "poll"}),
        WordField("update", &Quirk::update, 0, {"none", "same", "db", "calib", "short"})}},
      {"cancel", Kind::kCancel, {at, msg, t, word("via", 0, {"swath", "buffer", "poll", "gone"})}},
      {"other-code", Kind::kOtherCode, {msg, at, t, count}},
      {"late", Kind::kLate, {msg, at, t, ms}},
      {"silence", Kind::kSilence, {msg, at, t, msOrForGood}},
      {"garbage",
       Kind::kGarbage,
       {msg, at, t, count,
        word("form", std::nullopt,
             {"kind", "random", "words", "short", "empty", "split", "overlong", "restart"})}},
      {"zero-answers", Kind::kZeroAnswers, {count}},
      {"write-fails",
       Kind::kWriteFails,
       {write, msg, t, count, error, word("where", 0, {"any", "packet", "data"})}},
      {"read-fails", Kind::kReadFails, {read, msg, t, count, error}},
      {"unplug",
       Kind::kUnplug,
       {atMessage, msg, write, read, byte, chunk, t, msOrForGood, heldMs,
        word("back", 0, {"same", "other", "held"})}},
      {"second-printer", Kind::kSecondPrinter, {held, first}},
      {"path", Kind::kPath, {longPath, word("case", 0, {"upper", "lower", "mixed"})}},
      {"block",
       Kind::kBlock,
       {count, word("defect", std::nullopt,
                    {"signature", "short", "head", "resolution", "width", "selector", "calib",
                     "ink", "feather"})}},
  };
  return kinds;
}

// Decimal, or hexadecimal behind "0x".
bool ParseNumber(const std::string& text, std::uint64_t* number) {
  const bool hexadecimal = text.compare(0, 2, "0x") == 0;
  const char* end = text.data() + text.size();
  const auto parsed =
      std::from_chars(text.data() + (hexadecimal ? 2 : 0), end, *number, hexadecimal ? 16 : 10);
  return parsed.ec == std::errc() && parsed.ptr == end;
}

std::string NamesOf(const KindRule& rule) {
  std::string names;
  for (const Field& field : rule.fields) {
    if (!names.empty()) names += ", ";
    names += field.name + std::string("=");
  }
  return names;
}

// Why the text is no value of the field, or "".
std::string ParseValue(const Field& field, const std::string& text, std::uint32_t* value) {
  const std::string name = field.name;
  if (!field.words.empty()) {
    const auto word = std::find(field.words.begin(), field.words.end(), text);
    *value = static_cast<std::uint32_t>(word - field.words.begin());
    if (word != field.words.end()) return "";
    std::string words;
    for (const char* known : field.words) words += (words.empty() ? "" : ", ") + std::string(known);
    return name + " must be one of " + words;
  }
  std::uint64_t number = 0;
  if (!ParseNumber(text, &number) || number < field.min || number > field.max) {
    return name + " must be a number from " + std::to_string(field.min) + " to " +
           std::to_string(field.max);
  }
  *value = static_cast<std::uint32_t>(number);
  if (field.only.empty() || std::count(field.only.begin(), field.only.end(), *value) != 0)
    return "";
  std::string numbers;
  for (const std::uint32_t known : field.only)
    numbers += (numbers.empty() ? "" : ", ") + std::to_string(known);
  return name + " must be one of " + numbers;
}

// Takes one "name=value"; why it is not one of the kind's, or "".
std::string TakeField(const KindRule& rule, const std::string& text, Quirk* quirk,
                      std::set<std::string>* named) {
  const std::size_t equals = std::min(text.find('='), text.size());
  const std::string name = text.substr(0, equals);
  const auto field = std::find_if(rule.fields.begin(), rule.fields.end(),
                                  [&name](const Field& known) { return name == known.name; });
  if (field == rule.fields.end() || equals == text.size())
    return "'" + text + "' is not one of " + NamesOf(rule);
  const std::string why = ParseValue(*field, text.substr(equals + 1), &(quirk->*field->value));
  if (!why.empty()) return why;
  if (!named->insert(name).second) return name + " stands there twice";
  if (field->moment) {
    if (!named->insert("a moment").second) return name + " is a second moment";
    quirk->moment = *field->moment;
  }
  return "";
}

// `from`: where the fields begin in the quirk's text; npos = it has none.
std::string TakeFields(const KindRule& rule, const std::string& text, std::size_t from,
                       Quirk* quirk) {
  std::set<std::string> named;
  while (from != std::string::npos) {
    const std::size_t comma = text.find(',', from);
    const std::string why = TakeField(rule, text.substr(from, comma - from), quirk, &named);
    if (!why.empty()) return why;
    from = comma == std::string::npos ? comma : comma + 1;
  }
  for (const Field& field : rule.fields) {
    if (!field.initial && named.count(field.name) == 0)
      return "needs " + std::string(field.name) + "=";
  }
  return "";
}

std::string Parse(const std::string& text, Quirk* quirk) {
  const std::size_t colon = text.find(':');
  const std::string name = text.substr(0, colon);
  const auto rule = std::find_if(Kinds().begin(), Kinds().end(),
                                 [&name](const KindRule& known) { return name == known.name; });
  if (rule == Kinds().end()) return "no such kind";
  *quirk = Quirk{};
  quirk->kind = rule->kind;
  for (const Field& field : rule->fields) quirk->*field.value = field.initial.value_or(0);
  quirk->moment = rule->fields[0].moment.value_or(Moment::kStart);
  return TakeFields(*rule, text, colon == std::string::npos ? colon : colon + 1, quirk);
}

}  // namespace

bool ParseQuirk(const std::string& text, Quirk* quirk, std::string* error) {
  const std::string why = Parse(text, quirk);
  if (!why.empty()) *error = "quirk '" + text + "': " + why;
  return why.empty();
}

}  // namespace qrn::sim
