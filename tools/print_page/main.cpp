// print-page: prints real pages on the virtual printer and proves what came out.
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <exception>
#include <filesystem>

#include "print_page/host_job.h"
#include "print_page/input.h"
#include "print_page/leftovers.h"
#include "print_page/options.h"
#include "print_page/settings.h"
#include "print_page/summary.h"
#include "print_page/temporary_folder.h"
#include "sim/carriage.h"
#include "sim/picture.h"
#include "sim/session.h"

namespace qrn::tool {
namespace {

namespace fs = std::filesystem;

int Fail(const std::string& reason) {
  std::fprintf(stderr, "print-page: %s\n", reason.c_str());
  return 1;
}

// The driver writes its log into "c:/p2debug" below the current folder, when that exists: a private
// folder stands in for the drive, with a link to where the user wants the logs.
class LogDrive {
 public:
  explicit LogDrive(const std::string& logFolder) : before_(fs::current_path()) {
    if (!logFolder.empty()) {
      fs::create_directories(logFolder);
      fs::create_directory(folder_.Path("c:"));
      fs::create_directory_symlink(logFolder, folder_.Path("c:/p2debug"));
    }
    fs::current_path(folder_.Path(""));
  }
  ~LogDrive() { fs::current_path(before_); }

 private:
  TemporaryFolder folder_;
  fs::path before_;
};

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

// "paper.png", then "paper-2.png" and so on.
std::string PictureName(const std::string& name, int pageNo) {
  if (pageNo == 1) return name;
  const fs::path path(name);
  return (path.parent_path() /
          (path.stem().string() + "-" + std::to_string(pageNo) + path.extension().string()))
      .string();
}

// Why no picture can come there, found before paper is spent on it; "" when it can.
std::string PictureProblem(const std::string& name) {
  if (name.empty()) return "";
  if (fs::is_directory(name)) return "'" + name + "': is a folder";
  const std::string folder = fs::path(name).parent_path().string();
  if (access(folder.c_str(), W_OK | X_OK) != 0) return "'" + folder + "': " + std::strerror(errno);
  return fs::is_directory(folder) ? "" : "'" + folder + "': is not a folder";
}

// Why this page cannot be printed as asked; "" when it can.
std::string PageProblem(const Options& options, const RasterPage& page, int pageNo) {
  const int missing = options.slotsNamed ? MissingPlane(page, options.slots) : kBlank;
  if (missing == kBlank) return "";
  return "'" + options.input + "': page " + std::to_string(pageNo) + " has no plane " +
         std::to_string(missing) + " for --slots";
}

class Run {
 public:
  Run(const Options& options, const sim::Machine& machine)
      : options_(options),
        machine_(machine),
        printer_(machine, options.quirks),
        session_(printer_, SessionOptionsOf(options)) {}

  // Prints one page and tells how it went.
  bool Print(const RasterPage& raster) {
    const SlotPage page(raster, options_.slots);
    ++pageNo_;
    PageReport report;
    report.resolution = options_.resolution;
    report.widthPixels = page.LineBytes() * 4;
    report.lines = page.Lines();
    const sim::PrinterStats before = printer_.Stats();
    const auto wallStart = std::chrono::steady_clock::now();
    const std::clock_t cpuStart = std::clock();
    {
      ProgressBar bar(page.Lines());
      const HandedOver handedOver =
          PrintPage({options_.resolution, options_.lineApi,
                     [&](std::uint32_t lines) { bar.Show(lines, printer_.Stats()); }},
                    page);
      report.stats = Difference(printer_.Stats(), before);
      report.completed = handedOver.started && report.stats.jobsEnded == 1;
      if (report.stats.jobsCreated != 0)
        report.linesPrinted = std::min(handedOver.lines, raster.linesRead);
    }
    if (!report.completed) report.cause = CauseOf(report.stats);
    report.wallSeconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - wallStart).count();
    report.cpuSeconds = static_cast<double>(std::clock() - cpuStart) / CLOCKS_PER_SEC;
    report.violation = printer_.Violation();
    Judge(page, &report);
    std::fputs(SummaryOf(report).c_str(), stdout);
    return Succeeded(report);
  }

 private:
  std::string CauseOf(const sim::PrinterStats& stats) const {
    std::string cause = printer_.Trouble();
    if (cause.empty()) {
      cause = stats.jobsCreated == 0 ? "the printer was sent no job"
                                     : "the printer was not told of the job's end";
    }
    return cause + (options_.logFolder.empty() ? "; --log-dir keeps the driver's log"
                                               : "; see the log in " + options_.logFolder);
  }

  static sim::SessionOptions SessionOptionsOf(const Options& options) {
    sim::SessionOptions session;
    session.virtualTime = options.virtualTime;
    session.seed = options.seed;
    session.onBox = [](const std::string& text) {
      std::fprintf(stderr, "print-page: message: %s\n", text.c_str());
    };
    return session;
  }

  void Judge(const SlotPage& page, PageReport* report) {
    if (report->stats.swaths == 0 && !report->completed) return;  // no job, no paper
    report->verified = options_.verify;
    if (options_.verify) {
      report->comparison =
          sim::Compare(page, printer_.CurrentPaper(), machine_, options_.resolution);
    }
    if (options_.picture.empty()) return;
    sim::PictureOptions picture;
    picture.reverseShift = report->comparison.reverseShift;
    picture.lineOrigin = report->comparison.lineOrigin;
    picture.lines = options_.verify ? page.Lines() : 0;
    const std::uint32_t columnPixels = sim::ColumnPixelsOf(machine_, options_.resolution);
    picture.columns = options_.verify ? page.LineBytes() * 4 / columnPixels : 0;
    picture.columnsPerInch = options_.resolution / sim::BasePassCountOf(options_.resolution);
    picture.inkMax = columnPixels * 3;
    if (!sim::WritePng(printer_.CurrentPaper(), picture, PictureName(options_.picture, pageNo_),
                       &report->pictureError)) {
      Fail(report->pictureError);
    }
  }

  const Options& options_;
  sim::Machine machine_;
  sim::VirtualPrinter printer_;
  sim::Session session_;
  int pageNo_ = 0;
};

int PrintAll(const Options& options) {
  sim::Machine machine;
  std::string error;
  if (!options.settingsFile.empty() && !LoadSettings(options.settingsFile, &machine, &error))
    return Fail(error);
  error = PictureProblem(options.picture);
  if (!error.empty()) return Fail(error);
  const std::unique_ptr<Input> input = Input::Open(options.input, options.resolution, &error);
  if (input == nullptr) return Fail(error);
  const LogDrive logDrive(options.logFolder);
  Run run(options, machine);
  bool succeeded = true;
  RasterPage page;
  for (int pages = 0;; ++pages) {
    const ReadResult result = input->NextPage(&page, &error);
    switch (result) {
      case ReadResult::kPage:
      case ReadResult::kTruncated:
        break;
      case ReadResult::kError:
        return Fail(error);
      case ReadResult::kEnd:
        if (pages == 0) return Fail("'" + options.input + "': holds no page");
        return succeeded ? 0 : 1;
    }
    const std::string problem = PageProblem(options, page, pages + 1);
    if (!problem.empty()) return Fail(problem);
    succeeded &= run.Print(page);
    if (result == ReadResult::kTruncated) return Fail(error);
  }
}

}  // namespace
}  // namespace qrn::tool

int main(int argc, char** argv) {
  int exitCode = 0;
  const auto options = qrn::tool::ParseOptions(argc, argv, &exitCode);
  if (!options) return exitCode;
  qrn::tool::CleanUpOnSignals();
  try {
    return qrn::tool::PrintAll(*options);
  } catch (const std::exception& error) {
    return qrn::tool::Fail(error.what());
  }
}
