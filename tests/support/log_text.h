// Reads what the library writes in code page 936.
#ifndef QRN_TESTS_SUPPORT_LOG_TEXT_H_
#define QRN_TESTS_SUPPORT_LOG_TEXT_H_

#include <string>

// Through iconv, not through the library's own table. Fails the current test on bytes that are not
// the code page's.
std::string CodePageToUtf8(const std::string& bytes);

#endif  // QRN_TESTS_SUPPORT_LOG_TEXT_H_
