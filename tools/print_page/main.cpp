// print-page: prints real pages on the virtual printer and proves what came out.
#include <cstdio>
#include <exception>
#include <memory>

#include "print_page/input.h"
#include "print_page/leftovers.h"
#include "print_page/log_drive.h"
#include "print_page/options.h"
#include "print_page/page_printer.h"
#include "print_page/picture_file.h"
#include "print_page/settings.h"
#include "print_page/summary.h"

namespace qrn::tool {
namespace {

int Fail(const std::string& reason) {
  std::fprintf(stderr, "print-page: %s\n", reason.c_str());
  return 1;
}

// Why this page cannot be printed as asked; "" when it can.
std::string PageProblem(const Options& options, const RasterPage& page, int pageNo) {
  const int missing = options.slotsNamed ? MissingPlane(page, options.slots) : kBlank;
  if (missing == kBlank) return "";
  return "'" + options.input + "': page " + std::to_string(pageNo) + " has no plane " +
         std::to_string(missing) + " for --slots";
}

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
  PagePrinter printer(options, machine);
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
    const PageReport report = printer.Print(page);
    std::fputs(SummaryOf(report).c_str(), stdout);
    succeeded &= Succeeded(report);
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
