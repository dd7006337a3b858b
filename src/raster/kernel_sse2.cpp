// The kernel for SSE2, which every processor has that runs the DLL.
#include "raster/isa_sse2.h"
#include "raster/kernel_vector.h"

namespace qrn {

extern const Kernel kSse2Kernel;
const Kernel kSse2Kernel = {"sse2",
                            [] { return true; },
                            VectorKernel<Sse2>::Sort,
                            VectorKernel<Sse2>::Align,
                            VectorKernel<Sse2>::Lay,
                            VectorKernel<Sse2>::Stream};

}  // namespace qrn
