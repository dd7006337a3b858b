// The transmit thread: all traffic with the printer, one message and its reply at a time.
// Everything here runs on it.
#ifndef QRN_LINK_TRANSMIT_H_
#define QRN_LINK_TRANSMIT_H_

#include "job/job.h"

namespace qrn {

// The thread's procedure; returns when the job has ended, was stopped, or the link is gone.
void TxTask(Job& job);
// Sends cmdPkt and settles it; 1 when the printer accepted it.
[[nodiscard]] int TxSendCommand(Job& job);
// Takes the next ready swath into pTxSwath; 0 when there is none or the printer cancelled.
[[nodiscard]] int TxTakeSwath(Job& job);
// Sends pTxSwath and frees its slot; 0, and the slot unchanged, on failure.
[[nodiscard]] int TxSendSwath(Job& job);

}  // namespace qrn

#endif  // QRN_LINK_TRANSMIT_H_
