// Parameter blocks that a printer should not report.
#ifndef QRN_SIM_FIRMWARE_BLOCK_DEFECTS_H_
#define QRN_SIM_FIRMWARE_BLOCK_DEFECTS_H_

#include <cstdint>
#include <vector>

#include "sim/quirks/quirks.h"

namespace qrn::sim {

// Gives a whole block this defect.
void SpoilBlock(Defect defect, std::vector<std::uint8_t>* block);

}  // namespace qrn::sim

#endif  // QRN_SIM_FIRMWARE_BLOCK_DEFECTS_H_
