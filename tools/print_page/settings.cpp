#include "print_page/settings.h"

#include <toml++/toml.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "print_page/page.h"
#include "sim/machine/machine_words.h"

namespace qrn::tool {
namespace {

// The text that SetMachine takes: lists with commas. "", which no setting takes, for any other kind
// of value.
std::string TextOf(const toml::node& node) {
  if (const auto text = node.value_exact<std::string>()) return *text;
  if (const auto flag = node.value_exact<bool>()) return *flag ? "true" : "false";
  if (const auto number = node.value_exact<std::int64_t>()) return std::to_string(*number);
  std::string list;
  if (const toml::array* array = node.as_array()) {
    for (const toml::node& element : *array) list += (list.empty() ? "" : ",") + TextOf(element);
  }
  return list;
}

// A printer may report an ink that does not exist; in a file it is a mistake.
bool HasUnknownInk(const sim::Machine& machine) {
  return std::any_of(machine.inkOrder.begin(), machine.inkOrder.end(), [](const auto& order) {
    return *std::max_element(order.begin(), order.end()) >= kSlots;
  });
}

}  // namespace

bool LoadSettings(const std::string& path, sim::Machine* machine, std::string* error) {
  std::error_code ignored;
  std::string why;
  if (std::filesystem::is_directory(path, ignored)) {
    why = "is a folder";
  } else {
    try {
      for (const auto& [key, value] : toml::parse_file(path)) {
        const std::string name(key.str());
        why = sim::SetMachine(name, TextOf(value), machine);
        if (why.empty() && HasUnknownInk(*machine))
          why = name + " must be whole numbers from 0 to " + std::to_string(kSlots - 1);
        if (!why.empty()) break;
      }
    } catch (const toml::parse_error& parse) {
      why = std::string(parse.description());
      const auto line = parse.source().begin.line;
      if (line != 0) why += ", line " + std::to_string(line);
    }
  }
  if (!why.empty()) *error = "'" + path + "': " + why;
  return why.empty();
}

}  // namespace qrn::tool
