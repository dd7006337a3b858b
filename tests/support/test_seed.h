// The seed of a test run: --seed=N on the command line, else QRN_TEST_SEED, else drawn once and
// printed.
#ifndef QRN_TESTS_SUPPORT_TEST_SEED_H_
#define QRN_TESTS_SUPPORT_TEST_SEED_H_

#include <cstdint>

std::uint64_t TestSeed();

#endif  // QRN_TESTS_SUPPORT_TEST_SEED_H_
