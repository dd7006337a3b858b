// What a machine cannot print of a page, whatever a driver sends: a machine with one head in use
// prints with one nozzle row an ink, every other line of a pass, and not all lines come under a
// nozzle that prints whole. docs/one-head.md derives each case.
#ifndef QRN_SIM_PROOF_REACH_H_
#define QRN_SIM_PROOF_REACH_H_

#include <cstdint>
#include <string>
#include <vector>

#include "sim/machine/machine.h"
#include "sim/paper/carriage.h"

namespace qrn::sim {

// Colors that the machine has a nozzle row for, bit p for color p. With two heads in use these are
// all, or the driver refuses the machine.
unsigned PrintedColors(const Machine& machine);

struct LineReach {
  bool none = false;        // not at all
  bool above = false;       // laid on the line above
  unsigned partPhases = 0;  // bit q: of phase q only what feathered nozzles let through
};

class Reach {
 public:
  // Requires: one of the four resolutions.
  Reach(const Machine& machine, std::uint32_t resolution);

  // Pixel u of a line is printed in phase u mod 3.
  static constexpr std::uint32_t kPhases = kOneHeadColumnPixels;

  // Of an image line, from 0, and color 0..7.
  LineReach OfLine(int color, std::uint32_t line) const;
  // The cases that apply to this machine, for a person; "" when everything can be printed.
  const std::string& Reason() const { return reason_; }

 private:
  void FindMissingColors();
  void FindLines(const Machine& machine, std::uint32_t base);

  unsigned colors_ = 0;          // PrintedColors of the machine
  std::vector<LineReach> band_;  // repeats down the page; empty: everything is whole
  std::string reason_;
};

}  // namespace qrn::sim

#endif  // QRN_SIM_PROOF_REACH_H_
