#include "print_page/page_printer.h"

#include <algorithm>
#include <sstream>

#include "print_page/host_job.h"
#include "print_page/job_log_check.h"
#include "print_page/picture_file.h"
#include "print_page/stopwatch.h"
#include "sim/paper/picture.h"
#include "sim/proof/compare.h"

namespace qrn::tool {
namespace {

constexpr double kSolidLevel = 3;

sim::PrinterStats Difference(const sim::PrinterStats& after, const sim::PrinterStats& before) {
  sim::PrinterStats stats;
  stats.bytesReceived = after.bytesReceived - before.bytesReceived;
  stats.bytesSent = after.bytesSent - before.bytesSent;
  stats.swaths = after.swaths - before.swaths;
  stats.feedOnlySwaths = after.feedOnlySwaths - before.feedOnlySwaths;
  stats.inkLaid = after.inkLaid - before.inkLaid;
  stats.jobsCreated = after.jobsCreated - before.jobsCreated;
  stats.jobsEnded = after.jobsEnded - before.jobsEnded;
  return stats;
}

std::string InOneLine(const std::string& text) {
  std::istringstream words(text);
  std::string line;
  for (std::string word; words >> word;) line += (line.empty() ? "" : " ") + word;
  return line;
}

sim::SessionOptions SessionOptionsOf(const Options& options) {
  sim::SessionOptions session;
  session.virtualTime = options.virtualTime;
  session.seed = options.seed;
  session.onBox = [](const std::string& text) { Complain("message: " + InOneLine(text)); };
  return session;
}

}  // namespace

PagePrinter::PagePrinter(const Options& options, const sim::Machine& machine)
    : options_(options),
      machine_(machine),
      printer_(machine, options.quirks),
      session_(printer_, SessionOptionsOf(options)) {}

PageReport PagePrinter::Print(const RasterPage& raster, std::uint32_t pageNo, Progress& progress) {
  const SlotPage page(raster, options_.slots);
  PageReport report;
  report.page = pageNo;
  report.resolution = options_.resolution;
  report.widthPixels = page.LineBytes() * 4;
  report.lines = page.Lines();
  Stopwatch watch;
  const JobLogCheck log(options_.logFolder);
  HandOver(raster, page, progress, &report);
  report.logProblem = log.Problem();
  if (!report.logProblem.empty()) Complain(report.logProblem);
  report.printSeconds = watch.Lap();
  report.violation = printer_.Violation();
  const bool anyPaper = report.stats.swaths != 0 || report.completed;
  if (anyPaper) LookAtPaper(raster, page, &report);
  report.proofSeconds = watch.Lap();
  return report;
}

std::string PagePrinter::Hindrance() const {
  const sim::PrinterStats stats = printer_.Stats();
  if (!stats.open) return stats.jobsCreated == jobsBefore_ ? "connecting" : "reconnecting";
  return stats.paused ? "paused" : "";
}

void PagePrinter::HandOver(const RasterPage& raster, const SlotPage& page, Progress& progress,
                           PageReport* report) {
  const sim::PrinterStats before = printer_.Stats();
  jobsBefore_ = before.jobsCreated;
  progress.BeginPrinting(page.Lines());
  const HandedOver handedOver =
      PrintPage({options_.resolution, options_.lineApi,
                 [&progress](std::uint32_t lines) { progress.Printed(lines); }},
                page);
  progress.Hide();
  report->stats = Difference(printer_.Stats(), before);
  report->completed = handedOver.started && report->stats.jobsEnded == 1;
  if (report->stats.jobsCreated != 0)
    report->linesPrinted = std::min(handedOver.lines, raster.linesRead);
  if (!report->completed) report->cause = CauseOf(report->stats);
}

void PagePrinter::LookAtPaper(const RasterPage& raster, const SlotPage& page, PageReport* report) {
  MeasureInk(raster, page, report);
  report->verified = options_.verify;
  if (options_.verify) {
    report->comparison = sim::Compare(page, printer_.CurrentPaper(), machine_, options_.resolution);
  }
  if (!options_.picture.empty()) MakePicture(page, report);
}

std::string PagePrinter::CauseOf(const sim::PrinterStats& stats) const {
  std::string cause = printer_.Trouble();
  if (cause.empty()) {
    cause = stats.jobsCreated == 0 ? "the printer was sent no job"
                                   : "the printer was not told of the job's end";
  }
  return cause + (options_.logFolder.empty() ? "; --log-dir keeps the driver's log"
                                             : "; see the log in " + options_.logFolder);
}

void PagePrinter::MeasureInk(const RasterPage& raster, const SlotPage& page,
                             PageReport* report) const {
  const double solid = kSolidLevel * raster.width * raster.lines;
  for (std::size_t slot = 0; slot < report->ink.size(); ++slot) {
    const int index = static_cast<int>(slot);
    if (page.IsFed(index))
      report->ink[slot] = static_cast<double>(printer_.CurrentPaper().InkOf(index)) / solid;
  }
}

void PagePrinter::MakePicture(const SlotPage& page, PageReport* report) const {
  sim::PictureOptions picture = PictureOf(options_, machine_, page.Lines(), page.LineBytes() * 4);
  picture.reverseShift = report->comparison.reverseShift;
  picture.lineOrigin = report->comparison.lineOrigin;
  const std::string name = PictureName(options_.picture, report->page);
  report->pictureError = SavePicture(printer_.CurrentPaper(), picture, name);
  if (!report->pictureError.empty())
    Complain("cannot write picture '" + name + "': " + report->pictureError);
}

}  // namespace qrn::tool
