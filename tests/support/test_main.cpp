#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

#include "support/test_seed.h"

namespace {

std::uint64_t g_seed = 0;

}  // namespace

std::uint64_t TestSeed() {
  std::printf("seed: rerun with --seed=%llu\n", static_cast<unsigned long long>(g_seed));
  return g_seed;
}

// Read by the address sanitizer at its start. A thread that is ended by force leaves its frames
// without telling the sanitizer, which then takes its own last step on that stack, giving back the
// signal stack, for an error.
// NOLINTNEXTLINE(bugprone-reserved-identifier): the sanitizer's name for it
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options() {
  return "use_sigaltstack=0";
}

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  g_seed = std::random_device{}() % 1'000'000u;
  if (const char* text = std::getenv("QRN_TEST_SEED")) g_seed = std::strtoull(text, nullptr, 10);
  for (int i = 1; i < argc; ++i) {
    if (std::strncmp(argv[i], "--seed=", 7) == 0) g_seed = std::strtoull(argv[i] + 7, nullptr, 10);
  }
  const int result = RUN_ALL_TESTS();
  // A filter that no longer matches anything must not pass.
  return testing::UnitTest::GetInstance()->test_to_run_count() == 0 && argc > 1 ? 1 : result;
}
