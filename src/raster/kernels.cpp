#include "raster/kernels.h"

namespace qrn {

extern const Kernel kPlainKernel;
#ifdef __SSE2__
extern const Kernel kSse2Kernel;
#endif

namespace {

constexpr const Kernel* kKernels[] = {
#ifdef __SSE2__
    &kSse2Kernel,
#endif
    &kPlainKernel,
};

constinit const Kernel* g_kernel = kKernels[0];

}  // namespace

std::span<const Kernel* const> Kernels() { return kKernels; }

const Kernel& TheKernel() { return *g_kernel; }

void UseKernel(const Kernel& kernel) { g_kernel = &kernel; }

}  // namespace qrn
