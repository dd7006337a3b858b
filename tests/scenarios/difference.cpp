#include "scenarios/difference.h"

#include <algorithm>

namespace scenarios {

std::vector<std::pair<std::size_t, std::size_t>> CommonLines(const Text& a, const Text& b) {
  // How many lines the rests from there on have in common.
  std::vector<std::vector<std::size_t>> common(a.size() + 1,
                                               std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = a.size(); i-- > 0;) {
    for (std::size_t j = b.size(); j-- > 0;) {
      common[i][j] =
          a[i] == b[j] ? common[i + 1][j + 1] + 1 : std::max(common[i + 1][j], common[i][j + 1]);
    }
  }
  std::vector<std::pair<std::size_t, std::size_t>> places;
  for (std::size_t i = 0, j = 0; i < a.size() && j < b.size();) {
    if (a[i] == b[j]) {
      places.emplace_back(i++, j++);
    } else if (common[i + 1][j] >= common[i][j + 1]) {
      ++i;
    } else {
      ++j;
    }
  }
  return places;
}

std::string Difference(const Text& wanted, const Text& found) {
  std::string text;
  std::size_t i = 0, j = 0;
  const auto skip = [&](std::size_t wantedEnd, std::size_t foundEnd) {
    for (; i < wantedEnd; ++i) text += "- " + wanted[i] + "\n";
    for (; j < foundEnd; ++j) text += "+ " + found[j] + "\n";
  };
  for (const auto& [wantedAt, foundAt] : CommonLines(wanted, found)) {
    skip(wantedAt, foundAt);
    text += "  " + wanted[i++] + "\n";
    ++j;
  }
  skip(wanted.size(), found.size());
  return text;
}

}  // namespace scenarios
