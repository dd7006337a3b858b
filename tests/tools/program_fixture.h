// The program run by a shell on virtual time, in a private folder.
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

std::string Contents(const std::string& path);
std::size_t Count(const std::string& text, const std::string& part);

class Program : public testing::Test {
 protected:
  Program() { fs::create_directory(folder.Path("tmp")); }

  // Runs it after what the shell is told `before`; its own temporary files go to "tmp".
  void Run(const std::string& arguments, const std::string& before = "");
  void Write(const std::string& name, const std::string& bytes);
  // A page of 240 lines, which takes a few swaths.
  static std::string Raster(const RasterFormat& format) {
    return WriteRaster(format, NoiseFor(format, TestSeed()));
  }
  static RasterFormat Page(unsigned pages = 1) {
    RasterFormat format;
    format.width = 96, format.lines = 240, format.pages = pages;
    return format;
  }
  // Silent, or with as many lines of complaint as the code says.
  void ExpectExit(int code, const std::string& said) const;
  // What lies on the paper of each page, in percent of a full solid of C, M, Y, K.
  std::vector<std::array<double, 4>> InkOnPaper() const;

  const TemporaryFolder folder;
  int exitCode = -1;
  std::string out, err;
};

}  // namespace qrn::tool

#endif  // QRN_TESTS_TOOLS_PROGRAM_FIXTURE_H_
