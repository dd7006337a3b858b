// Moves messages to the printer and replies back, in frames. Knows no message's meaning, never
// retries, sets no time limit: a transfer blocks until the driver has completed it. Transmit thread
// only; buffers and the message sequence number are static.
#ifndef QRN_LINK_TRANSPORT_H_
#define QRN_LINK_TRANSPORT_H_

#include <cstdint>

#include "job/job.h"
#include "platform/platform.h"

namespace qrn {

// Sends bytes / 2 words (an odd last byte is not sent) as one message of type kTypeCmm or
// kTypeData. 0 at the first failed write; 1 otherwise, also for an unknown type, of which nothing
// is sent.
[[nodiscard]] int LinkSend(DeviceHandle device, const std::uint8_t* message, std::uint32_t bytes,
                           int type);

// Reads packets until one reply is complete and joins them in `reply`. 0 when a read failed. 1
// otherwise, with the reply's length in *replyBytes: 0 for a packet of no known kind; more than the
// capacity when the reply was longer than that, of which only the chunks that fit were kept.
[[nodiscard]] int LinkRecv(Job& job, std::uint8_t* reply, std::uint32_t capacity,
                           std::uint32_t* replyBytes);

// One bulk write of 2 x words bytes.
[[nodiscard]] bool UsbWritePipe(DeviceHandle device, const std::uint8_t* data, std::uint32_t words);

// The two framers, for a message of `words` words.
[[nodiscard]] int UsbSendCmm(DeviceHandle device, const std::uint8_t* message, std::uint32_t words);
[[nodiscard]] int UsbSendData(DeviceHandle device, const std::uint8_t* message,
                              std::uint32_t words);

}  // namespace qrn

#endif  // QRN_LINK_TRANSPORT_H_
