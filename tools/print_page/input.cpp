#include "print_page/input.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "print_page/child_process.h"
#include "print_page/temporary_folder.h"

namespace qrn::tool {
namespace {

constexpr std::size_t kMagicBytes = 1024;

struct CloseFile {
  void operator()(std::FILE* file) const {
    if (file != stdin) std::fclose(file);
  }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

bool Starts(const std::string& text, const char* with) { return text.rfind(with, 0) == 0; }

std::string Quoted(const std::string& path, const std::string& reason) {
  return "'" + path + "': " + reason;
}

// 2 bits per colour, plane by plane in each line, at the carriage's resolution; the document's page
// size, A4 where it names none.
std::vector<std::string> GhostscriptCommand(const std::string& document, std::uint32_t resolution) {
  return {"gs",
          "-q",
          "-dSAFER",
          "-dBATCH",
          "-dNOPAUSE",
          "-sDEVICE=cups",
          "-sPAPERSIZE=a4",
          "-dEPSCrop",
          "-dcupsColorSpace=6",
          "-dcupsBitsPerColor=2",
          "-dcupsColorOrder=1",
          "-r" + std::to_string(resolution) + "x360",
          "-sstdout=%stderr",  // messages; the raster alone goes to standard output
          "-sOutputFile=-",
          "-f",
          document};
}

// Transparency lies on white, in each of the file's pictures.
std::vector<std::string> PictureCommand(const std::string& picture, const std::string& out) {
  return {"gm", "convert", picture, "-background", "white", "-extent", "0x0", "-compress", "Zip",
          "pdf:" + out};
}

// What GraphicsMagick calls the format, so that it does not guess; "" = not a picture.
std::string PictureFormat(const std::string& firstBytes) {
  if (Starts(firstBytes, "\x89PNG")) return "png";
  if (Starts(firstBytes, "\xFF\xD8\xFF")) return "jpeg";
  if (Starts(firstBytes, "II*") || Starts(firstBytes, "MM") && firstBytes.substr(2, 2) == std::string("\0*", 2)) return "tiff";
  return "";
}

}  // namespace

InputKind KindOf(const std::string& firstBytes) {
  for (const char* magic : {"RaSt", "tSaR", "RaS2", "2SaR", "RaS3", "3SaR"}) {
    if (Starts(firstBytes, magic)) return InputKind::kRaster;
  }
  for (const char* magic : {"%PDF-", "%!", "\xC5\xD0\xD3\xC6"}) {
    if (Starts(firstBytes, magic)) return InputKind::kDocument;
  }
  for (const std::string& magic : {std::string("\x89PNG"), std::string("\xFF\xD8\xFF"),
                                   std::string("II*\0", 4), std::string("MM\0*", 4)}) {
    if (firstBytes.compare(0, magic.size(), magic) == 0) return InputKind::kPicture;
  }
  return InputKind::kUnknown;
}

struct Input::Impl {
  std::string name;
  std::uint32_t resolution = 0;
  TemporaryFolder folder;
  File file;
  std::string ahead;  // bytes read to tell the kind, not yet given to the reader
  std::unique_ptr<RasterReader> reader;

  std::ptrdiff_t Read(std::uint8_t* buffer, std::size_t bytes) {
    if (!ahead.empty()) {
      const std::size_t taken = std::min(bytes, ahead.size());
      std::memcpy(buffer, ahead.data(), taken);
      ahead.erase(0, taken);
      return static_cast<std::ptrdiff_t>(taken);
    }
    return static_cast<std::ptrdiff_t>(std::fread(buffer, 1, bytes, file.get()));
  }

  bool Reopen(const std::string& path, std::string* error) {
    file.reset(std::fopen(path.c_str(), "rb"));
    ahead.clear();
    if (file != nullptr) return true;
    *error = Quoted(name, std::strerror(errno));
    return false;
  }

  // Makes the file a raster, whatever it was.
  bool Render(InputKind kind, std::string* error) {
    std::string document = std::filesystem::absolute(name).string();
    std::string why;
    if (kind == InputKind::kPicture) {
      const std::string pdf = folder.Path("picture.pdf");
      if (!RunProgram(PictureCommand(document, pdf), &why)) {
        *error = Quoted(name, why);
        return false;
      }
      document = pdf;
    }
    const std::string raster = folder.Path("pages.ras");
    if (!RunProgram(GhostscriptCommand(document, resolution, raster), &why)) {
      *error = Quoted(name, why);
      return false;
    }
    return Reopen(raster, error);
  }
};

Input::Input(std::unique_ptr<Impl> impl) : impl_(std::move(impl)) {}

Input::~Input() = default;

std::unique_ptr<Input> Input::Open(const std::string& path, std::uint32_t resolution,
                                   std::string* error) {
  auto impl = std::make_unique<Impl>();
  impl->name = path;
  impl->resolution = resolution;
  if (path == "-") {
    impl->file.reset(stdin);
  } else if (std::filesystem::is_directory(path)) {
    *error = Quoted(path, "is a folder");
    return nullptr;
  } else if (!impl->Reopen(path, error)) {
    return nullptr;
  }
  impl->ahead.resize(kMagicBytes);
  impl->ahead.resize(std::fread(impl->ahead.data(), 1, kMagicBytes, impl->file.get()));
  const InputKind kind = KindOf(impl->ahead);
  if (kind == InputKind::kUnknown || (path == "-" && kind != InputKind::kRaster)) {
    *error = Quoted(path, impl->ahead.empty() ? "is empty"
                          : path == "-"
                              ? "standard input is not a CUPS raster stream"
                              : "is none of CUPS raster, PDF, PostScript, EPS, PNG, JPEG, TIFF");
    return nullptr;
  }
  if (kind != InputKind::kRaster && !impl->Render(kind, error)) return nullptr;
  Impl* source = impl.get();
  impl->reader = std::make_unique<RasterReader>(
      [source](std::uint8_t* buffer, std::size_t bytes) { return source->Read(buffer, bytes); });
  return std::unique_ptr<Input>(new Input(std::move(impl)));
}

ReadResult Input::NextPage(RasterPage* page, std::string* error) {
  std::string why;
  const ReadResult result = impl_->reader->NextPage(impl_->resolution, page, &why);
  if (!why.empty()) *error = Quoted(impl_->name, why);
  return result;
}

}  // namespace qrn::tool
