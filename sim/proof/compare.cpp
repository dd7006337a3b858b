#include "sim/proof/compare.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "sim/paper/carriage.h"
#include "sim/proof/reach.h"

namespace qrn::sim {
namespace {

constexpr std::uint32_t kPixelsPerByte = 4;
// The reverse shift is looked for within this many columns of the estimate.
constexpr std::int32_t kShiftWindow = 64;
constexpr std::size_t kSampleLinesMax = 48;  // of each color

// What should be on a paper line, as cells: the sum of the drop levels of each column's pixels.
struct AskedLine {
  std::vector<std::uint8_t> cells;  // empty when nothing should
  std::vector<std::uint8_t> least;  // without the pixels that may be out of reach; as many
};

class AskedLines {
 public:
  AskedLines(const RasterSource& raster, const Reach& reach, std::uint32_t columnPixels)
      : raster_(raster),
        reach_(reach),
        columnPixels_(columnPixels),
        columns_((std::size_t{raster.LineBytes()} * kPixelsPerByte + columnPixels - 1) /
                 columnPixels) {}

  std::int32_t Columns() const { return static_cast<std::int32_t>(columns_); }

  // Valid until the next call.
  const AskedLine& Line(int color, std::int32_t line) {
    Clear();
    // A line that is printed above its place shares the paper with the line that belongs there.
    Add(color, line, false);
    Add(color, line + 1, true);
    return asked_;
  }

  // Of an image line, the inked cells that are not printed and those that are printed one line
  // above.
  struct Lost {
    std::uint64_t unreached = 0, displaced = 0;
  };
  Lost LostOf(int color, std::int32_t line) {
    const LineReach reach = ReachOf(color, line);
    if (!reach.none && !reach.above) return {};
    Clear();
    AddPixels(color, line, 0);
    const auto inked = static_cast<std::uint64_t>(std::count_if(
        asked_.cells.begin(), asked_.cells.end(), [](auto cell) { return cell != 0; }));
    return reach.none ? Lost{inked, 0} : Lost{0, inked};
  }

 private:
  bool IsInside(std::int32_t line) const {
    return line >= 0 && line < static_cast<std::int32_t>(raster_.Lines());
  }
  LineReach ReachOf(int color, std::int32_t line) const {
    return IsInside(line) ? reach_.OfLine(color, static_cast<std::uint32_t>(line)) : LineReach{};
  }

  void Add(int color, std::int32_t line, bool above) {
    const LineReach reach = ReachOf(color, line);
    if (!reach.none && reach.above == above) AddPixels(color, line, reach.partPhases);
  }

  void Clear() {
    asked_.cells.clear();
    asked_.least.clear();
  }

  void AddPixels(int color, std::int32_t line, unsigned partPhases) {
    if (!IsInside(line)) return;
    const std::uint8_t* bytes = raster_.Line(color, static_cast<std::uint32_t>(line));
    if (bytes == nullptr) return;
    for (std::uint32_t i = 0; i < raster_.LineBytes(); ++i) {
      if (bytes[i] == 0) continue;
      asked_.cells.resize(columns_);
      asked_.least.resize(columns_);
      for (std::uint32_t pixel = 0; pixel < kPixelsPerByte; ++pixel) {
        const unsigned level = (bytes[i] >> (6 - 2 * pixel)) & 3u;
        const std::size_t at = std::size_t{i} * kPixelsPerByte + pixel;
        std::uint8_t& cell = asked_.cells[at / columnPixels_];
        cell = static_cast<std::uint8_t>(cell + level);
        if (((partPhases >> at % Reach::kPhases) & 1u) != 0) continue;
        std::uint8_t& least = asked_.least[at / columnPixels_];
        least = static_cast<std::uint8_t>(least + level);
      }
    }
  }

  const RasterSource& raster_;
  const Reach& reach_;
  std::uint32_t columnPixels_;
  std::size_t columns_;
  AskedLine asked_;
};

// The two layers of one paper line, the reverse one moved by the calibration.
struct PaperLine {
  const InkRow* forward;
  const InkRow* reverse;
  std::int32_t reverseShift;

  std::uint32_t At(std::int32_t column) const {
    return (forward != nullptr ? forward->At(column) : 0u) +
           (reverse != nullptr ? reverse->At(column + reverseShift) : 0u);
  }
  std::int32_t First() const {
    std::int32_t first = 0;
    if (forward != nullptr) first = std::min(first, forward->firstColumn);
    if (reverse != nullptr) first = std::min(first, reverse->firstColumn - reverseShift);
    return first;
  }
  std::int32_t End(std::int32_t columns) const {
    std::int32_t end = columns;
    if (forward != nullptr) end = std::max(end, forward->EndColumn());
    if (reverse != nullptr) end = std::max(end, reverse->EndColumn() - reverseShift);
    return end;
  }
};

bool HasInk(const InkRow* row) {
  return row != nullptr &&
         std::any_of(row->ink.begin(), row->ink.end(), [](std::uint8_t cell) { return cell != 0; });
}

class Comparer {
 public:
  Comparer(const RasterSource& raster, const Paper& paper, const Reach& reach,
           std::uint32_t columnPixels)
      : paper_(paper),
        lines_(static_cast<std::int32_t>(raster.Lines())),
        asked_(raster, reach, columnPixels) {}

  void Calibrate() {
    FindLineOrigin();
    FindReverseShift();
  }
  void CalibrateLike(const Comparison& other) {
    result_.lineOrigin = other.lineOrigin;
    result_.reverseShift = other.reverseShift;
    result_.reverseFound = other.reverseFound;
  }

  Comparison Run() {
    // All image lines, and all paper lines outside the image.
    const std::int32_t first = std::min(0, PaperFirst() - result_.lineOrigin);
    const std::int32_t last = std::max(lines_ - 1, PaperLast() - result_.lineOrigin);
    for (std::int32_t line = first; line <= last; ++line) {
      for (int color = 0; color < kInks; ++color) CompareLine(color, line);
    }
    return result_;
  }

 private:
  bool NoPaper() const { return paper_.FirstLine() > paper_.LastLine(); }
  std::int32_t PaperFirst() const { return NoPaper() ? 0 : paper_.FirstLine(); }
  std::int32_t PaperLast() const { return NoPaper() ? 0 : paper_.LastLine(); }

  bool PaperLineInked(std::int32_t line) const {
    for (int color = 0; color < kInks; ++color) {
      if (HasInk(paper_.Row(color, 0, line)) || HasInk(paper_.Row(color, 1, line))) return true;
    }
    return false;
  }

  // The first inked line of the image is the first inked line of the paper.
  void FindLineOrigin() {
    if (NoPaper()) return;
    std::int32_t paperLine = PaperFirst();
    while (paperLine < PaperLast() && !PaperLineInked(paperLine)) ++paperLine;
    for (std::int32_t line = 0; line < lines_; ++line) {
      for (int color = 0; color < kInks; ++color) {
        if (asked_.Line(color, line).cells.empty()) continue;
        result_.lineOrigin = paperLine - line;
        return;
      }
    }
  }

  struct Sample {
    std::vector<std::uint8_t> cells;
    const InkRow* forward;
    const InkRow* reverse;
  };

  // Lines of every color with ink of reverse passes, spread over the paper.
  std::vector<Sample> Samples() {
    std::vector<Sample> samples;
    for (int color = 0; color < kInks; ++color) {
      std::vector<std::int32_t> inked;
      for (std::int32_t line = 0; line < lines_; ++line) {
        if (HasInk(paper_.Row(color, 1, line + result_.lineOrigin))) inked.push_back(line);
      }
      const std::size_t step = std::max<std::size_t>(1, inked.size() / kSampleLinesMax);
      for (std::size_t i = 0; i < inked.size(); i += step) {
        const AskedLine& asked = asked_.Line(color, inked[i]);
        if (asked.cells.empty()) continue;
        const std::int32_t line = inked[i] + result_.lineOrigin;
        samples.push_back({asked.cells, paper_.Row(color, 0, line), paper_.Row(color, 1, line)});
      }
    }
    return samples;
  }

  static std::int32_t FirstInked(const std::vector<std::uint8_t>& cells) {
    return static_cast<std::int32_t>(
        std::find_if(cells.begin(), cells.end(), [](auto c) { return c != 0; }) - cells.begin());
  }

  // The shift with the fewest differing cells on the sample, near where the leftmost ink says it
  // is.
  void FindReverseShift() {
    const std::vector<Sample> samples = Samples();
    if (samples.empty()) return;
    result_.reverseFound = true;
    std::vector<std::int32_t> offsets;
    offsets.reserve(samples.size());
    for (const Sample& sample : samples) {
      offsets.push_back(sample.reverse->firstColumn + FirstInked(sample.reverse->ink) -
                        FirstInked(sample.cells));
    }
    std::nth_element(offsets.begin(),
                     offsets.begin() + static_cast<std::ptrdiff_t>(offsets.size() / 2),
                     offsets.end());
    const std::int32_t estimate = offsets[offsets.size() / 2];
    std::uint64_t best = UINT64_MAX;
    for (std::int32_t distance = 0; distance <= kShiftWindow; ++distance) {
      for (const std::int32_t shift : {estimate + distance, estimate - distance}) {
        const std::uint64_t differing = CountSample(samples, shift, best);
        if (differing >= best) continue;
        best = differing;
        result_.reverseShift = shift;
      }
    }
  }

  std::uint64_t CountSample(const std::vector<Sample>& samples, std::int32_t shift,
                            std::uint64_t limit) const {
    std::uint64_t differing = 0;
    for (const Sample& sample : samples) {
      const PaperLine printed{sample.forward, sample.reverse, shift};
      for (std::int32_t column = 0; column < asked_.Columns(); ++column) {
        if (printed.At(column) != sample.cells[static_cast<std::size_t>(column)]) ++differing;
      }
      if (differing >= limit) break;
    }
    return differing;
  }

  void CompareLine(int color, std::int32_t line) {
    const AskedLines::Lost lost = asked_.LostOf(color, line);
    result_.unreachedCells += lost.unreached;
    result_.displacedCells += lost.displaced;
    const AskedLine& asked = asked_.Line(color, line);
    const std::int32_t paperLine = line + result_.lineOrigin;
    const PaperLine printed{paper_.Row(color, 0, paperLine), paper_.Row(color, 1, paperLine),
                            result_.reverseShift};
    if (asked.cells.empty() && printed.forward == nullptr && printed.reverse == nullptr) return;
    const std::int32_t end = printed.End(asked_.Columns());
    for (std::int32_t column = printed.First(); column < end; ++column) {
      const bool inside = !asked.cells.empty() && column >= 0 && column < asked_.Columns();
      const std::uint32_t wanted = inside ? asked.cells[static_cast<std::size_t>(column)] : 0;
      const std::uint32_t found = printed.At(column);
      if (wanted == 0 && found == 0) continue;
      ++result_.cells;
      if (found < wanted && found >= asked.least[static_cast<std::size_t>(column)]) {
        ++result_.unreachedCells;
      } else if (wanted != found) {
        Differ(color, line, column, wanted, found);
      }
    }
  }

  void Differ(int color, std::int32_t line, std::int32_t column, std::uint32_t wanted,
              std::uint32_t found) {
    if (found > wanted) ++result_.overInkedCells;
    if (result_.differingCells++ != 0) return;
    result_.firstDifference = "color " + std::to_string(color) + ", line " + std::to_string(line) +
                              ", column " + std::to_string(column) + ": asked " +
                              std::to_string(wanted) + ", printed " + std::to_string(found);
  }

  const Paper& paper_;
  std::int32_t lines_;
  AskedLines asked_;
  Comparison result_;
};

// An ink with one row on each head: both rows' dots travel in the bytes of one head.
std::string SplitInks(const Machine& machine) {
  std::string colors;
  for (std::uint8_t color = 0; color < kInks; ++color) {
    const auto& pha = machine.inkOrder[0];
    if (std::count(pha.begin(), pha.end(), color) != 1) continue;
    colors += ' ';
    colors += std::to_string(color);
  }
  return colors.empty() ? "" : "one nozzle row on each head for colors" + colors;
}

Comparison Judged(Comparer& comparer, const Machine& machine, const Reach& reach) {
  Comparison result = comparer.Run();
  const bool both = machine.heads == Heads::kBoth;
  result.reason = both ? SplitInks(machine) : reach.Reason();
  result.incomparable = machine.heads == Heads::kNone || (both && !result.reason.empty());
  return result;
}

}  // namespace

Comparison Compare(const RasterSource& raster, const Paper& paper, const Machine& machine,
                   std::uint32_t resolution) {
  const Reach reach(machine, resolution);
  Comparer comparer(raster, paper, reach, ColumnPixelsOf(machine, resolution));
  comparer.Calibrate();
  return Judged(comparer, machine, reach);
}

Comparison CompareCalibrated(const RasterSource& raster, const Paper& paper, const Machine& machine,
                             std::uint32_t resolution, const Comparison& calibrated) {
  const Reach reach(machine, resolution);
  Comparer comparer(raster, paper, reach, ColumnPixelsOf(machine, resolution));
  comparer.CalibrateLike(calibrated);
  return Judged(comparer, machine, reach);
}

}  // namespace qrn::sim
