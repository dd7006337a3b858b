// How the pixels of a line are shared out among the passes of a band. A line has a number of
// phases, and an output column is as many pixels wide: pixel u belongs to phase u mod phases and to
// column u / phases. A pass prints one phase, and so one pixel of every column. The modes differ in
// data only; their records stand with the workers that they name, in row_converters.cpp. Both
// threads: the transmit thread lays out the job's memory by the mode, the host's converts by it.
#ifndef QRN_RASTER_COLUMN_MODES_H_
#define QRN_RASTER_COLUMN_MODES_H_

#include <cstdint>

#include "job/job.h"
#include "raster/convert_params.h"

namespace qrn {

using Worker = WrittenBytes (*)(Job& job, const ConvertParams& params);

struct ColumnMode {
  std::uint8_t phases;
  std::uint8_t passesPerPhase;  // passes that print the same phase; phase = passIndex / this
  std::uint8_t groupBytes;      // bytes of a line that yield a whole number of columns
  std::uint8_t needBytes;       // bytes of a group that must lie before the line's end
  // Reverse column of the first column, for a line of `bytes` bytes; the others follow towards
  // column 0. Requires: a group.
  std::uint32_t (*reverseStart)(std::uint32_t bytes);
  // Byte of feather mask i over byte `byte` (0 = first) of the group at byte x.
  std::uint32_t (*maskByte)(std::uint32_t i, std::uint32_t x, std::uint32_t byte);
  Worker forward, reverse;  // raster/row_converters.h
};

// One head splits a line three ways at every resolution.
constexpr std::uint32_t kSinglePhases = 3;

// The job's mode; null for a two-head pass count that has none. Requires: the final pass count.
const ColumnMode* ModeOf(const Job& job);

// Phases of a line, which are also the pixels that an output column is wide. Requires: the final
// pass count.
constexpr std::uint32_t PhasesOf(const Job& job) {
  return job.dualHead == 1 ? job.passCount : kSinglePhases;
}

}  // namespace qrn

#endif  // QRN_RASTER_COLUMN_MODES_H_
