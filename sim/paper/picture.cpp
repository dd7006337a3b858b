#include "sim/paper/picture.h"

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
constexpr std::uint64_t kPixelsMax = 1u << 30;

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
  for (int color = 0; color < kInks; ++color) {
    for (std::int32_t line = extent.firstLine; line < extent.firstLine + extent.lines; ++line) {
      for (int direction = 0; direction < 2; ++direction) {
        const InkRow* row = paper.Row(color, direction, line);
        if (row != nullptr) extent.columns = std::max(extent.columns, row->EndColumn());
      }
    }
  }
  return extent;
}

// The cells that a pixel covers along one edge of the picture: those at either end in part.
struct Span {
  std::int32_t first = 0, last = 0;
  float firstShare = 0, lastShare = 0;  // of a cell; both the same when the span is within one

  float ShareOf(std::int32_t cell) const {
    return cell == first ? firstShare : cell == last ? lastShare : 1.0f;
  }
};

// `cells` of the paper become `pixels` of the picture.
Span SpanOf(std::uint32_t pixel, std::int32_t cells, std::uint32_t pixels) {
  // In parts of a cell, of which it has `pixels`.
  const std::int64_t begin = std::int64_t{pixel} * cells, end = begin + cells;
  Span span;
  span.first = static_cast<std::int32_t>(begin / pixels);
  span.last = static_cast<std::int32_t>((end - 1) / pixels);
  const auto share = [pixels](std::int64_t parts) {
    return static_cast<float>(static_cast<double>(parts) / pixels);
  };
  const std::int64_t firstEnd = (std::int64_t{span.first} + 1) * pixels;
  span.firstShare = share(std::min(firstEnd, end) - begin);
  span.lastShare = share(end - std::max(std::int64_t{span.last} * pixels, begin));
  return span;
}

// One row of the picture: in each pixel every ink's average over the area of paper that it covers.
class RowMixer {
 public:
  RowMixer(const PictureOptions& options, const Extent& extent, std::uint32_t width,
           std::uint32_t height)
      : options_(options),
        extent_(extent),
        height_(height),
        ink_(static_cast<std::size_t>(extent.columns)),
        rgb_(3 * std::size_t{width}) {
    for (std::uint32_t pixel = 0; pixel < width; ++pixel)
      spans_.push_back(SpanOf(pixel, extent.columns, width));
    const double cells = static_cast<double>(extent.columns) / width * extent.lines / height;
    solid_ = static_cast<float>(cells * options.inkMax);
  }

  void Mix(const Paper& paper, std::uint32_t y, std::uint8_t* pixels) {
    std::fill(rgb_.begin(), rgb_.end(), 1.0f);
    const Span lines = SpanOf(y, extent_.lines, height_);
    for (int color = 0; color < kInks; ++color) {
      std::fill(ink_.begin(), ink_.end(), 0.0f);
      bool inked = false;
      for (std::int32_t line = lines.first; line <= lines.last; ++line) {
        const std::int32_t paperLine = extent_.firstLine + line;
        inked |= Add(paper.Row(color, 0, paperLine), 0, lines.ShareOf(line));
        inked |= Add(paper.Row(color, 1, paperLine), options_.reverseShift, lines.ShareOf(line));
      }
      if (inked) Tint(options_.inkRgb[static_cast<std::size_t>(color)]);
    }
    std::transform(rgb_.begin(), rgb_.end(), pixels, [](float value) {
      return static_cast<std::uint8_t>(std::lround(value * 255.0f));
    });
  }

 private:
  bool Add(const InkRow* row, std::int32_t shift, float share) {
    if (row == nullptr) return false;
    const std::int32_t first = std::max(0, row->firstColumn - shift);
    const std::int32_t end = std::min(extent_.columns, row->EndColumn() - shift);
    for (std::int32_t column = first; column < end; ++column) {
      ink_[static_cast<std::size_t>(column)] +=
          share * row->ink[static_cast<std::size_t>(column + shift - row->firstColumn)];
    }
    return true;
  }

  // Inks lie on each other like filters on white.
  void Tint(std::uint32_t inkRgb) {
    for (std::size_t pixel = 0; pixel < spans_.size(); ++pixel) {
      const Span& span = spans_[pixel];
      float ink = 0;
      for (std::int32_t column = span.first; column <= span.last; ++column)
        ink += span.ShareOf(column) * ink_[static_cast<std::size_t>(column)];
      if (ink == 0) continue;
      const float cover = std::min(1.0f, ink / solid_);
      for (std::size_t channel = 0; channel < 3; ++channel) {
        const auto left = static_cast<float>((inkRgb >> (16 - 8 * channel)) & 0xFFu) / 255.0f;
        rgb_[3 * pixel + channel] *= 1.0f - cover * (1.0f - left);
      }
    }
  }

  const PictureOptions& options_;
  Extent extent_;
  std::uint32_t height_;
  float solid_ = 1;  // ink of a pixel that is covered all over
  std::vector<Span> spans_;
  std::vector<float> ink_;  // of a color in the lines of the row, by column
  std::vector<float> rgb_;
};

struct Size {
  std::uint32_t width = 0, height = 0;
};

Size SizeOf(const Extent& extent, const PictureOptions& options) {
  const double widthInches = static_cast<double>(extent.columns) / options.columnsPerInch;
  const double heightInches = extent.lines / kLinesPerInch;
  const double fitting =
      std::min(options.widthMax, static_cast<std::uint32_t>(extent.columns)) / widthInches;
  const double perInch = options.pixelsPerInch != 0 ? options.pixelsPerInch : fitting;
  const auto pixels = [perInch](double inches) {
    return static_cast<std::uint32_t>(std::max(1.0, std::round(inches * perInch)));
  };
  return {pixels(widthInches), pixels(heightInches)};
}

std::string SizeProblem(const Size& size) {
  if (std::uint64_t{size.width} * size.height <= kPixelsMax) return "";
  return "a picture of " + std::to_string(size.width) + " x " + std::to_string(size.height) +
         " pixels is too large";
}

// Why the file could not be written; "" when it was.
std::string WriteFile(const std::string& path, png_image* image, const std::uint8_t* pixels) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return std::strerror(errno);
  errno = 0;
  std::string why;
  // The library reports its own errors only; a full disk may show at the very end.
  if (png_image_write_to_stdio(image, file, 0, pixels, 0, nullptr) == 0)
    why = errno != 0 ? std::strerror(errno) : image->message;
  if (std::fclose(file) != 0 && why.empty()) why = std::strerror(errno);
  return why;
}

}  // namespace

std::string PictureSizeProblem(const PictureOptions& options) {
  const Extent extent = {0, static_cast<std::int32_t>(options.lines),
                         static_cast<std::int32_t>(options.columns)};
  return SizeProblem(SizeOf(extent, options));
}

std::string WritePng(const Paper& paper, const PictureOptions& options, const std::string& path) {
  const Extent extent = ExtentOf(paper, options);
  const Size size = SizeOf(extent, options);
  std::string why = SizeProblem(size);
  if (!why.empty()) return why;
  const std::size_t rowBytes = 3 * std::size_t{size.width};
  std::vector<std::uint8_t> pixels(rowBytes * size.height);
  RowMixer mixer(options, extent, size.width, size.height);
  for (std::uint32_t y = 0; y < size.height; ++y) mixer.Mix(paper, y, &pixels[rowBytes * y]);

  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = size.width;
  image.height = size.height;
  image.format = PNG_FORMAT_RGB;
  return WriteFile(path, &image, pixels.data());
}

}  // namespace qrn::sim
