// The rows of the pass buffers: a ring for each colour plane, addressed by the row's place in the
// band's window (0 = first row of the history). Host's thread, but for their setting up.
#ifndef QRN_RASTER_PASS_ROWS_H_
#define QRN_RASTER_PASS_ROWS_H_

#include <cstddef>
#include <cstdint>

#include "job/job.h"

namespace qrn {

// Layout of the rows for the job's image and mode. Requires: a derived geometry.
RowLayout LayoutOf(const Job& job);
// Bytes of one plane's buffer: rows, one line for what is put together, marks.
std::uint64_t PassBufferBytes(const RowLayout& layout);

// A stored row and its marks. Requires: row < layout.rows.
inline std::uint32_t RingIndex(const Job& job, std::uint32_t row) {
  const std::uint32_t index = job.Mem.firstRow + row;
  return index < job.Mem.layout.rows ? index : index - job.Mem.layout.rows;
}
inline std::uint8_t* RunAt(const Job& job, std::uint32_t plane, std::uint32_t phase,
                           std::uint32_t ringIndex) {
  const RowLayout& layout = job.Mem.layout;
  return job.Mem.pPassBuffer[plane] +
         (std::size_t{phase} * layout.rows + ringIndex) * layout.runBytes;
}
inline std::uint8_t* RestAt(const Job& job, std::uint32_t plane, std::uint32_t ringIndex) {
  const RowLayout& layout = job.Mem.layout;
  return RunAt(job, plane, layout.phases, 0) + std::size_t{ringIndex} * layout.restBytes;
}
inline std::uint8_t* RowMarks(const Job& job, std::uint32_t plane, std::uint32_t ringIndex) {
  const RowLayout& layout = job.Mem.layout;
  return RestAt(job, plane, layout.rows) + layout.lineBytes + std::size_t{ringIndex} * layout.marks;
}

// Puts the first `bytes` bytes of a line (at most lineStride) over what the row holds.
void StoreRow(Job& job, std::uint32_t plane, std::uint32_t row, const std::uint8_t* line,
              std::uint32_t bytes);
// The row as the host would give it, lineStride bytes.
void LoadRow(const Job& job, std::uint32_t plane, std::uint32_t row, std::uint8_t* line);

// Marks every part of a run that has ink after a change of its bytes; parts without a mark are left
// alone.
void MarkRun(const RowLayout& layout, const std::uint8_t* run, std::uint8_t* marks);

// Of all planes, rows [first, first + count), count at most layout.rows.
[[nodiscard]] bool AreRowsBlank(const Job& job, std::uint32_t first, std::uint32_t count);
void ClearRows(Job& job, std::uint32_t first, std::uint32_t count);

}  // namespace qrn

#endif  // QRN_RASTER_PASS_ROWS_H_
