// The workers, one for each mode and direction, and in the .cpp the records of the modes, by which
// they are found (column_modes.h). A worker converts all nozzle rows that ConvertColor
// has entered for the pass: it packs the dots of the pass's phase into the columns of PrintOutBuf,
// then takes their pixels out of the pass buffers. What the feather mask of one of the last nozzles
// holds back stays there. It returns the bytes of PrintOutBuf that it has written, none when the
// pass prints no phase. Host's thread.
#ifndef QRN_RASTER_ROW_CONVERTERS_H_
#define QRN_RASTER_ROW_CONVERTERS_H_

#include "job/job.h"
#include "raster/convert_params.h"

namespace qrn {

WrittenBytes Dual3Forward(Job& job, const ConvertParams& params);
WrittenBytes Dual3Reverse(Job& job, const ConvertParams& params);
WrittenBytes Dual4Forward(Job& job, const ConvertParams& params);
WrittenBytes Dual4Reverse(Job& job, const ConvertParams& params);
WrittenBytes Dual6Forward(Job& job, const ConvertParams& params);
WrittenBytes Dual6Reverse(Job& job, const ConvertParams& params);
WrittenBytes Dual8Forward(Job& job, const ConvertParams& params);
WrittenBytes Dual8Reverse(Job& job, const ConvertParams& params);
WrittenBytes SingleForward(Job& job, const ConvertParams& params);
WrittenBytes SingleReverse(Job& job, const ConvertParams& params);

}  // namespace qrn

#endif  // QRN_RASTER_ROW_CONVERTERS_H_
