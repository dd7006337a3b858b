#include "params/head_geometry.h"

#include "base/bytes.h"
#include "params/param_block.h"

namespace qrn {

void CalcHeadGeometry(Job& job) {
  const std::uint32_t passes = job.passCount;
  job.marginDots = Low16(job.nResX * 640u / 254u);  // 64 mm
  // The heads are 140 mm apart; the printer corrects that by columns.
  job.headGapX = Low16(job.nResX * 1400u / 254u / passes +
                       GetPrinterParams().bytes[kParamHeadGapXAt + job.resIdx]);
  if (job.twoHeadCarriage == 1 && job.singleHead == kSinglePhb)
    job.marginDots = Low16(passes * job.headGapX + job.marginDots);

  // Neighbouring nozzle rows are 53/600 and 180/600 inch apart, alternately.
  const double sixHundredths = static_cast<double>(passes) * 600.0;
  const double gapMin = job.nResX * 53 / sixHundredths;
  const double gapMax = job.nResX * 180 / sixHundredths;
  job.rowGapMin = TruncateLow16(gapMin);
  job.rowGapMax = TruncateLow16(gapMax);
  double offset = (gapMin + gapMax) * 4.0;
  for (std::uint32_t row = 0; row < kNozzleRows; ++row) {
    offset -= row % 2 == 0 ? gapMax : gapMin;
    const std::uint16_t whole = TruncateLow16(offset);
    job.rowOffset[row] = offset - whole > 0.5 ? Low16(whole + 1u) : whole;
  }
}

}  // namespace qrn
