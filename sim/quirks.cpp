#include "sim/quirks.h"

#include <algorithm>
#include <charconv>
#include <set>

namespace qrn::sim {
namespace {

struct Field {
  const char* name;
  std::uint32_t Quirk::*value;
  bool required;
  std::uint32_t min, max;
};

struct KindRule {
  const char* name;
  Quirk::Kind kind;
  std::vector<Field> fields;  // all that the kind heeds; one that is left out keeps its default
};

const std::vector<KindRule>& Kinds() {
  const Field at{"at", &Quirk::at, false, 1, UINT32_MAX};
  const Field count{"count", &Quirk::count, false, 1, kQuirkCountMax};
  const Field status{"status", &Quirk::value, true, 0, 0xFFFF};
  const Field ms{"ms", &Quirk::durationMs, true, 1, kQuirkMsMax};
  const Field msOrForGood{"ms", &Quirk::durationMs, false, 0, kQuirkMsMax};
  static const std::vector<KindRule> kinds = {
      {"connect-refused", Quirk::Kind::kConnectRefused, {count, status}},
      {"buffer-full", Quirk::Kind::kBufferFull, {at, count}},
      {"pause", Quirk::Kind::kPause, {at, ms}},
      {"cancel", Quirk::Kind::kCancel, {at}},
      {"spool-overflow", Quirk::Kind::kSpoolOverflow, {at, count}},
      {"unplug", Quirk::Kind::kUnplug, {at, msOrForGood}},
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

// Takes one "name=number"; why it is not one of the kind's, or "".
std::string TakeField(const KindRule& rule, const std::string& text, Quirk* quirk,
                      std::set<std::string>* named) {
  const std::size_t equals = std::min(text.find('='), text.size());
  const std::string name = text.substr(0, equals);
  const auto field = std::find_if(rule.fields.begin(), rule.fields.end(),
                                  [&name](const Field& known) { return name == known.name; });
  if (field == rule.fields.end() || equals == text.size())
    return "'" + text + "' is not one of " + NamesOf(rule);
  std::uint64_t number = 0;
  if (!ParseNumber(text.substr(equals + 1), &number) || number < field->min ||
      number > field->max) {
    return name + " must be a number from " + std::to_string(field->min) + " to " +
           std::to_string(field->max);
  }
  if (!named->insert(name).second) return name + " stands there twice";
  quirk->*field->value = static_cast<std::uint32_t>(number);
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
    if (field.required && named.count(field.name) == 0)
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
  return TakeFields(*rule, text, colon == std::string::npos ? colon : colon + 1, quirk);
}

}  // namespace

bool ParseQuirk(const std::string& text, Quirk* quirk, std::string* error) {
  const std::string why = Parse(text, quirk);
  if (!why.empty()) *error = "quirk '" + text + "': " + why;
  return why.empty();
}

}  // namespace qrn::sim
