// A command of the host's thread, from its post to the printer's answer.
#ifndef QRN_PROTOCOL_EXECUTE_H_
#define QRN_PROTOCOL_EXECUTE_H_

#include <cstdint>

#include "job/job.h"

namespace qrn {

// Posts a command and waits, without limit, until it is settled or the link is gone; 1 when the
// printer accepted it. Host's thread.
int CmdExecute(std::uint32_t code, Job& job);

}  // namespace qrn

#endif  // QRN_PROTOCOL_EXECUTE_H_
