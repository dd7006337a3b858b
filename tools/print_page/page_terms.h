// What a page must be like so that this machine prints it as the options say.
#ifndef QRN_TOOLS_PRINT_PAGE_PAGE_TERMS_H_
#define QRN_TOOLS_PRINT_PAGE_PAGE_TERMS_H_

#include <string>

#include "print_page/options.h"
#include "print_page/raster_reader.h"
#include "sim/machine/machine.h"

namespace qrn::tool {

// Both outlive the terms.
PageTerms TermsOf(const Options& options, const sim::Machine& machine);

// Why a page that has been read cannot be printed; "" when it can.
std::string InkProblem(const Options& options, const sim::Machine& machine, const RasterPage& page);

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_PAGE_TERMS_H_
