#include "print_page/input.h"

#include "print_page/input_kind.h"
#include "print_page/input_stream.h"
#include "print_page/render_commands.h"
#include "print_page/rendering.h"

namespace qrn::tool {

std::string InputName(const std::string& path) {
  return path == "-" ? "standard input" : "'" + path + "'";
}

struct Input::Impl {
  std::string name;
  PageTerms terms;
  InputStream stream;
  std::unique_ptr<RasterReader> raster;  // of the stream itself; null: it is rendered
  std::unique_ptr<RenderFolder> folder;
  std::unique_ptr<Rendering> rendering;
  int pages = 0;  // read

  bool Start(std::string* error) {
    if (!stream.Open(name, error)) return false;
    const InputKind kind = KindOf(stream.FirstBytes());
    if (kind == InputKind::kUnknown) {
      *error = "is none of CUPS raster, PDF, PostScript, EPS, PNG, JPEG, TIFF";
      return false;
    }
    if (kind != InputKind::kRaster) return Render(kind, error);
    raster = std::make_unique<RasterReader>(
        [this](std::uint8_t* buffer, std::size_t bytes) { return stream.Read(buffer, bytes); });
    return true;
  }

  bool Render(InputKind kind, std::string* error) {
    folder = std::make_unique<RenderFolder>();
    rendering = std::make_unique<Rendering>(*folder, terms);
    return stream.Place(*folder, kDocumentName, error) &&
           rendering->Start(kind, stream.FirstBytes(), error);
  }
};

Input::Input(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}

Input::~Input() = default;

std::unique_ptr<Input> Input::Open(const std::string& path, const PageTerms& terms,
                                   std::string* error) {
  auto impl = std::make_unique<Impl>();
  impl->name = path;
  impl->terms = terms;
  std::string why;
  if (impl->Start(&why)) return std::unique_ptr<Input>(new Input(std::move(impl)));
  *error = InputName(path) + ": " + why;
  return nullptr;
}

bool Input::IsRendered() const { return impl_->rendering != nullptr; }

std::uint32_t Input::Pages() const {
  return impl_->rendering != nullptr ? impl_->rendering->Pages() : 0;
}

ReadResult Input::NextPage(RasterPage* page, std::string* error) {
  std::string why;
  const ReadResult result = impl_->rendering != nullptr
                                ? impl_->rendering->NextPage(page, &why)
                                : impl_->raster->NextPage(impl_->terms, page, &why);
  if (result == ReadResult::kPage) ++impl_->pages;
  if (result == ReadResult::kRefused) why = "page " + std::to_string(impl_->pages + 1) + ": " + why;
  if (result == ReadResult::kError && impl_->pages > 0)
    why = "after page " + std::to_string(impl_->pages) + ": " + why;
  if (!why.empty()) *error = InputName(impl_->name) + ": " + why;
  return result;
}

}  // namespace qrn::tool
