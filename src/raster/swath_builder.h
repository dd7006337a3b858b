// Closes a converted pass into a swath. Host's thread.
#ifndef QRN_RASTER_SWATH_BUILDER_H_
#define QRN_RASTER_SWATH_BUILDER_H_

#include <cstdint>

#include "job/job.h"

namespace qrn {

// Takes the pass just converted: a printing one becomes a swath, a blank one is gathered into the
// feed that goes out before the next printing swath. False when no slot could be had or the job is
// stopping.
[[nodiscard]] bool PutSwath(Job& job);
// Fills a taken slot: it gets PrintOutBuf, and its own buffer is the next PrintOutBuf.
void CreateSwath(Job& job, Swath& swath);
// Queues feed-only swaths for this many motor steps.
void EmptySteps(Job& job, std::uint64_t steps);
// Moves feedLine on by one pass, at most to nHeight, and notes it in the swath.
void AdvanceFeedLine(Job& job, Swath& swath);

}  // namespace qrn

#endif  // QRN_RASTER_SWATH_BUILDER_H_
