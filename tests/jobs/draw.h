// Draws texts from a grammar, the same from a seed everywhere.
#ifndef QRN_TESTS_JOBS_DRAW_H_
#define QRN_TESTS_JOBS_DRAW_H_

#include <cstdint>
#include <map>
#include <string>
#include <vector>

// Texts by name. "{a|b|3*c}" stands for one of those, c three times as likely as a; "{5..20}" for a
// number; "<name>" for the text of that name, drawn anew. Braces nest.
using Grammar = std::map<std::string, std::string>;

class Drawing {
 public:
  Drawing(const Grammar& grammar, std::uint64_t seed) : grammar_(grammar), state_(seed) {}
  std::string Draw(const std::string& text);

 private:
  using Choices = std::vector<std::string>;

  std::uint64_t Next();
  std::string Choose(const Choices& choices);

  const Grammar& grammar_;
  std::uint64_t state_;
};

#endif  // QRN_TESTS_JOBS_DRAW_H_
