#include "print_page/summary.h"

#include <cstdio>

#include "print_page/page.h"

namespace qrn::tool {
namespace {

constexpr double kMmPerInch = 25.4;
constexpr double kLinesPerInch = 360;

template <class... Values>
std::string Format(const char* format, Values... values) {
  char text[400];
  std::snprintf(text, sizeof text, format, values...);
  return text;
}

using Count = unsigned long long;

std::string LinesText(const PageReport& report) {
  const bool whole = report.completed && report.linesPrinted == report.lines;
  return whole ? Format("%u lines", report.lines)
               : Format("%u of %u lines handed over", report.linesPrinted, report.lines);
}

// "C 12.50 %, K 3.00 %"
std::string InkText(const PageReport& report) {
  std::string text;
  for (std::size_t slot = 0; slot < report.ink.size(); ++slot) {
    if (report.ink[slot] < 0) continue;
    text += Format(text.empty() ? "%s %.2f %%" : ", %s %.2f %%", SlotName(static_cast<int>(slot)),
                   100 * report.ink[slot]);
  }
  return text;
}

std::string Verdict(const PageReport& report) {
  if (!report.verified) return "not compared";
  if (report.comparison.cells == 0) return "nothing to compare, blank page";
  const sim::Comparison& found = report.comparison;
  std::string text =
      Format("%llu of %llu cells differ (line origin %d", static_cast<Count>(found.differingCells),
             static_cast<Count>(found.cells), found.lineOrigin);
  text += found.reverseFound ? Format(", reverse shift %d columns)", found.reverseShift)
                             : std::string(")");
  if (found.differingCells != 0) text += "\n             first: " + found.firstDifference;
  if (found.unreachedCells != 0) {
    text += Format("\n             %llu cells are out of this machine's reach",
                   static_cast<Count>(found.unreachedCells));
  }
  if (found.displacedCells != 0) {
    text += Format("\n             %llu cells lie one line too high",
                   static_cast<Count>(found.displacedCells));
  }
  const bool imperfect = found.differingCells + found.unreachedCells + found.displacedCells != 0;
  if (imperfect && !found.reason.empty()) text += "\n             reason: " + found.reason;
  return text;
}

}  // namespace

bool Succeeded(const PageReport& report) {
  const bool equal = !report.verified || report.comparison.differingCells == 0;
  return report.completed && report.violation.empty() && report.pictureError.empty() &&
         report.logProblem.empty() && equal;
}

std::string SummaryOf(const PageReport& report) {
  const sim::PrinterStats& stats = report.stats;
  std::string text = "page         " + std::to_string(report.page) +
                     (report.pages != 0 ? " of " + std::to_string(report.pages) : "") + ", " +
                     report.input + "\n";
  text += Format("paper        %.1f x %.1f mm, %u x %u pixels at %u x 360 dpi\n",
                 report.widthPixels * kMmPerInch / report.resolution,
                 report.lines * kMmPerInch / kLinesPerInch, report.widthPixels, report.lines,
                 report.resolution);
  text += "printed      " + LinesText(report) +
          Format(", %u passes with ink, %u swaths, %u of them feed only\n",
                 stats.swaths - stats.feedOnlySwaths, stats.swaths, stats.feedOnlySwaths);
  const std::string ink = InkText(report);
  if (!ink.empty()) text += "ink          " + ink + "\n";
  text += Format("wire         %llu bytes out, %llu bytes in\n",
                 static_cast<Count>(stats.bytesReceived), static_cast<Count>(stats.bytesSent));
  text +=
      Format("time         %.2f s: %.2f s %s, %.2f s printing, %.2f s checking\n",
             report.readSeconds + report.printSeconds + report.proofSeconds, report.readSeconds,
             report.rendered ? "rendering" : "reading", report.printSeconds, report.proofSeconds);
  text += "comparison   " + Verdict(report) + "\n";
  if (!report.completed) text += "job          not completed: " + report.cause + "\n";
  if (!report.pictureError.empty()) text += "picture      not written\n";
  if (!report.logProblem.empty()) text += "log          not whole\n";
  if (!report.violation.empty()) text += "violation    " + report.violation + "\n";
  return text;
}

std::string TotalOf(std::uint32_t pages, std::uint32_t succeeded, double seconds) {
  if (pages < 2) return "";
  return Format("total        %u pages, %u of them as asked, %.2f s\n", pages, succeeded, seconds);
}

}  // namespace qrn::tool
