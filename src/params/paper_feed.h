// The paper feed: motor steps a line and a swath, from the calibration value. Transmit thread.
#ifndef QRN_PARAMS_PAPER_FEED_H_
#define QRN_PARAMS_PAPER_FEED_H_

#include <cstdint>

#include "job/job.h"

namespace qrn {

// The calibration value that the parameter block selects. A selector outside the table selects
// nothing: the value counts as 0, which CalcSwathSteps refuses.
std::uint16_t SelectedCalibration();

// stepsPerLine and swathSteps from the calibration value stepCalib; false, and both unchanged, when
// a value is 0.
[[nodiscard]] bool CalcSwathSteps(Job& job);

}  // namespace qrn

#endif  // QRN_PARAMS_PAPER_FEED_H_
