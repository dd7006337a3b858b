// print-page: prints real pages on the virtual printer and proves what came out.
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <memory>
#include <string>

#include "print_page/console.h"
#include "print_page/input.h"
#include "print_page/leftovers.h"
#include "print_page/log_drive.h"
#include "print_page/options.h"
#include "print_page/page_printer.h"
#include "print_page/page_terms.h"
#include "print_page/picture_file.h"
#include "print_page/settings.h"
#include "print_page/stopwatch.h"
#include "print_page/summary.h"

namespace qrn::tool {
namespace {

int Fail(const std::string& reason) {
  Complain(reason);
  return 1;
}

struct OutputError {
  int number;  // as errno has it
};

// Throws OutputError when standard output takes no more.
void Tell(const std::string& text) {
  if (std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0) throw OutputError{errno};
}

std::string NameOf(const Options& options) {
  if (options.input == "-") return InputName(options.input);
  return std::filesystem::path(options.input).filename().string();
}

// The pages of one input, one after the other.
class Run {
 public:
  Run(const Options& options, const sim::Machine& machine)
      : options_(options),
        machine_(machine),
        printer_(options, machine),
        progress_([this] { return printer_.Hindrance(); }) {}

  int Print() {
    BeginPage("reading");
    std::string error;
    input_ = Input::Open(options_.input, TermsOf(options_, machine_), &error);
    if (input_ == nullptr) return Fail(error);
    const LogDrive logDrive(options_.logFolder);
    bool more = true, failed = false;
    while (more && !failed) failed = !PrintPage(&more);
    Tell(TotalOf(printed_, succeeded_, total_.Lap()));
    return failed || succeeded_ != printed_ ? 1 : 0;
  }

 private:
  const char* Doing() const { return input_->IsRendered() ? "rendering" : "reading"; }

  void BeginPage(const std::string& doing) {
    progress_.BeginReading(printed_ + 1, input_ != nullptr ? input_->Pages() : 0, doing);
  }

  // False, with the reason reported, when the input is not printed to its end.
  bool PrintPage(bool* more) {
    if (input_->Pages() == 0 || printed_ < input_->Pages()) BeginPage(Doing());
    std::string error;
    const ReadResult result = input_->NextPage(&page_, &error);
    if (result == ReadResult::kEnd) {
      *more = false;
      if (printed_ == 0) Complain(InputName(options_.input) + ": holds no page");
      return printed_ != 0;
    }
    const bool readable = result == ReadResult::kPage || result == ReadResult::kTruncated;
    const std::string problem = readable ? InkProblem(options_, machine_, page_) : "";
    if (!problem.empty()) {
      error = InputName(options_.input) + ": page " + std::to_string(printed_ + 1) + ": " + problem;
    } else if (readable) {
      Report();
    }
    if (!error.empty()) Complain(error);
    return error.empty();
  }

  void Report() {
    const double readSeconds = pageWatch_.Lap();
    PageReport report = printer_.Print(page_, printed_ + 1, progress_);
    report.input = NameOf(options_);
    report.pages = input_->Pages();
    report.rendered = input_->IsRendered();
    report.readSeconds = readSeconds;
    pageWatch_.Lap();
    ++printed_;
    succeeded_ += Succeeded(report) ? 1 : 0;
    Tell(SummaryOf(report));
  }

  const Options& options_;
  const sim::Machine& machine_;
  Stopwatch total_, pageWatch_;
  PagePrinter printer_;
  Progress progress_;
  std::unique_ptr<Input> input_;
  RasterPage page_;
  std::uint32_t printed_ = 0, succeeded_ = 0;
};

int PrintAll(const Options& options) {
  sim::Machine machine;
  std::string error;
  if (!options.settingsFile.empty() && !LoadSettings(options.settingsFile, &machine, &error))
    return Fail(error);
  error = PictureProblem(options.picture);
  if (!error.empty()) return Fail(error);
  return Run(options, machine).Print();
}

int PrintAndCleanUp(const Options& options) {
  CleanUpAtAnyEnd();
  try {
    return PrintAll(options);
  } catch (const OutputError& error) {
    if (error.number == EPIPE) EndOnBrokenPipe();
    return Fail(std::string("cannot write to standard output: ") + std::strerror(error.number));
  } catch (const std::exception& error) {
    return Fail(error.what());
  }
}

}  // namespace
}  // namespace qrn::tool

int main(int argc, char** argv) {
  int exitCode = 0;
  const auto options = qrn::tool::ParseOptions(argc, argv, &exitCode);
  return options ? qrn::tool::PrintAndCleanUp(*options) : exitCode;
}
