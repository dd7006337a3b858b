// Text leaves the library in code page 936, on every platform and with every compiler; the sources
// hold it as UTF-8. This is the one place that turns the one into the other. It knows the
// characters that the library's texts use.
#ifndef QRN_DIAG_CODE_PAGE_H_
#define QRN_DIAG_CODE_PAGE_H_

#include <cstddef>
#include <cstdint>

namespace qrn {

// The two bytes of a character in code page 936, first byte high; 0 when the library's texts do not
// use it.
std::uint16_t CodePageBytes(std::uint32_t character);

// Converts UTF-8 text with its terminating zero into `out`, cut between characters where `outBytes`
// (at least 1) ends. A character outside the table becomes '?'.
void ToCodePage(const char* utf8, char* out, std::size_t outBytes);

}  // namespace qrn

#endif  // QRN_DIAG_CODE_PAGE_H_
