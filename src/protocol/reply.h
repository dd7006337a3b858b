// What the printer answers, and what that means for the job. Transmit thread only.
#ifndef QRN_PROTOCOL_REPLY_H_
#define QRN_PROTOCOL_REPLY_H_

#include <cstdint>

#include "job/job.h"

namespace qrn {

enum ReplyVerdict : int {
  kReplyTaken = 0,
  kReplyRefused = 1,
  kReplyAgain = 2,  // send the packet again
  kReplyOther = 4,  // answers another packet: read the next reply
};

// Interprets one reply to the command in flight (nTxCmd), of any length. May sleep for 2 or 3 s and
// may show an error box.
[[nodiscard]] ReplyVerdict ParseReply(Job& job, const std::uint8_t* reply, std::uint32_t bytes);

}  // namespace qrn

#endif  // QRN_PROTOCOL_REPLY_H_
