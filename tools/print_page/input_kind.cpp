#include "print_page/input_kind.h"

#include <vector>

namespace qrn::tool {
namespace {

struct Magic {
  std::string bytes;
  InputKind kind;
  const char* format;  // of a picture; "" for others
};

const std::vector<Magic>& Magics() {
  static const std::vector<Magic> magics = {
      {"RaSt", InputKind::kRaster, ""},
      {"tSaR", InputKind::kRaster, ""},
      {"RaS2", InputKind::kRaster, ""},
      {"2SaR", InputKind::kRaster, ""},
      {"RaS3", InputKind::kRaster, ""},
      {"3SaR", InputKind::kRaster, ""},
      {"%PDF-", InputKind::kPdf, ""},
      {"%!", InputKind::kPostScript, ""},
      {"\xC5\xD0\xD3\xC6", InputKind::kPostScript, ""},
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

}  // namespace

InputKind KindOf(const std::string& firstBytes) {
  if (const Magic* magic = MagicOf(firstBytes)) return magic->kind;
  // Documents may begin with a few bytes of a printer's job language.
  const auto has = [&firstBytes](const char* bytes) {
    return firstBytes.find(bytes) != std::string::npos;
  };
  if (has("%PDF-")) return InputKind::kPdf;
  return has("\x04%!") || has("%!PS-") ? InputKind::kPostScript : InputKind::kUnknown;
}

std::string PictureFormatOf(const std::string& firstBytes) { return MagicOf(firstBytes)->format; }

}  // namespace qrn::tool
