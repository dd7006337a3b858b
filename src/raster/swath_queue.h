// The six-slot queue between the host's thread (producer) and the transmit thread (consumer). No
// locks: each slot state has one owner, and a state is published after the data that belong to it.
#ifndef QRN_RASTER_SWATH_QUEUE_H_
#define QRN_RASTER_SWATH_QUEUE_H_

#include <cstdint>

#include "base/bytes.h"
#include "job/job.h"

namespace qrn {

// Speed of a header, from the carriage speed of the job.
constexpr std::uint16_t HeaderSpeed(const Job& job) { return Low16(job.carriageSpeed * 600u); }

// All slots free, their headers empty except for the speed. Transmit thread, within the connect.
void ResetQueue(Job& job);
// Host's thread. Takes the next slot for filling; null when it is not free.
[[nodiscard]] Swath* QueueGetFree(Job& job);
// Host's thread. Waits for a free slot and counts the swath; null when the job is stopping.
[[nodiscard]] Swath* GetPcBuffer(Job& job);
// Transmit thread. Takes the next ready slot for sending; null when there is none, or while fewer
// than three slots are used and the queue has not been started.
[[nodiscard]] Swath* QueueGetReady(Job& job);
// Either thread, within the transitions that belong to it. Null is ignored.
void SetSwathState(Swath* swath, SwathState state);

// Host's thread. Lets the queue drain before the job end.
void WaitSwathQueue(Job& job);

}  // namespace qrn

#endif  // QRN_RASTER_SWATH_QUEUE_H_
