#include "jobs/draw.h"

#include <cstdio>

std::string Drawing::Draw(const std::string& text) {
  std::string drawn;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '{') {
      Choices choices(1);
      for (int depth = 1; depth != 0;) {
        const char c = text[++at];
        depth += c == '{' ? 1 : c == '}' ? -1 : 0;
        if (c == '|' && depth == 1) {
          choices.emplace_back();
        } else if (depth != 0) {
          choices.back() += c;
        }
      }
      drawn += Choose(choices);
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

std::string Drawing::Choose(const Choices& choices) {
  unsigned long long first = 0, last = 0;
  if (std::sscanf(choices[0].c_str(), "%llu..%llu", &first, &last) == 2)
    return std::to_string(first + Next() % (last - first + 1));
  Choices urn;
  for (const std::string& choice : choices) {
    unsigned weight = 1;
    int skipped = 0;
    if (std::sscanf(choice.c_str(), "%u*%n", &weight, &skipped) != 1 || skipped == 0) weight = 1;
    urn.insert(urn.end(), weight, choice.substr(static_cast<std::size_t>(skipped)));
  }
  return Draw(urn[static_cast<std::size_t>(Next() % urn.size())]);
}
