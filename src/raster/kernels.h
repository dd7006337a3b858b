// The three inner steps of the conversion, once for each instruction set. Kernels take pointers and
// counts, not the job; all give the same bytes. Host's thread.
//
//   line, as the host gives it    pixels 0 1 2 3 | 4 5 6 7 | ...   the first in the highest bits
//        |
//        | deinterleave, as the line comes in (job/row_layout.h)
//        v
//   run of a phase                columns 3 2 1 0 | 7 6 5 4 | ...  the first in the lowest bits
//        |
//        | align: shifts each run by the column offset of its nozzle row
//        v
//   jet group: 16 jets x 8 rows   a jet is one nozzle of one head, with a row for each nozzle row
//        |                        of it; a byte is four columns of two bits, plane 0 in the upper
//        |
//        | pack: eight nozzle rows become a byte (8 x 8 bits transposed), 16 jets a run of bytes
//        v in the column (16 x 16 bytes transposed)
//   PrintOutBuf                   in every column 16 bytes of either plane
#ifndef QRN_RASTER_KERNELS_H_
#define QRN_RASTER_KERNELS_H_

#include <cstddef>
#include <cstdint>
#include <span>

#include "job/heads.h"

namespace qrn {

constexpr std::uint32_t kCacheLineBytes = 64;            // of what is prefetched
constexpr std::uint32_t kVectorBytes = 16;               // runs are whole multiples of this
constexpr std::uint32_t kGroupNozzles = 8;               // of each head, that are packed together
constexpr std::uint32_t kGroupJets = 2 * kGroupNozzles;  // 2 x nozzle + head
constexpr std::uint32_t kStripBytes = 256;               // of a run, that are aligned together
constexpr std::uint32_t kStripReadBytes = kStripBytes + 1;  // what a shift reads for them
constexpr std::uint32_t kJetBytes = kNozzleRows * kStripBytes;

// A strip of columns for 16 jets. The occupancy of a jet says which of its nozzle rows have dots:
// bit s = row s. Rows without are zeros.
struct JetGroup {
  alignas(kCacheLineBytes) std::uint8_t rows[kGroupJets][kNozzleRows][kStripBytes];
  std::uint8_t occupancy[kGroupJets];
};

struct Kernel {
  const char* name;
  // Deinterleaves `vectors` x 16 x phases bytes of a line, whole groups, into one run of `vectors`
  // x 16 bytes for each phase, runsApart bytes apart. phases: 3, 4, 6 or 8. Returns which phases
  // have ink: bit p = phase p.
  unsigned (*deinterleave)(std::uint32_t phases, const std::uint8_t* line, std::size_t vectors,
                           std::uint8_t* runs, std::size_t runsApart);
  // Aligns the runs of eight nozzles into one nozzle row of their jets, 2 x kJetBytes apart: byte i
  // of a row is the eight bits from bit `shift` (0, 2, 4, 6) of run byte i on. Reads
  // kStripReadBytes of each run; a null run is left out. add: adds to what is there instead of
  // replacing it.
  void (*align)(const std::uint8_t* const (&runs)[kGroupNozzles], unsigned shift,
                std::uint8_t* rows, bool add);
  // Packs `columns` columns of a group, from byte firstByte of its rows on, into those of
  // PrintOutBuf, columnStep bytes apart. `out` is the group's first byte of plane 0 in the first
  // column; 2 x nozzles (nozzles: 8 or 4) bytes of either plane are written.
  void (*pack)(const JetGroup& jets, std::uint32_t firstByte, std::uint32_t nozzles,
               std::uint32_t columns, std::uint8_t* out, std::ptrdiff_t columnStep);
  // Copies into memory that is not read again soon, past the caches where that is possible.
  void (*stream)(std::uint8_t* to, const std::uint8_t* from, std::size_t bytes);
};

// The kernels that every machine of this build can run; best first, plain last.
std::span<const Kernel* const> Kernels();

// The one in use: the best, unless a test or a measurement has chosen.
const Kernel& TheKernel();
void UseKernel(const Kernel& kernel);

}  // namespace qrn

#endif  // QRN_RASTER_KERNELS_H_
