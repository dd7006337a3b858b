#include "sim/quirks.h"

#include <array>
#include <cstdlib>

namespace qrn::sim {
namespace {

struct KindName {
  const char* name;
  Quirk::Kind kind;
};

constexpr std::array<KindName, 6> kKinds = {{{"connect-refused", Quirk::Kind::kConnectRefused},
                                             {"buffer-full", Quirk::Kind::kBufferFull},
                                             {"pause", Quirk::Kind::kPause},
                                             {"cancel", Quirk::Kind::kCancel},
                                             {"spool-overflow", Quirk::Kind::kSpoolOverflow},
                                             {"unplug", Quirk::Kind::kUnplug}}};

struct FieldName {
  const char* name;
  std::uint32_t Quirk::*field;
};

constexpr std::array<FieldName, 4> kFields = {{{"at", &Quirk::at},
                                               {"count", &Quirk::count},
                                               {"status", &Quirk::value},
                                               {"ms", &Quirk::durationMs}}};

bool Refuse(const std::string& text, const std::string& why, std::string* error) {
  *error = "quirk '" + text + "': " + why;
  return false;
}

bool ParseNumber(const std::string& text, std::uint32_t* value) {
  if (text.empty() || text[0] < '0' || text[0] > '9') return false;
  char* end = nullptr;
  const unsigned long long number = std::strtoull(text.c_str(), &end, 0);
  if (*end != '\0' || number > 0xFFFFFFFFull) return false;
  *value = static_cast<std::uint32_t>(number);
  return true;
}

// One "name=number".
bool ParseField(const std::string& text, Quirk* quirk) {
  const std::size_t equals = text.find('=');
  if (equals == std::string::npos) return false;
  for (const FieldName& field : kFields) {
    if (text.compare(0, equals, field.name) == 0)
      return ParseNumber(text.substr(equals + 1), &(quirk->*field.field));
  }
  return false;
}

}  // namespace

bool ParseQuirk(const std::string& text, Quirk* quirk, std::string* error) {
  const std::size_t colon = text.find(':');
  const std::string name = text.substr(0, colon);
  const KindName* kind = nullptr;
  for (const KindName& candidate : kKinds) {
    if (name == candidate.name) kind = &candidate;
  }
  if (kind == nullptr) return Refuse(text, "no such kind", error);
  *quirk = Quirk{};
  quirk->kind = kind->kind;
  std::string fields = colon == std::string::npos ? "" : text.substr(colon + 1);
  while (!fields.empty()) {
    const std::size_t comma = fields.find(',');
    if (!ParseField(fields.substr(0, comma), quirk)) {
      return Refuse(
          text,
          "'" + fields.substr(0, comma) + "' is not at=, count=, status= or ms= with a number",
          error);
    }
    fields = comma == std::string::npos ? "" : fields.substr(comma + 1);
  }
  return true;
}

}  // namespace qrn::sim
