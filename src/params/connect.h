// The connect, top to bottom: the parameter block is checked, and turned into the machine, the
// job's geometry and its memory, each in a file of its own, in the order of ParsePrinterParams.
// Transmit thread, while the host's thread waits for the connect to be answered.
#ifndef QRN_PARAMS_CONNECT_H_
#define QRN_PARAMS_CONNECT_H_

#include <cstdint>

#include "job/job.h"

namespace qrn {

// Takes the payload of an accepted connect reply: checks it and the job against it, derives the
// geometry, obtains the job's buffers. False when the job cannot go on; the DriverError has been
// raised where one applies.
[[nodiscard]] bool ParsePrinterParams(Job& job, const std::uint8_t* payload, std::uint32_t bytes);

// Applies the adjustable section that a pause reply carries. Shorter sections are ignored with a
// log line.
void UpdateFwPara(Job& job, const std::uint8_t* section, std::uint32_t bytes);

}  // namespace qrn

#endif  // QRN_PARAMS_CONNECT_H_
