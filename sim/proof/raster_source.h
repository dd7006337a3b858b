// The image of a job as it is handed over: what paper is held against.
#ifndef QRN_SIM_PROOF_RASTER_SOURCE_H_
#define QRN_SIM_PROOF_RASTER_SOURCE_H_

#include <cstdint>

namespace qrn::sim {

// 8 colors, 2 bits a pixel, four pixels a byte, leftmost in the highest bits.
class RasterSource {
 public:
  virtual ~RasterSource() = default;
  virtual std::uint32_t Lines() const = 0;
  virtual std::uint32_t LineBytes() const = 0;
  // Line bytes of one color; nullptr = blank. Valid until the next call.
  virtual const std::uint8_t* Line(int color, std::uint32_t line) const = 0;
};

}  // namespace qrn::sim

#endif  // QRN_SIM_PROOF_RASTER_SOURCE_H_
