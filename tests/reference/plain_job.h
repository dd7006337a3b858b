// A whole job on the plain raster: from the parameter block, the image and the host's calls to the
// swaths, their headers to the byte.
#ifndef QRN_TESTS_REFERENCE_PLAIN_JOB_H_
#define QRN_TESTS_REFERENCE_PLAIN_JOB_H_

#include <array>
#include <cstdint>
#include <functional>
#include <vector>

#include "reference/plain_raster.h"

namespace qrn::plain {

struct PlainSwath {
  std::array<std::uint8_t, 36> header;
  std::vector<std::uint8_t> data;  // none: the swath only feeds
};

class PlainJob {
 public:
  using TakeSwath =
      std::function<void(const std::array<std::uint8_t, 36>&, const std::vector<std::uint8_t>&)>;

  // Requires: a block that is accepted for the image.
  PlainJob(const std::uint8_t* block, const JobDesc& desc, TakeSwath take);

  int AddLine(std::uint32_t color, std::uint32_t bytes, const std::uint8_t* line);
  void Flush();
  void Update(const std::uint8_t* section, std::uint32_t bytes);
  void LimitSwaths(std::uint32_t limit) { swathLimit_ = limit; }
  std::uint32_t LinesReceived() const { return linesReceived_; }
  PlainRaster& Raster() { return raster_; }
  const Geometry& Shape() const { return geometry_; }

 private:
  void RunPasses();
  void PrintPass(std::uint32_t dir);
  void Feed(std::uint64_t steps);

  std::vector<std::uint8_t> block_;
  JobDesc desc_;
  Geometry geometry_;
  PlainRaster raster_;
  TakeSwath take_;
  std::array<std::uint8_t, 36> headers_[6] = {};  // of the queue's slots
  std::uint32_t biDir_, calib_, swathSteps_;
  std::uint32_t linesReceived_ = 0, bandLine_ = 0, passNo_ = 0, dir_ = 0;
  std::uint32_t swathCount_ = 0, swathLimit_ = UINT32_MAX, blankPasses_ = 0, feedLine_ = 0;
  bool started_ = false;
};

}  // namespace qrn::plain

#endif  // QRN_TESTS_REFERENCE_PLAIN_JOB_H_
