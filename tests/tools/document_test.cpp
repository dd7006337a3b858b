// What the program does with documents and pictures, from their bytes to the ink on paper.
#include <regex>
#include <sstream>

#include "tools/program_fixture.h"

namespace qrn::tool {
namespace {

class Documents : public Program {
 protected:
  // Makes a picture with GraphicsMagick.
  void Convert(const std::string& arguments) const {
    ASSERT_EQ(0, Shell("gm convert -size 60x60 " + arguments));
  }
};

TEST_F(Documents, ReadsEveryKindFromPipes) {
  WritePage();
  Convert("plasma: page.png");
  Convert("plasma: page.pdf");
  for (const std::string page : {"page.ras", "grey.ps", "page.png", "page.pdf"}) {
    Expect(0, "print-page - <" + page, kAsAsked);
    Expect(0, "cat " + page + " | print-page /dev/stdin", kAsAsked);
    Expect(0, "rm -f fifo; mkfifo fifo; cat " + page + " >fifo & print-page fifo", kAsAsked);
  }
}

// As the system's calls show it: what opens or changes files outside of the private folders.
TEST_F(Documents, KeepsADocumentFromFilesThatAreNotItsOwn) {
  const std::string tracer = "strace -f -z -e trace=%file -o trace ";
  if (Shell(tracer + "true") != 0) GTEST_SKIP() << "no strace, or none that may trace";
  Write("victim", "1"), Write("tmp/victim", "1");
  ASSERT_EQ(0, Shell("sed -i \"s,@,$here/,\" nosy.ps"));
  Expect(
      0,
      "HOME=/nowhere ASAN_OPTIONS=detect_leaks=0 " + tracer + "\"$program\" nosy.ps --virtual-time",
      kAsAsked);
  EXPECT_TRUE(fs::exists(folder.Path("victim")) && fs::exists(folder.Path("tmp/victim")));
  // 123 openat(AT_FDCWD, "/path", O_RDONLY) = 3
  const std::regex call("\\d+ +([a-z0-9]+)\\([^\"]*\"(/[^\"]*)\"(.*)");
  const std::regex own(folder.Path("tmp/print-page-") + ".*|/dev/null");
  const std::regex changing("unlink.*|rename.*|mkdir.*|rmdir|chmod|creat");
  const std::regex readable(
      "(/usr|/lib[^/]*|/proc|/sys|/etc/fonts|/var/cache/fontconfig"
      "|/var/lib/ghostscript)/.*|/etc/ld\\.so.*|/etc/localtime|" +
      folder.Path("nosy.ps"));
  std::istringstream trace(Contents(folder.Path("trace")));
  unsigned opened = 0;
  for (std::string line; std::getline(trace, line);) {
    std::smatch parts;
    if (!std::regex_match(line, parts, call) || std::regex_match(parts.str(2), own)) continue;
    EXPECT_FALSE(std::regex_match(parts.str(1), changing)) << line;
    if (parts.str(1).rfind("open", 0) != 0 || Count(line, "O_DIRECTORY") != 0) continue;
    ++opened;
    EXPECT_TRUE(std::regex_match(parts.str(2), readable)) << line;
    EXPECT_EQ(0u, Count(line, "O_WRONLY") + Count(line, "O_RDWR") + Count(line, "O_CREAT")) << line;
  }
  EXPECT_LT(10u, opened);
}

TEST_F(Documents, PrintsTintsOnPaperAsTheDocumentAsksForThem) {
  const std::string misled = "mkdir lib; echo nosuchname >lib/gs_init.ps; GS_LIB=\"$here/lib\" ";
  Expect(0, misled + "print-page ramp.ps", kAsAsked);
  const auto pages = InkOnPaper();
  ASSERT_EQ(21u, pages.size());
  for (unsigned page = 0; page < 21; ++page) {
    const std::array<unsigned, 4> steps = {page, page * 4 % 21, page * 8 % 21, page * 13 % 21};
    for (std::size_t ink = 0; ink < 4; ++ink)
      EXPECT_NEAR(steps[ink] * 5.0, pages[page][ink], 1) << "page " << page << ", ink " << ink;
  }
}

TEST_F(Documents, PrintsGreyWithBlackInkAlone) {
  Convert("plasma: -colorspace gray grey.png");
  Convert("grey.png -type truecolor grey.tif");
  Convert("grey.png -type truecolor scan.pdf");
  Convert("plasma: -monochrome -compress group4 fax.tif");
  for (const char* input : {"grey.ps", "grey.png", "grey.tif", "scan.pdf", "fax.tif"}) {
    Expect(0, std::string("print-page ") + input, kAsAsked);
    for (const auto& ink : InkOnPaper()) {
      EXPECT_EQ(0, ink[0] + ink[1] + ink[2]) << input;
      EXPECT_LT(5, ink[3]) << input;
    }
  }
}

TEST_F(Documents, KeepsColoursAsTheyAreWhereGreyTurnsBlack) {
  Expect(0, "print-page blue.pdf", "page         4 of 4, blue.pdf\n");
  for (const auto& ink : InkOnPaper()) {
    EXPECT_NEAR(44, ink[0], 1);
    EXPECT_NEAR(38.5, ink[1], 1);
    EXPECT_NEAR(0, ink[2], 0.1);
    EXPECT_NEAR(50, ink[3], 0.1);
  }
  Convert("plasma: -colorspace gray grey.png");
  Convert("grey.png xc:blue two.tif");
  Expect(0, "print-page two.tif", kAsAsked);
  const auto ink = InkOnPaper();
  ASSERT_EQ(2u, ink.size());
  EXPECT_EQ(0, ink[0][0]);
  EXPECT_NEAR(88, ink[1][0], 1);
}

}  // namespace
}  // namespace qrn::tool
