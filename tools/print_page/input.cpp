#include "print_page/input.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <vector>

#include "print_page/child_process.h"
#include "print_page/temporary_folder.h"

namespace qrn::tool {
namespace {

constexpr std::size_t kFirstBytes = 1024;

struct CloseFile {
  void operator()(std::FILE* file) const {
    if (file != stdin) std::fclose(file);
  }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

std::string Quoted(const std::string& path, const std::string& reason) {
  return "'" + path + "': " + reason;
}

// 8 bits per colour, plane by plane in each line, at the carriage's resolution; the document's page
// size, A4 where it names none.
std::vector<std::string> GhostscriptCommand(const std::string& document, std::uint32_t resolution) {
  return {"gs",
          "-q",
          "-dSAFER",
          "-dBATCH",
          "-dNOPAUSE",
          "-dPDFSTOPONERROR",  // it would print what it can of a damaged file, and end with 0
          "-sDEVICE=cups",
          "-sPAPERSIZE=a4",
          "-dEPSCrop",
          "-dcupsColorSpace=6",
          "-dcupsBitsPerColor=8",
          "-dcupsColorOrder=1",
          "-r" + std::to_string(resolution) + "x360",
          "-sstdout=%stderr",  // messages; the raster alone goes to standard output
          "-sOutputFile=-",
          "-f",
          document};
}

// Transparency lies on white, in each of the file's pictures. The background stands in front of the
// picture: behind it, the program keeps silent about damage.
std::vector<std::string> PictureCommand(const std::string& picture, const std::string& out) {
  return {"gm",  "convert", "-background", "white", picture,     "-extent",
          "0x0", "+matte",  "-compress",   "Zip",   "pdf:" + out};
}

struct Magic {
  std::string bytes;
  InputKind kind;
  const char* format;  // what GraphicsMagick calls it, so that it does not guess; "" = no picture
};

const std::vector<Magic>& Magics() {
  static const std::vector<Magic> magics = {
      {"RaSt", InputKind::kRaster, ""},
      {"tSaR", InputKind::kRaster, ""},
      {"RaS2", InputKind::kRaster, ""},
      {"2SaR", InputKind::kRaster, ""},
      {"RaS3", InputKind::kRaster, ""},
      {"3SaR", InputKind::kRaster, ""},
      {"%PDF-", InputKind::kDocument, ""},
      {"%!", InputKind::kDocument, ""},
      {"\xC5\xD0\xD3\xC6", InputKind::kDocument, ""},
      {"\x89PNG", InputKind::kPicture, "png"},
      {"\xFF\xD8\xFF", InputKind::kPicture, "jpeg"},
      {std::string("II*\0", 4), InputKind::kPicture, "tiff"},
      {std::string("MM\0*", 4), InputKind::kPicture, "tiff"},
  };
  return magics;
}

const Magic* MagicOf(const std::string& firstBytes) {
  for (const Magic& magic : Magics()) {
    if (firstBytes.compare(0, magic.bytes.size(), magic.bytes) == 0) return &magic;
  }
  return nullptr;
}

// Documents may have a few bytes of a printer's job language in front.
bool HoldsDocument(const std::string& firstBytes) {
  return firstBytes.find("%PDF-") != std::string::npos ||
         firstBytes.find("\x04%!") != std::string::npos ||
         firstBytes.find("%!PS-") != std::string::npos;
}

}  // namespace

InputKind KindOf(const std::string& firstBytes) {
  if (const Magic* magic = MagicOf(firstBytes)) return magic->kind;
  return HoldsDocument(firstBytes) ? InputKind::kDocument : InputKind::kUnknown;
}

struct Input::Impl {
  std::string name;
  std::uint32_t resolution = 0;
  TemporaryFolder folder;
  File file;
  std::string ahead;                       // bytes read to tell the kind, for the reader first
  std::unique_ptr<ChildProcess> renderer;  // where the raster comes from when `file` is not one
  std::unique_ptr<RasterReader> reader;
  int pages = 0;  // read

  std::ptrdiff_t Read(std::uint8_t* buffer, std::size_t bytes) {
    if (renderer != nullptr) return static_cast<std::ptrdiff_t>(renderer->Read(buffer, bytes));
    if (!ahead.empty()) {
      const std::size_t taken = std::min(bytes, ahead.size());
      std::memcpy(buffer, ahead.data(), taken);
      ahead.erase(0, taken);
      return static_cast<std::ptrdiff_t>(taken);
    }
    return static_cast<std::ptrdiff_t>(std::fread(buffer, 1, bytes, file.get()));
  }

  // Without the name in the private folder, which says nothing to the user, and what the converter
  // adds behind it: an error number of another moment.
  std::string Plain(std::string reason) const {
    const std::string path = folder.Path("document");
    reason.resize(std::min(reason.size(), reason.find(" (" + path)));
    for (std::size_t at = 0; (at = reason.find(path, at)) != std::string::npos;)
      reason.replace(at, path.size(), "the file");
    return reason;
  }

  // Starts what makes the file a raster. It reads a link of a plain name, because both programs
  // see more in a file name than a name.
  bool Render(std::string* error) {
    std::string document = folder.Path("document");
    std::filesystem::create_symlink(std::filesystem::absolute(name), document);
    const Magic* magic = MagicOf(ahead);
    if (magic != nullptr && magic->kind == InputKind::kPicture) {
      const std::string pdf = folder.Path("picture.pdf");
      ChildProcess converter(folder.Path("converter.txt"));
      if (!converter.Start(PictureCommand(magic->format + (":" + document), pdf), error) ||
          !converter.WaitSilent(error)) {  // it fills in what a damaged picture lacks
        *error = Plain(*error);
        return false;
      }
      document = pdf;
    }
    renderer = std::make_unique<ChildProcess>(folder.Path("renderer.txt"));
    return renderer->Start(GhostscriptCommand(document, resolution), error);
  }

  // What went wrong in the renderer is the reason behind whatever its raster lacks.
  ReadResult EndOfRenderer(ReadResult result, std::string* why) {
    const bool ended = result != ReadResult::kPage;
    if (renderer == nullptr || !ended || renderer->Wait(why)) return result;
    *why = Plain(*why);
    return result == ReadResult::kTruncated ? result : ReadResult::kError;
  }
};

Input::Input(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}

Input::~Input() = default;

std::unique_ptr<Input> Input::Open(const std::string& path, std::uint32_t resolution,
                                   std::string* error) {
  const auto fail = [&](const std::string& reason) {
    *error = Quoted(path, reason);
    return nullptr;
  };
  auto impl = std::make_unique<Impl>();
  impl->name = path;
  impl->resolution = resolution;
  const bool standardInput = path == "-";
  if (!standardInput && std::filesystem::is_directory(path)) return fail("is a folder");
  impl->file.reset(standardInput ? stdin : std::fopen(path.c_str(), "rb"));
  if (impl->file == nullptr) return fail(std::strerror(errno));
  impl->ahead.resize(kFirstBytes);
  impl->ahead.resize(std::fread(impl->ahead.data(), 1, kFirstBytes, impl->file.get()));
  if (impl->ahead.empty()) return fail("is empty");
  const InputKind kind = KindOf(impl->ahead);
  if (standardInput && kind != InputKind::kRaster) return fail("is not a CUPS raster stream");
  if (kind == InputKind::kUnknown)
    return fail("is none of CUPS raster, PDF, PostScript, EPS, PNG, JPEG, TIFF");
  std::string why;
  if (kind != InputKind::kRaster && !impl->Render(&why)) return fail(why);
  Impl* source = impl.get();
  impl->reader = std::make_unique<RasterReader>(
      [source](std::uint8_t* buffer, std::size_t bytes) { return source->Read(buffer, bytes); });
  return std::unique_ptr<Input>(new Input(std::move(impl)));
}

ReadResult Input::NextPage(RasterPage* page, std::string* error) {
  std::string why;
  ReadResult result = impl_->reader->NextPage(impl_->resolution, page, &why);
  result = impl_->EndOfRenderer(result, &why);
  if (result == ReadResult::kPage) ++impl_->pages;
  if (result == ReadResult::kError && impl_->pages > 0)
    why = "behind page " + std::to_string(impl_->pages) + ": " + why;
  if (!why.empty()) *error = Quoted(impl_->name, why);
  return result;
}

}  // namespace qrn::tool
