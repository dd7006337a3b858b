#include "sim/compare.h"

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <vector>

namespace qrn::sim {
namespace {

constexpr std::uint32_t kPixelsPerByte = 4;
constexpr std::int32_t kShiftWindow =
    64;  // columns around the estimate in which the reverse shift is looked for
constexpr std::size_t kSampleLinesMax = 48;  // of each plane

// One raster line as cells: the sum of the drop levels of each column's pixels.
class CellLines {
 public:
  CellLines(const RasterSource& raster, std::uint32_t passCount)
      : raster_(raster),
        passCount_(passCount),
        cells_((std::size_t{raster.LineBytes()} * kPixelsPerByte + passCount - 1) / passCount) {}

  std::int32_t Columns() const { return static_cast<std::int32_t>(cells_.size()); }

  // Null when the line is blank. Valid until the next call.
  const std::vector<std::uint8_t>* Line(int plane, std::int32_t line) {
    if (line < 0 || line >= static_cast<std::int32_t>(raster_.Lines())) return nullptr;
    const std::uint8_t* bytes = raster_.Line(plane, static_cast<std::uint32_t>(line));
    if (bytes == nullptr) return nullptr;
    std::fill(cells_.begin(), cells_.end(), std::uint8_t{0});
    bool inked = false;
    for (std::uint32_t i = 0; i < raster_.LineBytes(); ++i) {
      if (bytes[i] == 0) continue;
      inked = true;
      for (std::uint32_t pixel = 0; pixel < kPixelsPerByte; ++pixel) {
        const unsigned level = (bytes[i] >> (6 - 2 * pixel)) & 3u;
        std::uint8_t& cell = cells_[(std::size_t{i} * kPixelsPerByte + pixel) / passCount_];
        cell = static_cast<std::uint8_t>(cell + level);
      }
    }
    return inked ? &cells_ : nullptr;
  }

 private:
  const RasterSource& raster_;
  std::uint32_t passCount_;
  std::vector<std::uint8_t> cells_;
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
  Comparer(const RasterSource& raster, const Paper& paper, std::uint32_t passCount)
      : paper_(paper),
        lines_(static_cast<std::int32_t>(raster.Lines())),
        cells_(raster, passCount) {}

  Comparison Run() {
    FindLineOrigin();
    FindReverseShift();
    // All image lines, and all paper lines outside the image.
    const std::int32_t first = std::min(0, PaperFirst() - result_.lineOrigin);
    const std::int32_t last = std::max(lines_ - 1, PaperLast() - result_.lineOrigin);
    for (std::int32_t line = first; line <= last; ++line) {
      for (int plane = 0; plane < kInks; ++plane) CompareLine(plane, line);
    }
    return result_;
  }

 private:
  bool NoPaper() const { return paper_.FirstLine() > paper_.LastLine(); }
  std::int32_t PaperFirst() const { return NoPaper() ? 0 : paper_.FirstLine(); }
  std::int32_t PaperLast() const { return NoPaper() ? 0 : paper_.LastLine(); }

  bool PaperLineInked(std::int32_t line) const {
    for (int plane = 0; plane < kInks; ++plane) {
      if (HasInk(paper_.Row(plane, 0, line)) || HasInk(paper_.Row(plane, 1, line))) return true;
    }
    return false;
  }

  // The first inked line of the image lies on the first inked line of the paper.
  void FindLineOrigin() {
    if (NoPaper()) return;
    std::int32_t paperLine = PaperFirst();
    while (paperLine < PaperLast() && !PaperLineInked(paperLine)) ++paperLine;
    for (std::int32_t line = 0; line < lines_; ++line) {
      for (int plane = 0; plane < kInks; ++plane) {
        if (cells_.Line(plane, line) == nullptr) continue;
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

  // Lines of every plane with ink of reverse passes, spread over the paper.
  std::vector<Sample> Samples() {
    std::vector<Sample> samples;
    for (int plane = 0; plane < kInks; ++plane) {
      std::vector<std::int32_t> inked;
      for (std::int32_t line = 0; line < lines_; ++line) {
        if (HasInk(paper_.Row(plane, 1, line + result_.lineOrigin))) inked.push_back(line);
      }
      const std::size_t step = std::max<std::size_t>(1, inked.size() / kSampleLinesMax);
      for (std::size_t i = 0; i < inked.size(); i += step) {
        const std::vector<std::uint8_t>* cells = cells_.Line(plane, inked[i]);
        if (cells == nullptr) continue;
        const std::int32_t line = inked[i] + result_.lineOrigin;
        samples.push_back({*cells, paper_.Row(plane, 0, line), paper_.Row(plane, 1, line)});
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
      for (std::int32_t column = 0; column < cells_.Columns(); ++column) {
        if (printed.At(column) != sample.cells[static_cast<std::size_t>(column)]) ++differing;
      }
      if (differing >= limit) break;
    }
    return differing;
  }

  void CompareLine(int plane, std::int32_t line) {
    const std::vector<std::uint8_t>* asked = cells_.Line(plane, line);
    const std::int32_t paperLine = line + result_.lineOrigin;
    const PaperLine printed{paper_.Row(plane, 0, paperLine), paper_.Row(plane, 1, paperLine),
                            result_.reverseShift};
    if (asked == nullptr && printed.forward == nullptr && printed.reverse == nullptr) return;
    const std::int32_t end = printed.End(cells_.Columns());
    for (std::int32_t column = printed.First(); column < end; ++column) {
      const bool inside = asked != nullptr && column >= 0 && column < cells_.Columns();
      const std::uint32_t wanted = inside ? (*asked)[static_cast<std::size_t>(column)] : 0;
      const std::uint32_t found = printed.At(column);
      if (wanted == 0 && found == 0) continue;
      ++result_.cells;
      if (wanted != found) Differ(plane, line, column, wanted, found);
    }
  }

  void Differ(int plane, std::int32_t line, std::int32_t column, std::uint32_t wanted,
              std::uint32_t found) {
    if (result_.differingCells++ != 0) return;
    result_.firstDifference = "plane " + std::to_string(plane) + ", line " + std::to_string(line) +
                              ", column " + std::to_string(column) + ": asked " +
                              std::to_string(wanted) + ", printed " + std::to_string(found);
  }

  const Paper& paper_;
  std::int32_t lines_;
  CellLines cells_;
  Comparison result_;
};

// An ink with one row on each head: both rows' dots travel in the bytes of one head.
std::string SplitInks(const Machine& machine) {
  if (machine.heads != Heads::kBoth || machine.inkOrder == decltype(machine.inkOrder){}) return "";
  std::string planes;
  for (std::uint8_t plane = 0; plane < kInks; ++plane) {
    const auto& pha = machine.inkOrder[0];
    if (std::count(pha.begin(), pha.end(), plane) != 1) continue;
    planes += ' ';
    planes += std::to_string(plane);
  }
  return planes.empty() ? "" : "one nozzle row on each head for planes" + planes;
}

}  // namespace

Comparison Compare(const RasterSource& raster, const Paper& paper, const Machine& machine,
                   std::uint32_t passCount) {
  Comparison result = Comparer(raster, paper, passCount).Run();
  result.reason = SplitInks(machine);
  return result;
}

}  // namespace qrn::sim
