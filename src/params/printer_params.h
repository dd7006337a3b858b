// The printer's parameter block: kept as last received, checked, and turned into the job's
// geometry. Runs on the transmit thread while the host's thread waits for the connect exchange;
// NextSwathDir is the host's thread's.
#ifndef QRN_PARAMS_PRINTER_PARAMS_H_
#define QRN_PARAMS_PRINTER_PARAMS_H_

#include <cstddef>
#include <cstdint>

#include "host/job.h"

namespace qrn {

constexpr std::uint32_t kParamBlockBytes = 208;
constexpr std::uint32_t kParamUpdateBytes = 70;  // the adjustable section, bytes 8..77 of the block

// The block as last received, with the side margin cleared where the block asks for it and with
// every firmware update. Outlives jobs: a pause reply updates a part of it.
struct PrinterParams {
  std::uint8_t bytes[kParamBlockBytes];
};
PrinterParams& GetPrinterParams();

// Takes the payload of an accepted connect reply: checks it and the job against it, derives the
// geometry, obtains the job's buffers. False when the job cannot go on; the DriverError has been
// raised where one applies.
[[nodiscard]] bool ParsePrinterParams(Job& job, const std::uint8_t* payload, std::uint32_t bytes);

// Applies the adjustable section that a pause reply carries. Shorter sections are ignored with a
// log line.
void UpdateFwPara(Job& job, const std::uint8_t* section, std::uint32_t bytes);

// stepsPerLine and swathSteps from the calibration value; false, and both unchanged, when a value
// is 0.
[[nodiscard]] bool CalcSwathSteps(Job& job);

// The direction of the next pass, 0 or 1. Host's thread, once per pass.
std::uint8_t NextSwathDir(Job& job);

}  // namespace qrn

#endif  // QRN_PARAMS_PRINTER_PARAMS_H_
