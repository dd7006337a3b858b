// How many bytes a pass takes: in the buffers, and in the swath that carries it away.
#ifndef QRN_RASTER_PASS_SIZE_H_
#define QRN_RASTER_PASS_SIZE_H_

#include <cstdint>

#include "job/job.h"

namespace qrn {

// Bytes of PrintOutBuf and of each slot's buffer, which trade places: room for the swath of every
// pass of the job. What a 32-bit size cannot hold cannot be obtained either. Requires: a derived
// geometry.
std::uint64_t PrintOutBytes(const Job& job);

// Sets passRowPad and passDataSize, and with two heads takes the head distance into the range of
// the pass. Host's thread. Requires: the range as the worker has used it.
void SetPassSize(Job& job);

// Bytes that the swath of the pass carries: passDataSize, rounded up to whole units.
std::uint32_t SwathDataSize(const Job& job);

}  // namespace qrn

#endif  // QRN_RASTER_PASS_SIZE_H_
