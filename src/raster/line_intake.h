// Line intake: stores host lines in the pass buffers, hands every complete band on and drains what
// is left at the end. Host's thread, inside the exports.
#ifndef QRN_RASTER_LINE_INTAKE_H_
#define QRN_RASTER_LINE_INTAKE_H_

#include <cstdint>

#include "job/job.h"

namespace qrn {

// Stores one line of one colour; the line of the last colour completes it. 1 when taken (or dropped
// because the image is complete), 0 when it cannot be used: colour not below nColors, no line, or a
// job without buffers. Bytes above lineStride are cut.
int AddLine(Job& job, std::uint32_t color, std::uint32_t bytes, const std::uint8_t* line);

// Drains the partial band and the history rows through a fixed number of extra bands, as far as
// swaths can be made.
void FlushLastBands(Job& job);

}  // namespace qrn

#endif  // QRN_RASTER_LINE_INTAKE_H_
