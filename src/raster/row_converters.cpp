#include "raster/row_converters.h"

#include <algorithm>

#include "base/bytes.h"
#include "job/print_out.h"
#include "raster/column_modes.h"
#include "raster/tile_walk.h"

namespace qrn {
namespace {

// Forward, pixel j of a phase lands in column j, in reverse in column reverseStart - j; the nozzle
// row's own column is added in both.
void ConvertRows(Job& job, ConvertParams& params, const ColumnMode& mode, bool reverse) {
  const RowLayout& layout = job.Mem.layout;
  params.nozzleCount = Low16(kNozzles - job.featherRows);
  params.firstByte = params.endByte = 0;
  ColumnWalk walk{};
  walk.phase = job.passIndex / mode.passesPerPhase;
  walk.reverse = reverse;
  if (walk.phase >= layout.phases || params.rowCount == 0) return;

  const auto [least, most] =
      std::minmax_element(params.rows, params.rows + params.rowCount,
                          [](const PassRow& a, const PassRow& b) { return a.column < b.column; });
  walk.columns = layout.columns + most->column - least->column;
  walk.firstRowColumn = (reverse ? most : least)->column;
  walk.firstColumn = walk.firstRowColumn + (reverse ? mode.reverseStart(job.passRightByte) : 0);
  const std::size_t lowestColumn = reverse ? walk.firstColumn + 1 - walk.columns : walk.firstColumn;
  params.firstByte = lowestColumn * kColumnBytes + params.firstJet;
  params.endByte = params.firstByte + std::size_t{walk.columns} * kColumnBytes;
  LayColumns(job, params, walk);
  TakeOutPixels(job, params, walk.phase);
}

}  // namespace

void Dual3Forward(Job& job, ConvertParams& params) { ConvertRows(job, params, kDual3, false); }
void Dual3Reverse(Job& job, ConvertParams& params) { ConvertRows(job, params, kDual3, true); }
void Dual4Forward(Job& job, ConvertParams& params) { ConvertRows(job, params, kDual4, false); }
void Dual4Reverse(Job& job, ConvertParams& params) { ConvertRows(job, params, kDual4, true); }
void Dual6Forward(Job& job, ConvertParams& params) { ConvertRows(job, params, kDual6, false); }
void Dual6Reverse(Job& job, ConvertParams& params) { ConvertRows(job, params, kDual6, true); }
void Dual8Forward(Job& job, ConvertParams& params) { ConvertRows(job, params, kDual8, false); }
void Dual8Reverse(Job& job, ConvertParams& params) { ConvertRows(job, params, kDual8, true); }
void SingleForward(Job& job, ConvertParams& params) { ConvertRows(job, params, kSingle, false); }
void SingleReverse(Job& job, ConvertParams& params) { ConvertRows(job, params, kSingle, true); }

}  // namespace qrn
