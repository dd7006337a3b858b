#include "print_page/settings.h"

#include <toml++/toml.h>

#include <filesystem>
#include <functional>
#include <limits>
#include <map>
#include <stdexcept>
#include <system_error>

namespace qrn::tool {
namespace {

using sim::Heads;
using sim::Machine;

// Throws what a key refuses; LoadSettings adds file and key.
[[noreturn]] void Refuse(const std::string& why) { throw std::invalid_argument(why); }

template <class T>
T Number(const toml::node& node, std::int64_t max = std::numeric_limits<T>::max(),
         std::int64_t min = 0) {
  const auto value = node.value_exact<std::int64_t>();
  if (!value || *value < min || *value > max) {
    Refuse("must be a whole number from " + std::to_string(min) + " to " + std::to_string(max));
  }
  return static_cast<T>(*value);
}

bool Flag(const toml::node& node) {
  const auto value = node.value_exact<bool>();
  if (!value) Refuse("must be true or false");
  return *value;
}

// One number for all resolutions, or four.
std::array<std::uint8_t, 4> ByResolution(const toml::node& node) {
  std::array<std::uint8_t, 4> values{};
  if (const toml::array* array = node.as_array()) {
    if (array->size() != values.size())
      Refuse("must be a number or four of them, for 1080, 1440, 1620 and 2160 dpi");
    for (std::size_t i = 0; i < values.size(); ++i) values[i] = Number<std::uint8_t>((*array)[i]);
  } else {
    values.fill(Number<std::uint8_t>(node));
  }
  return values;
}

std::array<std::uint8_t, 8> InkOrder(const toml::node& node) {
  std::array<std::uint8_t, 8> order{};
  const toml::array* array = node.as_array();
  if (array == nullptr || array->size() != order.size())
    Refuse("must be eight ink numbers, one a nozzle row");
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = Number<std::uint8_t>((*array)[i], 7);
  return order;
}

Heads HeadsOf(const toml::node& node) {
  const auto value = node.value_exact<std::string>();
  if (value == "both") return Heads::kBoth;
  if (value == "pha") return Heads::kPha;
  if (value == "phb") return Heads::kPhb;
  if (value == "none") return Heads::kNone;
  Refuse("must be \"both\", \"pha\", \"phb\" or \"none\"");
}

using Setter = std::function<void(Machine&, const toml::node&)>;

const std::map<std::string, Setter, std::less<>>& Setters() {
  static const std::map<std::string, Setter, std::less<>> setters = {
      {"heads", [](Machine& m, const toml::node& n) { m.heads = HeadsOf(n); }},
      {"two_head_carriage", [](Machine& m, const toml::node& n) { m.twoHeadCarriage = Flag(n); }},
      {"mirrored_heads", [](Machine& m, const toml::node& n) { m.mirroredHeads = Flag(n); }},
      {"bidirectional", [](Machine& m, const toml::node& n) { m.bidirectional = Flag(n); }},
      {"fixed_direction",
       [](Machine& m, const toml::node& n) { m.fixedDir = Number<std::uint8_t>(n, 1); }},
      {"ink_order_pha", [](Machine& m, const toml::node& n) { m.inkOrder[0] = InkOrder(n); }},
      {"ink_order_phb", [](Machine& m, const toml::node& n) { m.inkOrder[1] = InkOrder(n); }},
      {"ink_order_fourth", [](Machine& m, const toml::node& n) { m.inkOrder[3] = InkOrder(n); }},
      {"head_gap_x", [](Machine& m, const toml::node& n) { m.headGapX = ByResolution(n); }},
      {"head_gap_y", [](Machine& m, const toml::node& n) { m.headGapY = ByResolution(n); }},
      {"bidirectional_shift",
       [](Machine& m, const toml::node& n) { m.biDirShift = ByResolution(n); }},
      {"feathering_percent",
       [](Machine& m, const toml::node& n) { m.featherPercent = Number<std::uint8_t>(n, 100); }},
      {"margin", [](Machine& m, const toml::node& n) { m.margin = Number<std::uint16_t>(n); }},
      {"flash_interval",
       [](Machine& m, const toml::node& n) { m.flashEvery = Number<std::uint8_t>(n); }},
      {"flash_amount",
       [](Machine& m, const toml::node& n) { m.flashParam = Number<std::uint16_t>(n); }},
      {"speed", [](Machine& m, const toml::node& n) { m.speed = Number<std::uint8_t>(n, 255, 1); }},
      {"travel", [](Machine& m, const toml::node& n) { m.travel600 = Number<std::uint32_t>(n); }},
  };
  return setters;
}

}  // namespace

bool LoadSettings(const std::string& path, Machine* machine, std::string* error) {
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) {
    *error = "'" + path + "': is a folder";
    return false;
  }
  std::string key;
  try {
    for (const auto& [name, value] : toml::parse_file(path)) {
      key = std::string(name.str());
      const auto setter = Setters().find(key);
      if (setter == Setters().end()) Refuse("is not a setting");
      setter->second(*machine, value);
    }
    return true;
  } catch (const toml::parse_error& parse) {
    *error = "'" + path + "': " + std::string(parse.description());
    const auto line = parse.source().begin.line;
    if (line != 0) *error += ", line " + std::to_string(line);
  } catch (const std::invalid_argument& refused) {
    *error = "'" + path + "': " + key + " " + refused.what();
  }
  return false;
}

}  // namespace qrn::tool
