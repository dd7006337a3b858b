// How a printer is built and how it is set. The virtual printer reports this in its parameter block
// and lays its dots accordingly.
#ifndef QRN_SIM_MACHINE_MACHINE_H_
#define QRN_SIM_MACHINE_MACHINE_H_

#include <array>
#include <cstdint>

namespace qrn::sim {

enum class Heads {
  kBoth,
  kPha,
  kPhb,
  kNone,  // the printer reports none in use; the columns then go to PHA
};

struct Machine {
  Heads heads = Heads::kBoth;
  bool twoHeadCarriage = true;
  bool mirroredHeads = false;  // head type 1: nozzle rows in the opposite order
  bool bidirectional = true;
  std::uint8_t fixedDir = 0;  // direction of every pass of a unidirectional machine
  // Ink of nozzle rows 0..7 of PHA, PHB and two further heads, of which the last counts when no
  // head is reported in use. PHA and PHB all zero on a two-head machine: the driver's default
  // order.
  std::array<std::array<std::uint8_t, 8>, 4> inkOrder{};
  // These three by resolution, 1080 to 2160 dpi.
  std::array<std::uint8_t, 4> headGapX{};                  // columns added to 140 mm
  std::array<std::uint8_t, 4> headGapY{};                  // lines by which PHB is below nominal
  std::array<std::uint8_t, 4> biDirShift{32, 32, 32, 32};  // "Db", 1/150 inch, 32 = none
  std::uint8_t featherPercent = 0;
  std::uint16_t margin = 0;     // side margin, 4/600 inch
  std::uint8_t flashEvery = 0;  // swaths between flashes; 0 = none
  std::uint16_t flashParam = 127;
  std::uint8_t speed = 10;
  std::uint32_t travel600 = 60000;  // carriage travel, 1/600 inch; 0 = the driver's 2150 mm
  // What the calibration says about the paper feed. The mechanism itself makes kStepsPerLine steps
  // a line of 1/360 inch.
  std::uint32_t feedBase = 72001;
  std::uint16_t feedCalib = 2540;
};

// Index of the inkOrder entry that a machine prints by when these heads are in use, not kBoth.
constexpr std::size_t FiringOrderOf(Heads heads) {
  return heads == Heads::kPhb ? 1 : heads == Heads::kNone ? 3 : 0;
}

constexpr std::uint32_t kStepsPerLine = 20;
constexpr std::uint32_t kHeadLines = 360;  // that a head spans

// Width of the widest image that the driver accepts for the machine, in whole millimetres: the
// travel of its carriage less the margins and what the carriage itself needs.
std::uint32_t PrintableMm(const Machine& machine);

}  // namespace qrn::sim

#endif  // QRN_SIM_MACHINE_MACHINE_H_
