// Pause and cancel as the printer reports them, and the flash-jetting requests that ride on swaths.
// Transmit thread.
#ifndef QRN_PROTOCOL_PRINTER_STATE_H_
#define QRN_PROTOCOL_PRINTER_STATE_H_

#include <cstdint>

#include "host/job.h"

namespace qrn {

// Records a reported state; a repeated one changes nothing and is not logged.
void SetPrinterState(Job& job, std::uint8_t pause, std::uint8_t cancel);

// Fills spitMode and spitAmount of a swath that is about to be sent. Heads take turns on a two-head
// carriage, and go on doing so across jobs.
void SpitPlan(Job& job, Swath& swath);

}  // namespace qrn

#endif  // QRN_PROTOCOL_PRINTER_STATE_H_
