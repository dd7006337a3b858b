// Compares paper with raster, cell by cell and color by color, after finding what an operator would
// calibrate: the vertical origin and the shift of reverse passes, two whole numbers for the whole
// job.
#ifndef QRN_SIM_PROOF_COMPARE_H_
#define QRN_SIM_PROOF_COMPARE_H_

#include <cstdint>
#include <string>

#include "sim/machine/machine.h"
#include "sim/paper/paper.h"
#include "sim/proof/raster_source.h"

namespace qrn::sim {

struct Comparison {
  std::uint64_t cells = 0;  // cells compared (inked on either side)
  std::uint64_t differingCells = 0;
  std::uint64_t overInkedCells = 0;  // of these, cells with more ink than was asked for
  // Inked cells that the machine cannot print, or not whole, and that hold less than was asked for.
  std::uint64_t unreachedCells = 0;
  // Inked cells that the machine can only lay on the line above; they are compared there.
  std::uint64_t displacedCells = 0;
  std::int32_t lineOrigin = 0;    // paper line of image line 0
  std::int32_t reverseShift = 0;  // columns by which reverse passes are too far right
  bool reverseFound = false;      // the job had reverse passes with ink
  // First difference in reading order, for a person: color, line, column, asked for, printed. ""
  // when equal.
  std::string firstDifference;
  // Why this machine cannot print every job right and whole, where that is known from its settings;
  // "" otherwise.
  std::string reason;
  // Among these: cells may be wrong, not only out of reach, which the counts above allow for.
  bool incomparable = false;
};

// Pixels u with u / P == c form column c, P being the pixels of a column of this machine at one of
// the four resolutions.
Comparison Compare(const RasterSource& raster, const Paper& paper, const Machine& machine,
                   std::uint32_t resolution);
// The same with the vertical origin and the shift that another comparison found: for a page that
// was not printed to its end, which lacks what they are found by.
Comparison CompareCalibrated(const RasterSource& raster, const Paper& paper, const Machine& machine,
                             std::uint32_t resolution, const Comparison& calibrated);

}  // namespace qrn::sim

#endif  // QRN_SIM_PROOF_COMPARE_H_
