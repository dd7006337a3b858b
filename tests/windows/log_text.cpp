#include "support/log_text.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace {

constexpr UINT kCodePage = 936;

}  // namespace

std::string CodePageToUtf8(const std::string& bytes) {
  if (bytes.empty()) return "";
  std::wstring wide(bytes.size(), L'\0');
  const int count = MultiByteToWideChar(kCodePage, MB_ERR_INVALID_CHARS, bytes.data(),
                                        static_cast<int>(bytes.size()), wide.data(),
                                        static_cast<int>(wide.size()));
  EXPECT_GT(count, 0) << "bytes that are not the code page's";
  std::string utf8(3 * bytes.size(), '\0');
  const int utf8Bytes = WideCharToMultiByte(CP_UTF8, 0, wide.data(), count, utf8.data(),
                                            static_cast<int>(utf8.size()), nullptr, nullptr);
  utf8.resize(static_cast<std::size_t>(utf8Bytes));
  return utf8;
}
