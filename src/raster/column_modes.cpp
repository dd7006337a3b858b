#include "raster/column_modes.h"

#include <initializer_list>

namespace qrn {

const ColumnMode* ModeOf(const Job& job) {
  if (job.dualHead != 1) return &kSingle;
  for (const ColumnMode* mode : {&kDual3, &kDual4, &kDual6, &kDual8}) {
    if (mode->columnPixels == job.passCount) return mode;
  }
  return nullptr;
}

}  // namespace qrn
