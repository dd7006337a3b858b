// The kernel for AVX2. This file alone is compiled for it.
#include "raster/isa_avx2.h"
#include "raster/kernel_vector.h"

namespace qrn {

extern const Kernel kAvx2Kernel;
const Kernel kAvx2Kernel = {"avx2",
                            [] { return __builtin_cpu_supports("avx2") != 0; },
                            VectorKernel<Avx2>::Sort,
                            VectorKernel<Avx2>::Align,
                            VectorKernel<Avx2>::Lay,
                            VectorKernel<Avx2>::Stream};

}  // namespace qrn
