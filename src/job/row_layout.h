// How the rows of a pass buffer are laid out in memory. A row holds one line of one colour, its
// pixels deinterleaved by phase, so that a pass reads one contiguous run of it:
//
//   run of phase 0, run of phase 1, ..   columns x 2 bits, first column in the lowest bits of the
//                                        first byte, zeros up to a multiple of 16 bytes
//   tail                                 the host's bytes after the last whole group
//
// The buffer has the runs of phase 0 of all rows first, so that those of a pass are close together,
// then those of phase 1, and so on; then the tails, one line of scratch and the occupancy.
//
// Every run is cut into parts of 256 bytes. One occupancy byte for each part, and one for the tail,
// says whether it has ink. The occupancy decides: a part without ink, and a tail without, are blank
// whatever their bytes are. So clearing a row, or taking a printed run out, changes the occupancy
// alone.
#ifndef QRN_JOB_ROW_LAYOUT_H_
#define QRN_JOB_ROW_LAYOUT_H_

#include <cstdint>

namespace qrn {

constexpr std::uint32_t kPixelsPerByte = 4;
constexpr std::uint32_t kPartBytes = 256;
constexpr std::uint32_t kPassBufferHeights = 4;  // rows of the ring, in heights of nResY

struct RowLayout {
  std::uint32_t rows;                // of the ring
  std::uint32_t lineBytes;           // of a line as the host gives it: lineStride
  std::uint32_t deinterleavedBytes;  // of these, whole groups; the tail follows them
  std::uint32_t phases;              // 0 = nothing is ever converted
  std::uint32_t columns;             // of each phase
  std::uint32_t runBytes;
  std::uint32_t tailBytes;
  std::uint32_t parts;           // of each run
  std::uint32_t occupancyBytes;  // of a row: its parts and its tail
};

}  // namespace qrn

#endif  // QRN_JOB_ROW_LAYOUT_H_
