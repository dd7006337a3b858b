// What print-page reports: a summary at the end of each page, and one of them all.
#ifndef QRN_TOOLS_PRINT_PAGE_SUMMARY_H_
#define QRN_TOOLS_PRINT_PAGE_SUMMARY_H_

#include <array>
#include <cstdint>
#include <string>

#include "sim/proof/compare.h"
#include "sim/virtual_printer.h"

namespace qrn::tool {

struct PageReport {
  std::string input;                  // what the user named
  std::uint32_t page = 1, pages = 0;  // of the input; pages 0 = not known
  bool rendered = false;              // not read as a raster
  std::uint32_t resolution = 0, widthPixels = 0, lines = 0;
  std::uint32_t linesPrinted = 0;  // read and taken by the driver; 0 when the job did not start
  sim::PrinterStats stats;         // of this page alone
  // Ink on the paper by slot, as a share of a page full of it; below 0 for slots that are blank.
  std::array<double, sim::kInks> ink{-1, -1, -1, -1, -1, -1, -1, -1};
  // Until the page had come, the job itself, and what was found out about the paper.
  double readSeconds = 0, printSeconds = 0, proofSeconds = 0;
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

// A line on a run of several pages; "" on one.
std::string TotalOf(std::uint32_t pages, std::uint32_t succeeded, double seconds);

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_SUMMARY_H_
