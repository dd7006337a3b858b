// What was fed, in order, in 32 bits: FNV-1a.
#ifndef QRN_TESTS_SCENARIOS_DIGEST_H_
#define QRN_TESTS_SCENARIOS_DIGEST_H_

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

namespace scenarios {

class Digest {
 public:
  void Add(const void* bytes, std::size_t count) {
    const auto* from = static_cast<const std::uint8_t*>(bytes);
    for (std::size_t i = 0; i < count; ++i) value_ = (value_ ^ from[i]) * 0x100000001B3u;
  }
  std::string Text() const {
    char text[9];
    std::snprintf(text, sizeof text, "%08x", static_cast<unsigned>(value_ ^ (value_ >> 32)));
    return text;
  }

 private:
  std::uint64_t value_ = 0xCBF29CE484222325u;
};

}  // namespace scenarios

#endif  // QRN_TESTS_SCENARIOS_DIGEST_H_
