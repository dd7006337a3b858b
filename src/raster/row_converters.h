// The workers, one for each mode and direction. A worker converts all nozzle rows that ConvertColor
// has entered for the pass: it lays the dots of the pass's phase into PrintOutBuf and takes the
// pixels out of the rows; what the feather mask of the last nozzles holds back stays there.
// Host's thread.
#ifndef QRN_RASTER_ROW_CONVERTERS_H_
#define QRN_RASTER_ROW_CONVERTERS_H_

#include "job/job.h"
#include "raster/convert.h"

namespace qrn {

void Dual3Forward(Job& job, ConvertParams& params);
void Dual3Reverse(Job& job, ConvertParams& params);
void Dual4Forward(Job& job, ConvertParams& params);
void Dual4Reverse(Job& job, ConvertParams& params);
void Dual6Forward(Job& job, ConvertParams& params);
void Dual6Reverse(Job& job, ConvertParams& params);
void Dual8Forward(Job& job, ConvertParams& params);
void Dual8Reverse(Job& job, ConvertParams& params);
void SingleForward(Job& job, ConvertParams& params);
void SingleReverse(Job& job, ConvertParams& params);

}  // namespace qrn

#endif  // QRN_RASTER_ROW_CONVERTERS_H_
