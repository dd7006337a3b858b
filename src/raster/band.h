// The carriage passes of one band, and the move of the pass buffers to the next. Host's thread.
#ifndef QRN_RASTER_BAND_H_
#define QRN_RASTER_BAND_H_

#include <cstdint>

#include "host/job.h"

namespace qrn {

// Rows that move on with a band: two head heights, whatever the band's height is.
constexpr std::uint32_t kShiftRows = 720;

// Runs the passes of a full band and moves on; where a swath could not be made, nothing moves.
void CompleteBand(Job& job);

// One round of passCount passes; false when a swath could not be made.
[[nodiscard]] bool RunPasses(Job& job);
// Converts the current pass into PrintOutBuf, or marks it empty, and sets its size fields.
void ConvertPass(Job& job);
// True when the rows of the pass hold no pixel; otherwise the byte range of the pass is set.
[[nodiscard]] bool IsPassBlank(Job& job);
// Moves every pass buffer up by one band and clears what is free then.
void ShiftPassBuffers(Job& job);

}  // namespace qrn

#endif  // QRN_RASTER_BAND_H_
