// print-page as a shell runs it, on virtual time and in a private folder with the files of inputs/.
#ifndef QRN_TESTS_TOOLS_PROGRAM_FIXTURE_H_
#define QRN_TESTS_TOOLS_PROGRAM_FIXTURE_H_

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <string>
#include <vector>

#include "print_page/temporary_folder.h"
#include "support/test_seed.h"
#include "tools/raster_writer.h"

namespace qrn::tool {

namespace fs = std::filesystem;

constexpr const char* kAsAsked = "comparison   0 of ";

std::string Contents(const std::string& path);
std::size_t Count(const std::string& text, const std::string& part);

class Program : public testing::Test {
 protected:
  Program();

  // In the folder, which is $here; the program without --virtual-time is $program. The exit code.
  int Shell(const std::string& command) const;
  void Write(const std::string& name, const std::string& bytes) const;
  // A page of 240 lines, which takes a few swaths.
  static RasterFormat Page(unsigned pages = 1) {
    RasterFormat format;
    format.width = 96, format.lines = 240, format.pages = pages;
    return format;
  }
  static RasterFormat BlackPage(unsigned width, unsigned lines) {
    return {CUPS_CSPACE_K, 1, 2, CUPS_ORDER_CHUNKED, width, lines};
  }
  void WritePage(const std::string& name = "page.ras", const RasterFormat& format = Page()) const {
    Write(name, WriteRaster(format, TestSeed()));
  }

  // Keeps what the command says; temporary files of print-page go to "tmp".
  void Run(const std::string& command);
  // Silent except for what it says about the pages, or with as many lines of complaint as the code
  // says.
  void Expect(int code, const std::string& command, const std::string& said);
  // What is on the paper of each page, in percent of a full solid of C, M, Y, K.
  std::vector<std::array<double, 4>> InkOnPaper() const;

  const TemporaryFolder folder;
  int exitCode = -1;
  std::string out, err;
};

}  // namespace qrn::tool

#endif  // QRN_TESTS_TOOLS_PROGRAM_FIXTURE_H_
