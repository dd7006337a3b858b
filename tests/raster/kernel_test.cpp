// What a job's kernels are not given on every machine: memory that is not aligned.
#include <gtest/gtest.h>

#include <algorithm>

#include "raster/kernels.h"

namespace qrn {
namespace {

// Windows aligns memory of 32-bit programs to 8 bytes only.
TEST(Kernels, StreamToAnyAddress) {
  std::uint8_t source[200];
  for (std::uint8_t& byte : source) byte = static_cast<std::uint8_t>(&byte - source + 1);
  for (const Kernel* kernel : Kernels()) {
    for (std::size_t offset = 0; offset < 32; ++offset) {
      for (std::size_t bytes = 0; bytes <= 100; ++bytes) {
        alignas(64) std::uint8_t got[192] = {}, wanted[192] = {};
        const std::uint8_t* const from = source + bytes % 7;
        std::copy(from, from + bytes, wanted + offset);
        kernel->stream(got + offset, from, bytes);
        ASSERT_TRUE(std::equal(wanted, wanted + 192, got)) << kernel->name << " " << bytes;
      }
    }
  }
}

}  // namespace
}  // namespace qrn
