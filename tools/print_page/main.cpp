// print-page: prints real pages on the virtual printer and proves what came out.
#include <chrono>
#include <cstdio>
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
      const bool started =
          PrintPage({options_.resolution, options_.lineApi,
                     [&](std::uint32_t lines) { bar.Show(lines, printer_.Stats()); }},
                    page);
      report.stats = Difference(printer_.Stats(), before);
      report.completed = started && report.stats.jobsEnded == 1;
    }
    report.wallSeconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - wallStart).count();
    report.cpuSeconds = static_cast<double>(std::clock() - cpuStart) / CLOCKS_PER_SEC;
    report.violation = printer_.Violation();
    Judge(page, &report);
    std::fputs(SummaryOf(report).c_str(), stdout);
    return Succeeded(report);
  }

 private:
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
          sim::Compare(page, printer_.CurrentPaper(), machine_, printer_.BasePassCount());
    }
    if (options_.picture.empty()) return;
    sim::PictureOptions picture;
    picture.reverseShift = report->comparison.reverseShift;
    picture.lineOrigin = report->comparison.lineOrigin;
    picture.lines = options_.verify ? page.Lines() : 0;
    picture.columns = options_.verify ? page.LineBytes() * 4 / printer_.BasePassCount() : 0;
    picture.columnsPerInch = options_.resolution / printer_.BasePassCount();
    picture.inkMax = printer_.BasePassCount() * 3;
    std::string error;
    if (!sim::WritePng(printer_.CurrentPaper(), picture, PictureName(options_.picture, pageNo_),
                       &error)) {
      report->completed = false;
      Fail(error);
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
  const std::unique_ptr<Input> input = Input::Open(options.input, options.resolution, &error);
  if (input == nullptr) return Fail(error);
  const LogDrive logDrive(options.logFolder);
  Run run(options, machine);
  bool succeeded = true;
  RasterPage page;
  for (int pages = 0;; ++pages) {
    switch (input->NextPage(&page, &error)) {
      case ReadResult::kPage:
        succeeded &= run.Print(page);
        break;
      case ReadResult::kTruncated:
        (void)run.Print(page);
        return Fail(error);
      case ReadResult::kError:
        return Fail(error);
      case ReadResult::kEnd:
        if (pages == 0) return Fail("'" + options.input + "': holds no page");
        return succeeded ? 0 : 1;
    }
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
