#include "support/log_text.h"

#include <gtest/gtest.h>
#include <iconv.h>

std::string CodePageToUtf8(const std::string& bytes) {
  const iconv_t converter = iconv_open("UTF-8", "CP936");
  std::string in = bytes;
  std::string out(3 * bytes.size() + 1, '\0');
  char* from = in.data();
  char* to = out.data();
  std::size_t fromLeft = in.size(), toLeft = out.size();
  EXPECT_NE(static_cast<std::size_t>(-1), iconv(converter, &from, &fromLeft, &to, &toLeft))
      << "at byte " << from - in.data();
  iconv_close(converter);
  out.resize(out.size() - toLeft);
  return out;
}
