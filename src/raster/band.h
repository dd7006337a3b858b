// The carriage passes of one band, and the move of the pass buffers to the next. Host's thread.
#ifndef QRN_RASTER_BAND_H_
#define QRN_RASTER_BAND_H_

#include <cstdint>

#include "job/job.h"

namespace qrn {

// Runs the passes of a full band and moves on; where a swath could not be made, nothing moves.
void CompleteBand(Job& job);

// One round of passCount passes; false when a swath could not be made.
[[nodiscard]] bool RunPasses(Job& job);
// The direction of the next pass, 0 or 1. Once per pass.
std::uint8_t NextSwathDir(Job& job);
// Moves every pass buffer up by one band and clears what is free then.
void ShiftPassBuffers(Job& job);

}  // namespace qrn

#endif  // QRN_RASTER_BAND_H_
