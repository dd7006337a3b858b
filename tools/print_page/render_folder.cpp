#include "print_page/render_folder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <system_error>

namespace qrn::tool {
namespace {

constexpr const char* kFontConfig = "fonts.conf";
constexpr std::uintmax_t kLittleRoomBytes = 256u << 20;
constexpr const char* kSystemFontConfig = "/etc/fonts/fonts.conf";

// What would lead a program to other files or give it other options.
bool IsOurs(std::string_view variable) {
  for (const std::string_view family : {"GS_", "MAGICK_"}) {
    if (variable.substr(0, family.size()) == family) return true;
  }
  for (const std::string_view name :
       {"TMPDIR", "TMP", "TEMP", "FONTCONFIG_FILE", "PAPERSIZE", "XDG_CACHE_HOME", "PPD"}) {
    if (variable.substr(0, variable.find('=')) == name) return true;
  }
  return false;
}

std::string XmlText(const std::string& text) {
  std::string xml;
  for (const char c : text) {
    if (c == '&' || c == '<') {
      xml += c == '&' ? "&amp;" : "&lt;";
    } else {
      xml += c;
    }
  }
  return xml;
}

// The fonts of the system, with another place for what is found out about them.
void WriteFontConfig(const std::string& path, const std::string& cache) {
  const char* own = std::getenv("FONTCONFIG_FILE");
  const std::string system = own != nullptr && *own != '\0' ? own : kSystemFontConfig;
  std::ofstream(path) << "<?xml version=\"1.0\"?>\n<!DOCTYPE fontconfig SYSTEM \"fonts.dtd\">\n"
                      << "<fontconfig><cachedir>" << XmlText(cache) << "</cachedir>"
                      << "<include ignore_missing=\"yes\">" << XmlText(system)
                      << "</include></fontconfig>\n";
}

}  // namespace

RenderFolder::RenderFolder() {
  const std::string scratch = Path("scratch");
  if (mkdir(scratch.c_str(), 0700) != 0) throw std::runtime_error(CannotWrite(errno));
  WriteFontConfig(Path(kFontConfig), scratch);
  for (char** variable = environ; *variable != nullptr; ++variable) {
    if (!IsOurs(*variable)) environment_.emplace_back(*variable);
  }
  for (const char* name : {"TMPDIR", "MAGICK_TMPDIR", "XDG_CACHE_HOME"})
    environment_.push_back(name + ("=" + scratch));
  environment_.push_back("FONTCONFIG_FILE=" + Path(kFontConfig));
  environment_.push_back("PAPERSIZE=a4");  // else a file of the system decides
}

std::string RenderFolder::LittleRoom() const {
  std::error_code failed;
  const auto bytes = std::filesystem::space(Path(""), failed).available;
  if (failed || bytes >= kLittleRoomBytes) return "";
  return "; only " + std::to_string(bytes >> 20) + " MB are left in the temporary folder '" +
         folder_.Parent() + "'";
}

}  // namespace qrn::tool
