// Feathering: the last nozzles of a row print only a part of their pixels, fewer and fewer towards
// the end of the row, so that the seam between two passes does not show. A mask is 256 bytes of
// four 2-bit cells in the raster's pixel order: 11 lets a pixel through, 00 holds it back.
#ifndef QRN_PARAMS_FEATHER_MASKS_H_
#define QRN_PARAMS_FEATHER_MASKS_H_

#include <cstdint>

#include "job/job.h"

namespace qrn {

constexpr std::uint32_t kFeatherMasks = 90;  // from almost full to almost empty

// Cells that mask k keeps, of 1024.
extern const std::uint16_t kFeatherKept[kFeatherMasks];

// Mask k of the 90, k below kFeatherMasks: the kept cells lie evenly scattered and differently in
// every mask.
void FillFeatherMask(std::uint32_t k, std::uint8_t (&mask)[kFeatherMaskBytes]);

// Sets featherRows from featherPercent (above 100 switches feathering off) and fills the job's
// masks, spread over the 90. Transmit thread, at connect.
void BuildFeatherMasks(Job& job);

}  // namespace qrn

#endif  // QRN_PARAMS_FEATHER_MASKS_H_
