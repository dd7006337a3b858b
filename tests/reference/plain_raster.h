// The raster without a thought for speed: rows as the host gave them, moved up band by band, every
// pixel looked at in every pass. It shares the job's record, but none of the core's buffers and
// converters, so that it can run beside them.
#ifndef QRN_TESTS_REFERENCE_PLAIN_RASTER_H_
#define QRN_TESTS_REFERENCE_PLAIN_RASTER_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "host/job.h"

namespace qrn::plain {

class PlainRaster {
 public:
  // Called for every pass behind its conversion, blank ones too, with passNo already counted on.
  using TakePass = std::function<void(PlainRaster&)>;

  // Starts where the job stands, with empty rows. Requires: a derived geometry and the job's
  // buffers, whose PrintOutBuf tells the size of this one's.
  explicit PlainRaster(const Job& job);
  PlainRaster(const PlainRaster&) = delete;
  PlainRaster& operator=(const PlainRaster&) = delete;

  // Stores a line; the last one of a band sets off its passes and the move to the next band.
  void AddLine(std::uint32_t color, std::uint32_t bytes, const std::uint8_t* line,
               const TakePass& take);
  // The passes that are still to come when the last line is in.
  void Flush(const TakePass& take);

  void RunPasses(const TakePass& take);
  void ConvertPass();
  void Shift();
  // Whether the pass at passRow prints nothing; sets its byte range when it does.
  [[nodiscard]] bool IsPassBlank();
  // The same question in the plainest way; sets nothing.
  [[nodiscard]] bool IsPassBlankByteByByte() const;

  Job& Record() { return job_; }
  const Job& Record() const { return job_; }
  const std::uint8_t* PrintOut() const { return printOut_.data(); }
  std::uint32_t Rows() const { return 4u * job_.nResY; }
  std::uint8_t* Row(std::uint32_t plane, std::uint32_t row) {
    return planes_[plane].data() + std::size_t{row} * job_.lineStride;
  }

 private:
  Job job_;
  std::vector<std::uint8_t> planes_[kPlanes];
  std::vector<std::uint8_t> printOut_;
};

}  // namespace qrn::plain

#endif  // QRN_TESTS_REFERENCE_PLAIN_RASTER_H_
