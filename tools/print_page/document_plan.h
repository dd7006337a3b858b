// Which pages of a document are rendered together: runs of pages with the same rule for grey.
#ifndef QRN_TOOLS_PRINT_PAGE_DOCUMENT_PLAN_H_
#define QRN_TOOLS_PRINT_PAGE_DOCUMENT_PLAN_H_

#include <cstdint>
#include <string>
#include <vector>

#include "print_page/grey_profiles.h"

namespace qrn::tool {

struct PageRun {
  std::uint32_t first = 1, last = 0;  // counted from 1; last 0 = to the document's end
  GreyRule rule = GreyRule::kNone;
};

struct DocumentPlan {
  std::uint32_t pages = 0;  // 0 = not known
  std::vector<PageRun> runs;
};

// A document of unknown length, all of it by one rule.
DocumentPlan WholeDocument(GreyRule rule);

// From what Ghostscript reports about a PDF, which of its pages may blend colours, and from which
// pages have pictures that are not all grey; pages that nothing is known about are assumed to have
// some.
DocumentPlan PlanOfPdf(const std::string& info, const std::vector<bool>& colourPictures);

// For a document that Ghostscript reports nothing about.
DocumentPlan PlanOfPostScript(const std::vector<bool>& colourPictures);

// From what GraphicsMagick calls the type of each picture of a file, one a line.
DocumentPlan PlanOfPictures(const std::string& types);

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_DOCUMENT_PLAN_H_
