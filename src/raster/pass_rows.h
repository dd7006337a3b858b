// The rows of the pass buffers: a ring for each colour, a row for each line. Lines are known by
// their place in the band's window, the window line: 0 is the first of the history, historyRows the
// first of the band that is coming in. The window begins at the ring's start, which moves on by a
// band at a time. Host's thread, except when they are set up.
#ifndef QRN_RASTER_PASS_ROWS_H_
#define QRN_RASTER_PASS_ROWS_H_

#include <cstddef>
#include <cstdint>

#include "job/job.h"

namespace qrn {

// Layout of the rows for the job's image and mode. Requires: a derived geometry.
RowLayout LayoutOf(const Job& job);
// Bytes of one colour's buffer: rows, one line of scratch, occupancy.
std::uint64_t PassBufferBytes(const RowLayout& layout);

// Place in the ring of a window line's row. Requires: windowLine < layout.rows.
inline std::uint32_t RingIndex(const Job& job, std::uint32_t windowLine) {
  const std::uint32_t index = job.Mem.ringStart + windowLine;
  return index < job.Mem.layout.rows ? index : index - job.Mem.layout.rows;
}
// The parts of a row by its place in the ring.
inline std::uint8_t* RunAt(const Job& job, std::uint32_t color, std::uint32_t phase,
                           std::uint32_t ringIndex) {
  const RowLayout& layout = job.Mem.layout;
  return job.Mem.pPassBuffer[color] +
         (std::size_t{phase} * layout.rows + ringIndex) * layout.runBytes;
}
inline std::uint8_t* TailAt(const Job& job, std::uint32_t color, std::uint32_t ringIndex) {
  const RowLayout& layout = job.Mem.layout;
  return RunAt(job, color, layout.phases, 0) + std::size_t{ringIndex} * layout.tailBytes;
}
inline std::uint8_t* OccupancyAt(const Job& job, std::uint32_t color, std::uint32_t ringIndex) {
  const RowLayout& layout = job.Mem.layout;
  return TailAt(job, color, layout.rows) + layout.lineBytes +
         std::size_t{ringIndex} * layout.occupancyBytes;
}

// Puts the first `bytes` bytes of a line (at most lineStride) over what the row holds.
void StoreRow(Job& job, std::uint32_t color, std::uint32_t windowLine, const std::uint8_t* line,
              std::uint32_t bytes);
// The row as the host would give it, lineStride bytes.
void LoadRow(const Job& job, std::uint32_t color, std::uint32_t windowLine, std::uint8_t* line);

// Takes the pixels of a phase, which a pass has printed, out of the `count` rows of a nozzle row:
// every other line from firstLine on.
void TakeOutPixels(Job& job, std::uint32_t color, std::uint32_t phase, std::uint32_t firstLine,
                   std::uint32_t count);
// The same of one row that a feathered nozzle has printed: what its mask, a feather run of that
// phase, holds back stays.
void TakeOutFeathered(Job& job, std::uint32_t color, std::uint32_t phase, std::uint32_t windowLine,
                      const std::uint8_t* mask);

// Of all colours, window lines [first, first + count), count at most layout.rows.
[[nodiscard]] bool AreRowsBlank(const Job& job, std::uint32_t first, std::uint32_t count);
void ClearRows(Job& job, std::uint32_t first, std::uint32_t count);

}  // namespace qrn

#endif  // QRN_RASTER_PASS_ROWS_H_
