// One page through the driver's exports.
#ifndef QRN_TOOLS_PRINT_PAGE_HOST_JOB_H_
#define QRN_TOOLS_PRINT_PAGE_HOST_JOB_H_

#include <cstdint>
#include <functional>

#include "sim/proof/raster_source.h"

namespace qrn::tool {

struct HostJob {
  std::uint32_t resolution = 1440;
  bool lineApi = false;
  // Called now and then with the lines handed over.
  std::function<void(std::uint32_t lines)> onProgress;
};

struct HandedOver {
  bool started = true;      // as the line family reports; the stream family reports nothing
  std::uint32_t lines = 0;  // that the driver took; the stream family seems to take them all
};

// Starts a job, hands over the page, up to a line that the driver refuses, and ends the job.
HandedOver PrintPage(const HostJob& job, const sim::RasterSource& page);

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_HOST_JOB_H_
