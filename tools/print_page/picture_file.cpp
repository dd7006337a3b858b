#include "print_page/picture_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "print_page/leftovers.h"
#include "sim/paper/carriage.h"

namespace qrn::tool {

namespace fs = std::filesystem;

std::string PictureName(const std::string& name, std::uint32_t pageNo) {
  if (pageNo == 1) return name;
  const fs::path path(name);
  return (path.parent_path() /
          (path.stem().string() + "-" + std::to_string(pageNo) + path.extension().string()))
      .string();
}

std::string PictureProblem(const std::string& name) {
  if (name.empty()) return "";
  if (fs::is_directory(name)) return "'" + name + "': is a folder";
  const std::string folder = fs::path(name).parent_path().string();
  if (access(folder.c_str(), W_OK | X_OK) != 0) return "'" + folder + "': " + std::strerror(errno);
  return fs::is_directory(folder) ? "" : "'" + folder + "': is not a folder";
}

sim::PictureOptions PictureOf(const Options& options, const sim::Machine& machine,
                              std::uint32_t lines, std::uint32_t widthPixels) {
  const std::uint32_t columnPixels = sim::ColumnPixelsOf(machine, options.resolution);
  sim::PictureOptions picture;
  picture.lines = options.verify ? lines : 0;
  picture.columns = options.verify ? widthPixels / columnPixels : 0;
  picture.columnsPerInch = options.resolution / sim::BasePassCountOf(options.resolution);
  picture.pixelsPerInch = options.pictureDpi;
  picture.inkMax = columnPixels * 3;
  return picture;
}

std::string SavePicture(const sim::Paper& paper, const sim::PictureOptions& options,
                        const std::string& name) {
  std::error_code failed;
  const fs::file_status status = fs::status(name, failed);
  const bool device = fs::exists(status) && !fs::is_regular_file(status);
  if (device) return sim::WritePng(paper, options, name);
  // A link stays one: the picture replaces what it leads to.
  const fs::path file = fs::exists(status) ? fs::canonical(name) : fs::path(name);
  const Leftover part(file.string() + ".part");
  std::string why = sim::WritePng(paper, options, part.Path());
  if (!why.empty()) return why;
  fs::rename(part.Path(), file, failed);
  return failed ? failed.message() : "";
}

}  // namespace qrn::tool
