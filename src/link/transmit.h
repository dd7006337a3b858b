// The transmit thread: all traffic with the printer, one message and its reply at a time.
// Everything here runs on it.
#ifndef QRN_LINK_TRANSMIT_H_
#define QRN_LINK_TRANSMIT_H_

#include <cstdint>

#include "host/job.h"

namespace qrn {

// The thread's procedure; returns when the job has ended, was stopped, or the link is gone.
void TxTask(Job& job);
// Sends cmdPkt and settles it; 1 when the printer accepted it.
[[nodiscard]] int TxSendCommand(Job& job);
// Takes the next ready swath into pTxSwath; 0 when there is none or the printer cancelled.
[[nodiscard]] int TxTakeSwath(Job& job);
// Sends pTxSwath and frees its slot; 0, and the slot unchanged, on failure.
[[nodiscard]] int TxSendSwath(Job& job);
// Sends a packet, and data when dataBytes is not 0, until it is accepted, refused or given up,
// reconnecting when the link breaks. 1 when the message was delivered, or was a swath and given up
// because the job stops; 0 on failure.
[[nodiscard]] int TxExchange(Job& job, const std::uint8_t* packet, std::uint32_t packetBytes,
                             const std::uint8_t* data, std::uint32_t dataBytes);
// Returns when the printer has room for this much swath data, when the job stops, or when the query
// fails.
void TxWaitFwBuffer(Job& job, std::uint32_t dataBytes);

}  // namespace qrn

#endif  // QRN_LINK_TRANSMIT_H_
