// The raster without a thought for speed: rows as the host gave them, moved up band by band, every
// pixel looked at in every pass. Of the core it shares the pictures of the feather masks alone.
#ifndef QRN_TESTS_REFERENCE_PLAIN_RASTER_H_
#define QRN_TESTS_REFERENCE_PLAIN_RASTER_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "reference/plain_geometry.h"

namespace qrn::plain {

class PlainRaster {
 public:
  // Requires: an accepted geometry.
  explicit PlainRaster(const Geometry& geometry);

  std::uint8_t* Row(std::uint32_t plane, std::uint32_t row) {
    return planes_[plane].data() + std::size_t{row} * geometry_.lineStride;
  }
  // Pass 0 .. passCount - 1 of a band; false where nothing is printed, and nothing changes then.
  [[nodiscard]] bool ConvertPass(std::uint32_t passIndex, std::uint32_t dir);
  // What the swath of the pass carries.
  const std::vector<std::uint8_t>& Columns() const { return columns_; }
  // On to the next band.
  void Shift();

 private:
  struct Jets;  // a nozzle row of a pass

  bool IsBlank(std::uint32_t firstRow) const;
  void ConvertColor(std::uint32_t plane, std::uint32_t passIndex, std::uint32_t dir);
  void PrintRows(const Jets& jets);
  std::uint32_t SlotColumn(std::uint32_t slot, std::uint32_t dir) const;
  bool IsHeldBack(std::uint32_t nozzle, std::uint32_t pixel) const;

  Geometry geometry_;
  std::vector<std::array<std::uint8_t, 256>> masks_;
  std::vector<std::uint8_t> planes_[kColors], columns_;
  // Of a group of whole columns, and how many of them a line must have for it to be printed.
  std::uint32_t groupBytes_, needBytes_;
  std::uint32_t lastColumn_;  // forward column j is lastColumn_ - j in reverse
};

}  // namespace qrn::plain

#endif  // QRN_TESTS_REFERENCE_PLAIN_RASTER_H_
