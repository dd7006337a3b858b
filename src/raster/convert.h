// Conversion of one pass: enters the nozzle rows that print each colour, and runs the worker that
// fits the heads, the pass count and the direction over all of them. Host's thread.
#ifndef QRN_RASTER_CONVERT_H_
#define QRN_RASTER_CONVERT_H_

#include "job/job.h"
#include "raster/convert_params.h"

namespace qrn {

// Converts the current pass. Sets passEmpty when there is nothing to print or the swath limit is
// reached; otherwise fills PrintOutBuf and sets the size fields.
void ConvertPass(Job& job);
// True when the lines of the pass hold no pixel.
[[nodiscard]] bool IsPassBlank(const Job& job);

// The share of curColor in the conversion of the current pass: finds the nozzle rows that carry it
// and enters them. Their dots are placed by RunWorker, together with those of all other colours:
// eight nozzle rows share every byte of a column, and one colour at a time would write each byte
// four times. A colour that the one head in use does not carry has no nozzle rows.
void ConvertColor(Job& job, ConvertParams& params);

// Runs the worker over all nozzle rows that have been entered: their dots go into PrintOutBuf, the
// printed pixels out of the pass buffers. A two-head pass count other than 3, 4, 6, 8 converts
// nothing.
WrittenBytes RunWorker(Job& job, const ConvertParams& params);

}  // namespace qrn

#endif  // QRN_RASTER_CONVERT_H_
