// What a page must be like so that this machine prints it as the options say.
#ifndef QRN_TOOLS_PRINT_PAGE_PAGE_TERMS_H_
#define QRN_TOOLS_PRINT_PAGE_PAGE_TERMS_H_

#include "print_page/options.h"
#include "print_page/raster_reader.h"
#include "sim/machine.h"

namespace qrn::tool {

// Both outlive the terms.
PageTerms TermsOf(const Options& options, const sim::Machine& machine);

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_PAGE_TERMS_H_
