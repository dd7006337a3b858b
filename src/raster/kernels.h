// The three inner steps of the conversion, once for each instruction set. Kernels take pointers and
// counts, not the job; all give the same bytes. Host's thread.
//
//   line, as the host gives it    pixels 0 1 2 3 | 4 5 6 7 | ...   the first in the highest bits
//        |
//        | sort, as the line comes in (job/row_layout.h)
//        v
//   run of a phase                columns 3 2 1 0 | 7 6 5 4 | ...  the first in the lowest bits
//        |
//        | align: shifts each run by the column offset of its nozzle row
//        v
//   rows of 16 jets x 8 nozzle rows (a jet is one nozzle of one head); a byte is four columns of
//   two bits, plane 0 in the upper one
//        |
//        | lay: eight nozzle rows become a byte (8 x 8 bits turned), 16 jets a run of bytes in the
//        v column (16 x 16 bytes turned)
//   PrintOutBuf                   in every column 16 bytes of either plane
#ifndef QRN_RASTER_KERNELS_H_
#define QRN_RASTER_KERNELS_H_

#include <cstddef>
#include <cstdint>
#include <span>

namespace qrn {

constexpr std::uint32_t kCacheLineBytes = 64;               // of what is prefetched
constexpr std::uint32_t kVectorBytes = 16;                  // runs are whole multiples of this
constexpr std::uint32_t kGroupNozzles = 8;                  // of each head, that are laid together
constexpr std::uint32_t kGroupJets = 2 * kGroupNozzles;     // 2 x nozzle + head
constexpr std::uint32_t kJetRows = 8;                       // nozzle rows of a head
constexpr std::uint32_t kStripBytes = 256;                  // of a run, that are aligned together
constexpr std::uint32_t kStripReadBytes = kStripBytes + 1;  // what a shift reads for them
constexpr std::uint32_t kJetBytes = kJetRows * kStripBytes;

// A strip of columns of the jets of one nozzle group. ink tells of each jet which nozzle rows have
// dots: bit s = row s; rows without are zeros.
struct JetRows {
  alignas(64) std::uint8_t rows[kGroupJets][kJetRows][kStripBytes];
  std::uint8_t ink[kGroupJets];
};

struct Kernel {
  const char* name;
  // Sorts `vectors` x 16 x phases bytes of a line, whole groups, into one run of `vectors` x 16
  // bytes for each phase, runsApart bytes apart. phases: 3, 4, 6 or 8. Returns which phases have
  // ink: bit p = phase p.
  unsigned (*sort)(std::uint32_t phases, const std::uint8_t* line, std::size_t vectors,
                   std::uint8_t* runs, std::size_t runsApart);
  // Runs of eight nozzles into one nozzle row of their jets, 2 x kJetBytes apart: byte i of a row
  // is the eight bits from bit `shift` (0, 2, 4, 6) of run byte i on. Reads kStripReadBytes of each
  // run; a null run is left out. add: over what is there instead of in its place.
  void (*align)(const std::uint8_t* const (&runs)[kGroupNozzles], unsigned shift,
                std::uint8_t* rows, bool add);
  // Turns `columns` columns of a group, from byte firstByte of its rows on, into those of
  // PrintOutBuf, columnStep bytes apart. `out` is the group's first byte of plane 0 in the first
  // column; 2 x nozzles (8 or 4) bytes of either plane are written.
  void (*lay)(const JetRows& jets, std::uint32_t firstByte, std::uint32_t nozzles,
              std::uint32_t columns, std::uint8_t* out, std::ptrdiff_t columnStep);
  // Copies into memory that is not read again soon, past the caches where that is possible.
  void (*stream)(std::uint8_t* to, const std::uint8_t* from, std::size_t bytes);
};

// What every machine runs that this build is for; best first, plain last.
std::span<const Kernel* const> Kernels();

// The one in use: the best, unless a test or a measurement has chosen.
const Kernel& TheKernel();
void UseKernel(const Kernel& kernel);

}  // namespace qrn

#endif  // QRN_RASTER_KERNELS_H_
