// What the printer says about the job's state: pause, cancel, and the parameters that it sends
// along. Transmit thread.
#ifndef QRN_PROTOCOL_PRINTER_STATE_H_
#define QRN_PROTOCOL_PRINTER_STATE_H_

#include <cstdint>

#include "job/job.h"

namespace qrn {

// Records a reported state; a repeated one changes nothing and is not logged.
void SetPrinterState(Job& job, std::uint8_t pause, std::uint8_t cancel);

// The two readings of a reply's JobState. They take kJobCancelled, kJobResumed and kJobRunning
// alike, but
//                  reply to a swath or pause poll    reply to a buffer query
//   kJobGone       cancels                           says nothing
//   kJobCancelled  logs it                           no line of its own
//   kJobPaused     logs it, rests for 2 s            neither: the wait for room has its own period
void TakeRepliedState(Job& job, const std::uint8_t* reply, std::uint32_t bytes);
void TakeQueriedState(Job& job, const std::uint8_t* reply, std::uint32_t bytes);

}  // namespace qrn

#endif  // QRN_PROTOCOL_PRINTER_STATE_H_
