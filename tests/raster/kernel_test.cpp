// Every step of every kernel against the plain one's.
#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <vector>

#include "raster/kernels.h"
#include "raster/print_out.h"
#include "support/test_seed.h"

namespace qrn {
namespace {

using Bytes = std::vector<std::uint8_t>;

class KernelSteps : public testing::Test {
 protected:
  Bytes Draw(std::size_t count) {
    Bytes bytes(count);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
    return bytes;
  }
  // Calls `step` with the plain kernel and then with each, and compares the bytes it returns.
  template <class Step>
  void ExpectLikePlain(Step step) {
    const Bytes wanted = step(*Kernels().back());
    for (const Kernel* kernel : Kernels()) {
      SCOPED_TRACE(kernel->name);
      ASSERT_EQ(wanted, step(*kernel));
    }
  }
  std::mt19937 random{static_cast<std::uint32_t>(TestSeed())};
};

TEST_F(KernelSteps, SortAlike) {
  for (const std::uint32_t phases : {3u, 4u, 6u, 8u}) {
    for (std::size_t vectors = 0; vectors <= 5; ++vectors) {
      Bytes line = Draw(vectors * kVectorBytes * phases);
      for (std::size_t i = 0; i < line.size(); ++i) {
        if (vectors == 5 && i % phases != 1) line[i] = 0;  // some phases without ink
      }
      const std::size_t apart = 16 * vectors + 24;
      ExpectLikePlain([&](const Kernel& kernel) {
        Bytes runs(phases * apart, 0xA5);
        runs.push_back(static_cast<std::uint8_t>(
            kernel.sort(phases, line.data(), vectors, runs.data(), apart)));
        return runs;
      });
    }
  }
}

TEST_F(KernelSteps, AlignAlike) {
  const Bytes source = Draw(kGroupNozzles * kStripReadBytes), before = Draw(16 * kJetBytes);
  for (const unsigned shift : {0u, 2u, 4u, 6u}) {
    for (const bool add : {false, true}) {
      const std::uint8_t* runs[kGroupNozzles];
      for (std::uint32_t n = 0; n < kGroupNozzles; ++n)
        runs[n] = n == 3 ? nullptr : source.data() + n * kStripReadBytes;
      ExpectLikePlain([&](const Kernel& kernel) {
        Bytes rows = before;
        kernel.align(runs, shift, rows.data() + 2 * kStripBytes, add);
        return rows;
      });
    }
  }
}

TEST_F(KernelSteps, LayAlike) {
  auto jets = std::make_unique<JetRows>();
  for (std::uint32_t jet = 0; jet < kGroupJets; ++jet) {
    jets->ink[jet] = jet % 5 == 2 ? 0 : 0xFF;
    for (auto& row : jets->rows[jet]) {
      for (std::uint8_t& byte : row)
        byte = static_cast<std::uint8_t>(jets->ink[jet] == 0 ? 0 : random());
    }
  }
  for (const std::uint32_t columns : {1u, 3u, 63u, 64u, 65u, 200u, 256u}) {
    for (const std::uint32_t nozzles : {4u, 8u}) {
      for (const std::ptrdiff_t step : {std::ptrdiff_t{720}, std::ptrdiff_t{-720}}) {
        for (const std::uint32_t firstByte : {0u, 64u, 192u}) {
          ExpectLikePlain([&](const Kernel& kernel) {
            Bytes out(kColumnBytes * (columns + 1), 0xA5);
            std::uint8_t* const first = step > 0 ? out.data() : &out[kColumnBytes * (columns - 1)];
            kernel.lay(*jets, firstByte, nozzles, columns, first + 32, step);
            return out;
          });
        }
      }
    }
  }
}

// Windows aligns memory of 32-bit programs to 8 bytes only.
TEST_F(KernelSteps, StreamAlike) {
  const Bytes source = Draw(200);
  for (std::size_t offset = 0; offset < 32; ++offset) {
    for (std::size_t bytes = 0; bytes <= 100; ++bytes) {
      ExpectLikePlain([&](const Kernel& kernel) {
        alignas(64) std::uint8_t target[192] = {};
        kernel.stream(target + offset, source.data() + bytes % 7, bytes);
        return Bytes(target, target + sizeof target);
      });
    }
  }
}

}  // namespace
}  // namespace qrn
