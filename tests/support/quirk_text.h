// Quirk scripts as people write them.
#ifndef QRN_TESTS_SUPPORT_QUIRK_TEXT_H_
#define QRN_TESTS_SUPPORT_QUIRK_TEXT_H_

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sim/quirks/quirks.h"

// One quirk a text, as print-page takes them; the test fails on one that is none.
inline qrn::sim::QuirkScript Script(const std::vector<const char*>& texts) {
  qrn::sim::QuirkScript script(texts.size());
  for (std::size_t i = 0; i < texts.size(); ++i) {
    std::string error;
    EXPECT_TRUE(qrn::sim::ParseQuirk(texts[i], &script[i], &error)) << error;
  }
  return script;
}

#endif  // QRN_TESTS_SUPPORT_QUIRK_TEXT_H_
