// One message and its reply: resends, the wait for the printer's room before a swath, link loss.
// Transmit thread.
#ifndef QRN_LINK_EXCHANGE_H_
#define QRN_LINK_EXCHANGE_H_

#include <cstdint>

#include "job/job.h"

namespace qrn {

// Sends a packet, and data when dataBytes is not 0, until it is accepted, refused or given up,
// reconnecting when the link breaks. 1 when the message was delivered, or was a swath and given up
// because the job stops; 0 on failure.
[[nodiscard]] int TxExchange(Job& job, const std::uint8_t* packet, std::uint32_t packetBytes,
                             const std::uint8_t* data, std::uint32_t dataBytes);
// Returns when the printer has room for this much swath data, when the job stops, or when the query
// fails.
void TxWaitFwBuffer(Job& job, std::uint32_t dataBytes);

}  // namespace qrn

#endif  // QRN_LINK_EXCHANGE_H_
