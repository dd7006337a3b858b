// Conversion of one colour of one pass, pixel by pixel, from rows as the host gave them.
#ifndef QRN_TESTS_REFERENCE_PLAIN_CONVERT_H_
#define QRN_TESTS_REFERENCE_PLAIN_CONVERT_H_

#include <cstdint>

#include "host/job.h"

namespace qrn::plain {

constexpr std::uint32_t kPlaneBytes = 2 * kNozzles;
constexpr std::uint32_t kColumnBytes = 2 * kPlaneBytes;

// Pixels of a line that an output column stands for.
std::uint32_t ColumnPixels(const Job& job);

// Moves the dots of curColor from pPassSrc on into PrintOutBuf, whose columns are zero in front of
// the first colour of a pass.
void ConvertColor(Job& job);

}  // namespace qrn::plain

#endif  // QRN_TESTS_REFERENCE_PLAIN_CONVERT_H_
