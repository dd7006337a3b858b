// The swath header as it travels, at byte 28 of the swath command packet. Transmit thread.
#ifndef QRN_PROTOCOL_SWATH_HEADER_H_
#define QRN_PROTOCOL_SWATH_HEADER_H_

#include <cstdint>

#include "job/swath.h"

namespace qrn {

// Writes kSwathHeaderBytes, little-endian; reserved fields are zero.
void EncodeSwathHeader(const SwathHeader& header, std::uint8_t* bytes);

}  // namespace qrn

#endif  // QRN_PROTOCOL_SWATH_HEADER_H_
