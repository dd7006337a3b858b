// Every character of the library's texts must leave it as iconv would write it.
#include "diag/code_page.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "support/log_text.h"

namespace qrn {
namespace {

TEST(CodePage, KnowsEveryCharacterOfTheSources) {
  int characters = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(QRN_SOURCE_DIR)) {
    if (entry.path().extension() != ".cpp" && entry.path().extension() != ".h") continue;
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    std::string converted(2 * text.size() + 1, '\0');
    ToCodePage(text.c_str(), converted.data(), converted.size());
    converted.resize(std::char_traits<char>::length(converted.c_str()));
    EXPECT_EQ(text, CodePageToUtf8(converted)) << entry.path();
    for (const char c : text) characters += (static_cast<unsigned char>(c) & 0xC0u) == 0xC0u;
  }
  EXPECT_GT(characters, 500);  // the texts were really there
}

TEST(CodePage, CutsBetweenCharactersAndMarksUnknownOnes) {
  struct Case {
    const char* utf8;
    std::size_t room;
    const char* bytes;
  };
  for (const Case& expected :
       {Case{"a打b", 5,
             "a\xB4\xF2"
             "b"},
        Case{"a打b", 4, "a\xB4\xF2"}, Case{"a打b", 3, "a"}, Case{"a打b", 1, ""},
        Case{"é€x", 8, "??x"}, Case{"\xE6\x89", 8, "??"}}) {
    char out[8];
    ToCodePage(expected.utf8, out, expected.room);
    EXPECT_STREQ(expected.bytes, out);
  }
}

}  // namespace
}  // namespace qrn
