// What print-page tells: a progress bar on a terminal, and a summary at the end of each page.
#ifndef QRN_TOOLS_PRINT_PAGE_SUMMARY_H_
#define QRN_TOOLS_PRINT_PAGE_SUMMARY_H_

#include <array>
#include <cstdint>
#include <string>

#include "sim/compare.h"
#include "sim/virtual_printer.h"

namespace qrn::tool {

struct PageReport {
  std::uint32_t resolution = 0, widthPixels = 0, lines = 0;
  std::uint32_t linesPrinted = 0;  // read and taken by the driver; 0 when the job did not start
  sim::PrinterStats stats;         // of this page alone
  // Ink on the paper by slot, as a share of a page full of it; below 0 for slots that are blank.
  std::array<double, sim::kInks> ink{-1, -1, -1, -1, -1, -1, -1, -1};
  double wallSeconds = 0, cpuSeconds = 0;
  bool completed = false;    // the printer answered the job's end
  std::string cause;         // why it did not, and where to look further
  std::string violation;     // of framing or protocol; "" = none
  std::string pictureError;  // why the picture could not be written; "" = written, or none asked
  std::string logProblem;    // of the driver's log, where one was asked for; "" = none
  bool verified = false;
  sim::Comparison comparison;  // when verified
};

// All that was asked of the page came true.
bool Succeeded(const PageReport& report);
// Several lines of text.
std::string SummaryOf(const PageReport& report);

// Redraws one line on the terminal; does nothing when standard error is not one.
class ProgressBar {
 public:
  explicit ProgressBar(std::uint32_t lines);
  ~ProgressBar();
  void Show(std::uint32_t lines, const sim::PrinterStats& stats);

 private:
  std::uint32_t lines_;
  bool terminal_;
};

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_SUMMARY_H_
