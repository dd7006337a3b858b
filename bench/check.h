// Holds what the core has made against the plain raster; ends the run where they differ.
#ifndef QRN_BENCH_CHECK_H_
#define QRN_BENCH_CHECK_H_

#include <string>

#include "host/job.h"
#include "reference/plain_raster.h"

namespace qrn::bench {

// The pass just converted: whether it prints, its size and range, and every byte that travels.
void CheckPass(const std::string& where, const Job& job, const plain::PlainRaster& plain);
// All rows of all planes.
void CheckRows(const std::string& where, const Job& job, plain::PlainRaster& plain);

}  // namespace qrn::bench

#endif  // QRN_BENCH_CHECK_H_
