#include "print_page/rendering.h"

#include <algorithm>

#include "print_page/grey_profiles.h"
#include "print_page/picture_look.h"

namespace qrn::tool {
namespace {

constexpr const char* kPdfReader = "--runpdf--";  // what Ghostscript says fails on a damaged PDF
constexpr const char* kPasswordMessage = "requires a password";

// Without the file's name in brackets, which says nothing, and what GraphicsMagick adds after it:
// an error number from something else.
std::string Plain(std::string reason) {
  reason.resize(std::min(reason.size(), reason.find(std::string(" (") + kDocumentName)));
  const bool pdf = reason.find(kPdfReader) != std::string::npos;
  return pdf ? "is damaged: " + reason : reason;
}

ReadBytes OutputOf(ChildProcess* child) {
  return [child](std::uint8_t* buffer, std::size_t bytes) {
    return static_cast<std::ptrdiff_t>(child->Read(buffer, bytes));
  };
}

}  // namespace

bool Rendering::Start(InputKind kind, const std::string& firstBytes, std::string* error) {
  return Plan(kind, firstBytes, error) && WriteGreyProfiles(folder_, error) && StartRun(error);
}

bool Rendering::Plan(InputKind kind, const std::string& firstBytes, std::string* error) {
  if (kind == InputKind::kPdf) return PlanPdf(error);
  if (kind == InputKind::kPicture) return ConvertPicture(PictureFormatOf(firstBytes), error);
  plan_ = PlanOfPostScript(LookAtPictures());
  return true;
}

// What is wrong with a file shows when it is rendered, and better.
std::vector<bool> Rendering::LookAtPictures() {
  ChildProcess look(folder_);
  std::string error;
  if (!look.Start(TagCommand(document_, PageRun{}, kLookResolution), &error)) return {};
  std::vector<bool> colour = PagesWithColourPictures(OutputOf(&look));
  return look.Wait(&error) ? colour : std::vector<bool>();
}

bool Rendering::PlanPdf(std::string* error) {
  ChildProcess reader(folder_);
  if (!reader.Start(PdfInfoCommand(), error)) return false;
  (void)reader.Wait(error);
  const std::string info = reader.Said();
  plan_ = PlanOfPdf(info, LookAtPictures());
  if (plan_.pages != 0 || info.find(kPasswordMessage) == std::string::npos) return true;
  *error = "is protected by a password";
  return false;
}

bool Rendering::ConvertPicture(const std::string& format, std::string* error) {
  ChildProcess converter(folder_);
  if (!converter.Start(PictureCommand(format), error)) return false;
  plan_ = PlanOfPictures(converter.ReadAll());
  document_ = kPictureDocumentName;
  if (converter.WaitSilent(error)) return true;  // it fills in what a damaged picture lacks
  *error = Plain(*error) + folder_.LittleRoom();
  return false;
}

bool Rendering::StartRun(std::string* error) {
  const PageRun& run = plan_.runs[nextRun_++];
  filter_.reset();
  renderer_ = std::make_unique<ChildProcess>(folder_);
  if (!renderer_->Start(RenderCommand(document_, run, terms_.resolution), error)) return false;
  reader_ = std::make_unique<RasterReader>(OutputOf(renderer_.get()));
  return run.rule != GreyRule::kBlended || StartFilter(run, error);
}

bool Rendering::StartFilter(const PageRun& run, std::string* error) {
  tagger_ = std::make_unique<ChildProcess>(folder_, "messages-of-tagger");
  if (!tagger_->Start(TagCommand(document_, run, terms_.resolution), error)) return false;
  filter_ = std::make_unique<GreyFilter>(OutputOf(tagger_.get()));
  GreyFilter* filter = filter_.get();
  reader_->SetFilter(
      {[filter](std::uint32_t width) { filter->BeginPage(width); },
       [filter](std::uint8_t* line, std::size_t bytes) { filter->Edit(line, bytes); }});
  return true;
}

ReadResult Rendering::TaggingFailed(std::string* error) {
  *error = tagger_->Wait(error) ? "its greys cannot be found: the second rendering has another size"
                                : Plain(*error) + folder_.LittleRoom();
  return ReadResult::kError;
}

ReadResult Rendering::NextPage(RasterPage* page, std::string* error) {
  for (;;) {
    const ReadResult result = reader_->NextPage(terms_, page, error);
    if (result == ReadResult::kPage && (filter_ == nullptr || !filter_->HasFailed())) return result;
    if (result == ReadResult::kPage) return TaggingFailed(error);
    if (result == ReadResult::kRefused) {
      renderer_.reset();  // what is left of the page may take long
      return result;
    }
    // What went wrong in the renderer is the reason for whatever its raster lacks.
    if (!renderer_->Wait(error)) {
      *error = Plain(*error) + folder_.LittleRoom();
      return result == ReadResult::kTruncated ? result : ReadResult::kError;
    }
    if (result != ReadResult::kEnd || nextRun_ == plan_.runs.size()) return result;
    if (!StartRun(error)) return ReadResult::kError;
  }
}

}  // namespace qrn::tool
