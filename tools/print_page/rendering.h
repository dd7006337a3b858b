// A document or picture as raster pages, through Ghostscript and GraphicsMagick.
#ifndef QRN_TOOLS_PRINT_PAGE_RENDERING_H_
#define QRN_TOOLS_PRINT_PAGE_RENDERING_H_

#include <cstdint>
#include <memory>
#include <string>

#include "print_page/child_process.h"
#include "print_page/document_plan.h"
#include "print_page/grey_filter.h"
#include "print_page/input_kind.h"
#include "print_page/raster_reader.h"
#include "print_page/render_commands.h"
#include "print_page/render_folder.h"

namespace qrn::tool {

class Rendering {
 public:
  // `folder` holds the document under kDocumentName; both outlive the rendering.
  Rendering(const RenderFolder& folder, const PageTerms& terms) : folder_(folder), terms_(terms) {}

  // `firstBytes`: of the document, which is no raster. False, with a reason, when it cannot be
  // rendered.
  bool Start(InputKind kind, const std::string& firstBytes, std::string* error);
  // Of the document; 0 = not known.
  std::uint32_t Pages() const { return plan_.pages; }
  ReadResult NextPage(RasterPage* page, std::string* error);

 private:
  bool Plan(InputKind kind, const std::string& firstBytes, std::string* error);
  bool PlanPdf(std::string* error);
  bool ConvertPicture(const std::string& format, std::string* error);
  bool StartRun(std::string* error);
  bool StartFilter(const PageRun& run, std::string* error);
  std::vector<bool> LookAtPictures();
  ReadResult TaggingFailed(std::string* error);

  const RenderFolder& folder_;
  const PageTerms& terms_;
  std::string document_ = kDocumentName;
  DocumentPlan plan_;
  std::size_t nextRun_ = 0;
  // Of the current run: what its pages come from, and what reports their objects where that is
  // needed.
  std::unique_ptr<ChildProcess> renderer_, tagger_;
  std::unique_ptr<RasterReader> reader_;
  std::unique_ptr<GreyFilter> filter_;
};

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_RENDERING_H_
