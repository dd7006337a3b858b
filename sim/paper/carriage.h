// The carriage and the paper feed: lays the dots of a swath where the machine's nozzles are. It
// knows the machine and the resolution, and of each pass only the swath header and the columns. A
// dot for a head that is not in use is not laid; it is counted.
#ifndef QRN_SIM_PAPER_CARRIAGE_H_
#define QRN_SIM_PAPER_CARRIAGE_H_

#include <array>
#include <cstdint>
#include <vector>

#include "sim/machine/machine.h"
#include "sim/paper/paper.h"

namespace qrn::sim {

// What the carriage reads of a swath header.
struct PassCommand {
  int direction = 0;
  std::uint16_t startPos = 0;   // 1/150 inch
  std::uint32_t feedSteps = 0;  // after the pass
};

// Index of a resolution in the machine's tables; -1 when it is none of the four.
int ResolutionIndexOf(std::uint32_t resolution);
// Dots at the resolution from one column of the carriage's grid to the next: 3, 4, 6 or 8.
std::uint32_t BasePassCountOf(std::uint32_t resolution);
constexpr std::uint32_t kOneHeadColumnPixels = 3;
// Pixels of a line that make up an output column: as many with two heads, always these with one.
std::uint32_t ColumnPixelsOf(const Machine& machine, std::uint32_t resolution);

class Carriage {
 public:
  // Requires: one of the four resolutions.
  Carriage(const Machine& machine, std::uint32_t resolution);

  // Lays the columns (720 bytes each, a cut last one allowed), then feeds. Returns the ink laid, in
  // drop levels.
  std::uint64_t PrintPass(const PassCommand& pass, const std::vector<std::uint8_t>& columns,
                          Paper& paper);
  // Bytes with dots for a head that is not in use, so far.
  std::uint64_t StrayBytes() const { return strayBytes_; }

 private:
  struct NozzleRow {
    int color = 0;
    std::int32_t column = 0;  // by which a dot lands left of the grid column it is fired at
    std::int32_t line = 0;    // of nozzle 0, below the origin of the pass
  };

  void MountBoth(const Machine& machine, std::size_t index, double columnsPerInch);
  void MountOne(const Machine& machine, std::size_t index, double columnsPerInch);
  std::uint64_t PrintHead(std::size_t head, std::int32_t gridStart, int direction,
                          const std::vector<std::uint8_t>& columns, Paper& paper);

  std::uint32_t resolution_, passCount_;
  std::int64_t originPos_;  // start position of a pass at the print origin, 1/150 inch
  std::array<bool, 2> inUse_{true, true};
  std::array<std::array<NozzleRow, 8>, 2> rows_;
  std::uint64_t strayBytes_ = 0;
  std::uint64_t stepsFed_ = 0;
};

}  // namespace qrn::sim

#endif  // QRN_SIM_PAPER_CARRIAGE_H_
