// Holds what the core has made against the plain raster; ends the run where they differ.
#ifndef QRN_BENCH_CHECK_H_
#define QRN_BENCH_CHECK_H_

#include <string>

#include "job/job.h"
#include "reference/plain_raster.h"

namespace qrn::bench {

// The image of the job as the connect has left it, and the plain raster of it and of the machine's
// parameter block.
plain::JobDesc DescOf(const Job& job);
plain::Geometry GeometryOf(const Job& job);

// The pass just converted: whether it prints, its size, and every byte that travels.
void CheckPass(const std::string& where, const Job& job, const plain::PlainRaster& plain,
               bool printed);
// All rows of all colours.
void CheckRows(const std::string& where, const Job& job, plain::PlainRaster& plain);

}  // namespace qrn::bench

#endif  // QRN_BENCH_CHECK_H_
