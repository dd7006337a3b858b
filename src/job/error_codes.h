// The codes that the library records in Job::nErrCode; the text tables hold all 36.
#ifndef QRN_JOB_ERROR_CODES_H_
#define QRN_JOB_ERROR_CODES_H_

#include <cstdint>

namespace qrn {

enum DriverError : std::uint32_t {
  kErrorBadParameters = 3,  // parameter block not recognised
  kErrorTooWide = 4,        // image wider than the printer
  kErrorHostCancel = 9,     // recorded only: the host went on without ending its job
  kErrorNoMemory = 13,      // a job buffer could not be obtained
  kErrorLinkGivenUp = 17,   // reconnection given up; never overwritten in a job, ends every wait
  kErrorPrinterGone = 26,   // swath ready, transmit thread ended
  kErrorFeedValue = 29,     // paper-feed calibration refused
  kErrorNoDevice = 31,      // device cannot be opened
  kErrorBadMode = 32,       // image or print mode refused
  kErrorInkOrder = 35,      // ink order refused
};

}  // namespace qrn

#endif  // QRN_JOB_ERROR_CODES_H_
