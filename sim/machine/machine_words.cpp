#include "sim/machine/machine_words.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <functional>
#include <limits>
#include <sstream>
#include <vector>

namespace qrn::sim {
namespace {

// What is wrong with the value, or "".
using Setter = std::function<std::string(const std::string& value, Machine* machine)>;

template <class T>
std::string Parse(const std::string& text, T* number, std::uint64_t max, std::uint64_t min = 0) {
  std::uint64_t value = 0;
  const char* end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), end, value);
  if (parsed.ec != std::errc() || parsed.ptr != end || value < min || value > max)
    return "must be a whole number from " + std::to_string(min) + " to " + std::to_string(max);
  *number = static_cast<T>(value);
  return "";
}

// As many numbers as the array has, between commas. False when there are more or fewer.
template <std::size_t kCount>
bool ParseList(const std::string& text, std::array<std::uint8_t, kCount>* numbers,
               std::string* why) {
  std::istringstream stream(text);
  std::size_t count = 0;
  for (std::string one; std::getline(stream, one, ','); ++count) {
    if (count == kCount) return false;
    if (why->empty()) *why = Parse(one, &(*numbers)[count], 255);
  }
  return count == kCount;
}

template <class T>
Setter Number(T Machine::*field, std::uint64_t max = std::numeric_limits<T>::max(),
              std::uint64_t min = 0) {
  return [=](const std::string& value, Machine* machine) {
    return Parse(value, &(machine->*field), max, min);
  };
}

Setter Flag(bool Machine::*field) {
  return [field](const std::string& value, Machine* machine) {
    machine->*field = value == "true";
    return value == "true" || value == "false" ? "" : "must be true or false";
  };
}

Setter ByResolution(std::array<std::uint8_t, 4> Machine::*field) {
  return [field](const std::string& value, Machine* machine) -> std::string {
    std::array<std::uint8_t, 4>& numbers = machine->*field;
    std::string why;
    if (ParseList(value, &numbers, &why)) return why;
    if (value.find(',') != std::string::npos)
      return "must be a number or four of them, for 1080, 1440, 1620 and 2160 dpi";
    why = Parse(value, &numbers[0], 255);
    numbers.fill(numbers[0]);
    return why;
  };
}

Setter InkOrder(std::size_t head) {
  return [head](const std::string& value, Machine* machine) -> std::string {
    std::string why;
    return ParseList(value, &machine->inkOrder[head], &why)
               ? why
               : "must be eight ink numbers, one a nozzle row";
  };
}

std::string SetHeads(const std::string& value, Machine* machine) {
  constexpr std::array<const char*, 4> kNames = {"both", "pha", "phb", "none"};
  const auto name = std::find(kNames.begin(), kNames.end(), value);
  if (name == kNames.end()) return "must be \"both\", \"pha\", \"phb\" or \"none\"";
  machine->heads = static_cast<Heads>(name - kNames.begin());
  return "";
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
      {"fixed_direction", Number(&Machine::fixedDir, 1)},
      {"ink_order_pha", InkOrder(0)},
      {"ink_order_phb", InkOrder(1)},
      {"ink_order_fourth", InkOrder(3)},
      {"head_gap_x", ByResolution(&Machine::headGapX)},
      {"head_gap_y", ByResolution(&Machine::headGapY)},
      {"bidirectional_shift", ByResolution(&Machine::biDirShift)},
      {"feathering_percent", Number(&Machine::featherPercent, 100)},
      {"margin", Number(&Machine::margin)},
      {"flash_interval", Number(&Machine::flashEvery)},
      {"flash_amount", Number(&Machine::flashParam)},
      {"speed", Number(&Machine::speed, 255, 1)},
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
  const std::string why =
      setting == Settings().end() ? "is not a setting" : setting->set(value, machine);
  return why.empty() ? "" : name + " " + why;
}

}  // namespace qrn::sim
