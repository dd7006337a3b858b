#include "jobs/draw.h"

#include <cstdio>
#include <vector>

namespace {

// Where the brace that opens there is closed.
std::size_t EndOf(const std::string& text, std::size_t open) {
  int depth = 0;
  std::size_t at = open;
  do {
    depth += text[at] == '{' ? 1 : text[at] == '}' ? -1 : 0;
  } while (++at < text.size() && depth != 0);
  return at - 1;
}

std::vector<std::string> ChoicesOf(const std::string& text) {
  std::vector<std::string> choices(1);
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '|') {
      choices.emplace_back();
      continue;
    }
    const std::size_t end = text[at] == '{' ? EndOf(text, at) : at;
    choices.back() += text.substr(at, end + 1 - at);
    at = end;
  }
  return choices;
}

}  // namespace

std::string Drawing::Draw(const std::string& text) {
  std::string drawn;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '{') {
      const std::size_t end = EndOf(text, at);
      drawn += Choose(text.substr(at + 1, end - at - 1));
      at = end;
    } else if (text[at] == '<') {
      const std::size_t end = text.find('>', at);
      drawn += Draw(grammar_.at(text.substr(at + 1, end - at - 1)));
      at = end;
    } else {
      drawn += text[at];
    }
  }
  return drawn;
}

// splitmix64
std::uint64_t Drawing::Next() {
  state_ += 0x9E3779B97F4A7C15u;
  std::uint64_t z = state_;
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
  return z ^ (z >> 31);
}

std::string Drawing::Choose(const std::string& choices) {
  unsigned long long first = 0, last = 0;
  if (std::sscanf(choices.c_str(), "%llu..%llu", &first, &last) == 2)
    return std::to_string(first + Next() % (last - first + 1));
  std::vector<std::string> urn;
  for (const std::string& choice : ChoicesOf(choices)) {
    unsigned weight = 1;
    int skipped = 0;
    if (std::sscanf(choice.c_str(), "%u*%n", &weight, &skipped) != 1 || skipped == 0) weight = 1;
    urn.insert(urn.end(), weight, choice.substr(static_cast<std::size_t>(skipped)));
  }
  return Draw(urn[static_cast<std::size_t>(Next() % urn.size())]);
}
