// One page through the driver's exports.
#ifndef QRN_TOOLS_PRINT_PAGE_HOST_JOB_H_
#define QRN_TOOLS_PRINT_PAGE_HOST_JOB_H_

#include <cstdint>
#include <functional>

#include "sim/compare.h"

namespace qrn::tool {

struct HostJob {
  std::uint32_t resolution = 1440;
  bool lineApi = false;
  // Called now and then with the lines handed over.
  std::function<void(std::uint32_t lines)> onProgress;
};

// Starts a job, hands over the page and ends the job. False when the line family told that the job
// did not start; the stream family tells nothing.
bool PrintPage(const HostJob& job, const sim::RasterSource& page);

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_HOST_JOB_H_
