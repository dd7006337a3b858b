// print-page: prints real pages on the virtual printer and proves what came out.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <string>

#include "print_page/input.h"
#include "print_page/leftovers.h"
#include "print_page/log_drive.h"
#include "print_page/options.h"
#include "print_page/page_printer.h"
#include "print_page/page_terms.h"
#include "print_page/picture_file.h"
#include "print_page/settings.h"
#include "print_page/summary.h"

namespace qrn::tool {
namespace {

int Fail(const std::string& reason) {
  std::fprintf(stderr, "print-page: %s\n", reason.c_str());
  return 1;
}

// False when standard output takes no more.
bool Tell(const std::string& text) {
  return std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
}

// How a run ended.
struct Outcome {
  int exitCode = 0;
  int outputError = 0;  // of standard output, as errno has it
};

Outcome PrintPages(const Options& options, const sim::Machine& machine, Input& input) {
  PagePrinter printer(options, machine);
  bool succeeded = true;
  RasterPage page;
  std::string error;
  for (int pages = 0;; ++pages) {
    const ReadResult result = input.NextPage(&page, &error);
    switch (result) {
      case ReadResult::kPage:
      case ReadResult::kTruncated:
        break;
      case ReadResult::kRefused:
      case ReadResult::kError:
        return {Fail(error)};
      case ReadResult::kEnd:
        if (pages == 0) return {Fail("'" + options.input + "': holds no page")};
        return {succeeded ? 0 : 1};
    }
    const std::string problem = InkProblem(options, machine, page);
    if (!problem.empty()) {
      return {Fail("'" + options.input + "': page " + std::to_string(pages + 1) + ": " + problem)};
    }
    const PageReport report = printer.Print(page);
    if (!Tell(SummaryOf(report))) return {1, errno};
    succeeded &= Succeeded(report);
    if (result == ReadResult::kTruncated) return {Fail(error)};
  }
}

Outcome PrintAll(const Options& options) {
  sim::Machine machine;
  std::string error;
  if (!options.settingsFile.empty() && !LoadSettings(options.settingsFile, &machine, &error))
    return {Fail(error)};
  error = PictureProblem(options.picture);
  if (!error.empty()) return {Fail(error)};
  const std::unique_ptr<Input> input =
      Input::Open(options.input, TermsOf(options, machine), &error);
  if (input == nullptr) return {Fail(error)};
  const LogDrive logDrive(options.logFolder);
  return PrintPages(options, machine, *input);
}

int Run(const Options& options) {
  CleanUpAtAnyEnd();
  try {
    const Outcome outcome = PrintAll(options);
    if (outcome.outputError == 0) return outcome.exitCode;
    if (outcome.outputError == EPIPE) EndOnBrokenPipe();
    return Fail(std::string("cannot write to standard output: ") +
                std::strerror(outcome.outputError));
  } catch (const std::exception& error) {
    return Fail(error.what());
  }
}

}  // namespace
}  // namespace qrn::tool

int main(int argc, char** argv) {
  int exitCode = 0;
  const auto options = qrn::tool::ParseOptions(argc, argv, &exitCode);
  return options ? qrn::tool::Run(*options) : exitCode;
}
