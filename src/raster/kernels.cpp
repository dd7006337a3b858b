#include "raster/kernels.h"

namespace qrn {

extern const Kernel kPlainKernel;
#ifdef QRN_X86_KERNELS
extern const Kernel kAvx2Kernel, kSse2Kernel;
#endif

namespace {

const Kernel* const kKernels[] = {
#ifdef QRN_X86_KERNELS
    &kAvx2Kernel,
    &kSse2Kernel,
#endif
    &kPlainKernel,
};

const Kernel* g_kernel = nullptr;  // chosen at first use

const Kernel* BestKernel() {
  for (const Kernel* kernel : kKernels) {
    if (kernel->usable()) return kernel;
  }
  return &kPlainKernel;
}

}  // namespace

std::span<const Kernel* const> Kernels() { return kKernels; }

const Kernel& TheKernel() {
  if (g_kernel == nullptr) g_kernel = BestKernel();
  return *g_kernel;
}

void UseKernel(const Kernel* kernel) { g_kernel = kernel; }

}  // namespace qrn
