#include "sim/machine_words.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <functional>
#include <iterator>
#include <limits>
#include <sstream>
#include <vector>

namespace qrn::sim {
namespace {

using Setter = std::function<bool(const std::string& value, Machine* machine)>;

template <class T>
bool Parse(const std::string& text, T* number, T max = std::numeric_limits<T>::max()) {
  const char* end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), end, *number);
  return parsed.ec == std::errc() && parsed.ptr == end && *number <= max;
}

// Numbers between commas; a single one stands for all where `oneForAll`.
template <std::size_t kCount>
bool ParseList(const std::string& text, std::array<std::uint8_t, kCount>* numbers, bool oneForAll) {
  std::istringstream stream(text);
  std::size_t count = 0;
  for (std::string one; std::getline(stream, one, ','); ++count) {
    if (count == kCount || !Parse(one, &(*numbers)[count])) return false;
  }
  if (count == 1 && oneForAll) numbers->fill((*numbers)[0]);
  return count == kCount || (count == 1 && oneForAll);
}

template <class T>
Setter Number(T Machine::*field, T max = std::numeric_limits<T>::max()) {
  return [field, max](const std::string& value, Machine* machine) {
    return Parse(value, &(machine->*field), max);
  };
}

Setter Flag(bool Machine::*field) {
  return [field](const std::string& value, Machine* machine) {
    machine->*field = value == "true";
    return value == "true" || value == "false";
  };
}

Setter ByResolution(std::array<std::uint8_t, 4> Machine::*field) {
  return [field](const std::string& value, Machine* machine) {
    return ParseList(value, &(machine->*field), true);
  };
}

Setter InkOrder(std::size_t head) {
  return [head](const std::string& value, Machine* machine) {
    return ParseList(value, &machine->inkOrder[head], false);
  };
}

bool SetHeads(const std::string& value, Machine* machine) {
  constexpr std::array<const char*, 4> kNames = {"both", "pha", "phb", "none"};
  const auto name = std::find(kNames.begin(), kNames.end(), value);
  machine->heads = static_cast<Heads>(name - kNames.begin());
  return name != kNames.end();
}

struct Setting {
  const char* name;
  Setter set;
};

const std::vector<Setting>& Settings() {
  static const std::vector<Setting> settings = {
      {"heads", SetHeads},
      {"two_head_carriage", Flag(&Machine::twoHeadCarriage)},
      {"mirrored_heads", Flag(&Machine::mirroredHeads)},
      {"bidirectional", Flag(&Machine::bidirectional)},
      {"fixed_direction", Number<std::uint8_t>(&Machine::fixedDir, 1)},
      {"ink_order_pha", InkOrder(0)},
      {"ink_order_phb", InkOrder(1)},
      {"ink_order_fourth", InkOrder(3)},
      {"head_gap_x", ByResolution(&Machine::headGapX)},
      {"head_gap_y", ByResolution(&Machine::headGapY)},
      {"bidirectional_shift", ByResolution(&Machine::biDirShift)},
      {"feathering_percent", Number(&Machine::featherPercent)},
      {"margin", Number(&Machine::margin)},
      {"flash_interval", Number(&Machine::flashEvery)},
      {"flash_amount", Number(&Machine::flashParam)},
      {"speed", Number(&Machine::speed)},
      {"travel", Number(&Machine::travel600)},
      {"feed_base", Number(&Machine::feedBase)},
      {"feed_calibration", Number(&Machine::feedCalib)},
  };
  return settings;
}

}  // namespace

std::string SetMachine(const std::string& name, const std::string& value, Machine* machine) {
  const auto setting = std::find_if(Settings().begin(), Settings().end(),
                                    [&name](const Setting& known) { return name == known.name; });
  if (setting == Settings().end()) return "no machine has a '" + name + "'";
  return setting->set(value, machine) ? "" : "'" + value + "' is no value of " + name;
}

}  // namespace qrn::sim
