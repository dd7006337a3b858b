// What every fuzz target uses: the input taken apart from front to back, and a check that ends the
// process, which is how a fuzzer learns of a fault.
#ifndef QRN_FUZZ_FUZZ_INPUT_H_
#define QRN_FUZZ_FUZZ_INPUT_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#define FUZZ_CHECK(condition)                                                             \
  do {                                                                                    \
    if (!(condition)) {                                                                   \
      std::fprintf(stderr, "%s:%d: does not hold: %s\n", __FILE__, __LINE__, #condition); \
      std::abort();                                                                       \
    }                                                                                     \
  } while (false)

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace qrn::fuzz {

// Numbers are little-endian; past the end of the input everything is 0.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {}

  bool Empty() const { return left_ == 0; }
  std::uint8_t U8() {
    if (left_ == 0) return 0;
    --left_;
    return *data_++;
  }
  std::uint16_t U16() {
    const std::uint16_t low = U8();
    return static_cast<std::uint16_t>(low | (U8() << 8));
  }
  std::uint32_t U32() {
    const std::uint32_t low = U16();
    return low | (static_cast<std::uint32_t>(U16()) << 16);
  }
  // At most `count` bytes, in memory of their own and of exactly their size, so that a sanitizer
  // sees the first read past them.
  std::vector<std::uint8_t> Bytes(std::size_t count) {
    count = std::min(count, left_);
    std::vector<std::uint8_t> bytes(data_, data_ + count);
    data_ += count;
    left_ -= count;
    return bytes;
  }
  std::vector<std::uint8_t> Rest() { return Bytes(left_); }

 private:
  const std::uint8_t* data_;
  std::size_t left_;
};

}  // namespace qrn::fuzz

#endif  // QRN_FUZZ_FUZZ_INPUT_H_
