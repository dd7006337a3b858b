// The transmit thread: all traffic with the printer, one message and its reply at a time.
#ifndef QRN_LINK_TRANSMIT_H_
#define QRN_LINK_TRANSMIT_H_

#include <cstdint>

#include "host/job.h"

namespace qrn {

// Host's thread. Opens the device and starts the transmit thread; 1 on success. Failures are
// logged; a device that cannot be opened is DriverError 31.
[[nodiscard]] int LinkStart(Job& job);
// Host's thread. Ends the transmit thread, by force after about 20 s, and closes the device.
void LinkStop(Job& job);

// The rest runs on the transmit thread.
void TxTask(Job& job);
[[nodiscard]] int TxSendCommand(Job& job);
[[nodiscard]] int TxTakeSwath(Job& job);
[[nodiscard]] int TxSendSwath(Job& job);
// 1 when the message was delivered, or given up because the job stops; 0 on failure.
[[nodiscard]] int TxExchange(Job& job, const std::uint8_t* packet, std::uint32_t packetBytes,
                             const std::uint8_t* data, std::uint32_t dataBytes);
// Returns when the printer has room for this much swath data, when the job stops, or when the query
// fails.
void TxWaitFwBuffer(Job& job, std::uint32_t dataBytes);

}  // namespace qrn

#endif  // QRN_LINK_TRANSMIT_H_
