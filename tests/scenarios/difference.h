// Where two texts differ.
#ifndef QRN_TESTS_SCENARIOS_DIFFERENCE_H_
#define QRN_TESTS_SCENARIOS_DIFFERENCE_H_

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace scenarios {

using Text = std::vector<std::string>;

// Places of the lines that both have, in order: as many as can be.
std::vector<std::pair<std::size_t, std::size_t>> CommonLines(const Text& a, const Text& b);

// All lines, those that only the first has behind a "-", those that only the second has behind a
// "+".
std::string Difference(const Text& wanted, const Text& found);

}  // namespace scenarios

#endif  // QRN_TESTS_SCENARIOS_DIFFERENCE_H_
