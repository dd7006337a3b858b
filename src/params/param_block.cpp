#include "params/param_block.h"

namespace qrn {
namespace {

PrinterParams g_params{};

}  // namespace

PrinterParams& GetPrinterParams() { return g_params; }

}  // namespace qrn
