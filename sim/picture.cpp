#include "sim/picture.h"

#include <png.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <vector>

namespace qrn::sim {
namespace {

constexpr double kLinesPerInch = 360;

struct Extent {
  std::int32_t firstLine = 0, lines = 1, columns = 1;
};

Extent ExtentOf(const Paper& paper, const PictureOptions& options) {
  Extent extent;
  const bool blank = paper.FirstLine() > paper.LastLine();
  extent.firstLine = options.lines != 0 || blank ? options.lineOrigin : paper.FirstLine();
  extent.lines = options.lines != 0 ? static_cast<std::int32_t>(options.lines)
                 : blank            ? 1
                                    : paper.LastLine() - paper.FirstLine() + 1;
  if (options.columns != 0) {
    extent.columns = static_cast<std::int32_t>(options.columns);
    return extent;
  }
  for (int plane = 0; plane < kInks; ++plane) {
    for (std::int32_t line = extent.firstLine; line < extent.firstLine + extent.lines; ++line) {
      for (int direction = 0; direction < 2; ++direction) {
        const InkRow* row = paper.Row(plane, direction, line);
        if (row != nullptr) extent.columns = std::max(extent.columns, row->EndColumn());
      }
    }
  }
  return extent;
}

// Ink of one plane in each pixel of one picture row: the average over the cells that the pixel
// covers.
class RowMixer {
 public:
  RowMixer(const PictureOptions& options, const Extent& extent, std::uint32_t width)
      : options_(options),
        columns_(extent.columns),
        width_(width),
        sums_(width),
        rgb_(3 * std::size_t{width}) {}

  const std::uint8_t* Mix(const Paper& paper, std::int32_t firstLine, std::int32_t endLine) {
    std::fill(rgb_.begin(), rgb_.end(), 1.0f);
    for (int plane = 0; plane < kInks; ++plane) {
      std::fill(sums_.begin(), sums_.end(), 0u);
      bool inked = false;
      for (std::int32_t line = firstLine; line < endLine; ++line) {
        inked |= Sum(paper.Row(plane, 0, line), 0);
        inked |= Sum(paper.Row(plane, 1, line), options_.reverseShift);
      }
      if (inked) Tint(options_.inkRgb[static_cast<std::size_t>(plane)], endLine - firstLine);
    }
    bytes_.resize(rgb_.size());
    std::transform(rgb_.begin(), rgb_.end(), bytes_.begin(), [](float value) {
      return static_cast<std::uint8_t>(std::lround(value * 255.0f));
    });
    return bytes_.data();
  }

 private:
  // The first column that lies in a pixel: PixelOf turned round.
  std::int64_t FirstColumn(std::size_t pixel) const {
    return (static_cast<std::int64_t>(pixel) * columns_ + width_ - 1) / width_;
  }

  std::size_t PixelOf(std::int32_t column) const {
    return static_cast<std::size_t>(std::int64_t{column} * width_ / columns_);
  }

  bool Sum(const InkRow* row, std::int32_t shift) {
    if (row == nullptr) return false;
    const std::int32_t end = std::min(columns_, row->EndColumn() - shift);
    for (std::int32_t column = std::max(0, row->firstColumn - shift); column < end; ++column) {
      const std::uint8_t ink =
          row->ink[static_cast<std::size_t>(column + shift - row->firstColumn)];
      if (ink != 0) sums_[PixelOf(column)] += ink;
    }
    return true;
  }

  // Inks lie on each other like filters on white.
  void Tint(std::uint32_t inkRgb, std::int32_t lines) {
    const double perColumn = static_cast<double>(lines) * options_.inkMax;
    for (std::size_t pixel = 0; pixel < sums_.size(); ++pixel) {
      const auto columns = static_cast<double>(FirstColumn(pixel + 1) - FirstColumn(pixel));
      const auto cover = static_cast<float>(std::min(1.0, sums_[pixel] / (columns * perColumn)));
      for (std::size_t channel = 0; channel < 3; ++channel) {
        const auto ink = static_cast<float>((inkRgb >> (16 - 8 * channel)) & 0xFFu) / 255.0f;
        rgb_[3 * pixel + channel] *= 1.0f - cover * (1.0f - ink);
      }
    }
  }

  const PictureOptions& options_;
  std::int32_t columns_;
  std::uint32_t width_;
  std::vector<std::uint32_t> sums_;
  std::vector<float> rgb_;
  std::vector<std::uint8_t> bytes_;
};

// Why the file could not be written; "" when it was.
std::string WriteFile(const std::string& path, png_image* image, const std::uint8_t* pixels) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return std::strerror(errno);
  errno = 0;
  std::string why;
  // The library tells its own reason only; a full disk may show at the very end.
  if (png_image_write_to_stdio(image, file, 0, pixels, 0, nullptr) == 0)
    why = errno != 0 ? std::strerror(errno) : image->message;
  if (std::fclose(file) != 0 && why.empty()) why = std::strerror(errno);
  return why;
}

}  // namespace

bool WritePng(const Paper& paper, const PictureOptions& options, const std::string& path,
              std::string* error) {
  const Extent extent = ExtentOf(paper, options);
  const std::uint32_t width =
      std::min(options.widthMax, static_cast<std::uint32_t>(extent.columns));
  const double linesPerColumn = options.columnsPerInch / kLinesPerInch;
  const auto height = static_cast<std::uint32_t>(
      std::max(1.0, std::round(extent.lines * linesPerColumn * width / extent.columns)));
  std::vector<std::uint8_t> pixels(3 * std::size_t{width} * height);
  RowMixer mixer(options, extent, width);
  for (std::uint32_t y = 0; y < height; ++y) {
    const auto lineAt = [&](std::uint32_t row) {
      return extent.firstLine +
             static_cast<std::int32_t>(std::int64_t{row} * extent.lines / height);
    };
    const std::uint8_t* row = mixer.Mix(paper, lineAt(y), std::max(lineAt(y) + 1, lineAt(y + 1)));
    std::copy_n(row, 3 * std::size_t{width},
                pixels.begin() + static_cast<std::ptrdiff_t>(3 * std::size_t{width} * y));
  }

  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = width;
  image.height = height;
  image.format = PNG_FORMAT_RGB;
  const std::string why = WriteFile(path, &image, pixels.data());
  if (!why.empty()) *error = "cannot write picture '" + path + "': " + why;
  return why.empty();
}

}  // namespace qrn::sim
