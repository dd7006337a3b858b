// What the program makes of documents and pictures, from their bytes to the ink on paper.
#include <fnmatch.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "tools/program_fixture.h"

namespace qrn::tool {
namespace {

bool Matches(const char* text, const std::vector<const char*>& patterns) {
  return std::any_of(patterns.begin(), patterns.end(),
                     [text](const char* pattern) { return fnmatch(pattern, text, 0) == 0; });
}

// Numbered from 1; the first is the catalogue.
std::string PdfOf(const std::vector<std::string>& objects) {
  std::string pdf = "%PDF-1.6\n", table = "0000000000 65535 f \n";
  for (std::size_t i = 0; i < objects.size(); ++i) {
    char entry[24];
    std::snprintf(entry, sizeof entry, "%010zu 00000 n \n", pdf.size());
    table += entry;
    pdf += std::to_string(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
  }
  const std::string count = std::to_string(objects.size() + 1), at = std::to_string(pdf.size());
  return pdf + "xref\n0 " + count + "\n" + table + "trailer << /Size " + count +
         " /Root 1 0 R >>\nstartxref\n" + at + "\n%%EOF\n";
}

class Documents : public Program {
 protected:
  // Makes a picture with GraphicsMagick.
  void Convert(const std::string& arguments) {
    const std::string make = "cd '" + folder.Path("") + "' && gm convert -size 60x60 ";
    ASSERT_EQ(0, std::system((make + arguments).c_str()));
  }
};

TEST_F(Documents, ReadsEveryKindFromPipes) {
  Write("page.ras", Raster(Page()));
  Write("page.ps",
        "%!PS\n<< /PageSize [36 36] >> setpagedevice 0 0 moveto 36 36 lineto stroke showpage\n");
  Convert("plasma: page.png");
  Convert("plasma: page.pdf");
  for (const std::string page : {"page.ras", "page.ps", "page.png", "page.pdf"}) {
    for (const auto& [input, before] :
         {std::pair{"- <" + page, std::string()},
          {"/dev/stdin", "cat " + page + " |"},
          {"fifo", "rm -f fifo; mkfifo fifo; cat " + page + " >fifo & "}}) {
      Run(input, before);
      ExpectExit(0, "comparison   0 of ");
    }
  }
}

// As the system's calls show it: what opens or changes files outside of the private folders.
TEST_F(Documents, KeepsADocumentFromFilesThatAreNotItsOwn) {
  const std::string tracer = "strace -f -e trace=%file -o trace ";
  if (std::system((tracer + "true 2>/dev/null; x=$?; rm -f trace; exit $x").c_str()) != 0)
    GTEST_SKIP() << "no strace, or none that may trace";
  Write("victim", "1"), Write("tmp/victim", "1");
  std::string document =
      "%!PS\n/try { stopped { clear } if } def { (@victim) deletefile } try\n"
      "{ (@tmp/victim) deletefile } try { (@tmp/new) (w) file } try\n"
      "{ (/etc/passwd) (r) file } try { (%pipe%id) (r) file } try\n"
      "/NoSuchFont findfont 9 scalefont setfont 9 9 moveto (x) show showpage\n";
  for (std::size_t at = 0; (at = document.find('@')) != std::string::npos;)
    document.replace(at, 1, folder.Path(""));
  Write("nosy.ps", document);
  Run("nosy.ps", "HOME=/nowhere ASAN_OPTIONS=detect_leaks=0 " + tracer);
  ExpectExit(0, "comparison   0 of ");
  EXPECT_TRUE(fs::exists(folder.Path("victim")) && fs::exists(folder.Path("tmp/victim")));
  const std::string own = folder.Path("tmp/print-page-*"), input = folder.Path("nosy.ps");
  const std::vector<const char*> readable = {"/usr/*",
                                             "/lib*/*",
                                             "/proc/*",
                                             "/sys/*",
                                             "/etc/ld.so*",
                                             "/etc/localtime",
                                             "/etc/fonts/*",
                                             "/var/cache/fontconfig/*",
                                             "/var/lib/ghostscript/*",
                                             input.c_str()};
  std::istringstream trace(Contents(folder.Path("trace")));
  unsigned opened = 0;
  for (std::string line; std::getline(trace, line);) {
    char call[32] = "", path[1024] = "";  // 123 openat(AT_FDCWD, "/path", O_RDONLY) = 3
    if (std::sscanf(line.c_str(), "%*d %31[a-z0-9](%*[^\"]\"%1023[^\"]", call, path) != 2 &&
        std::sscanf(line.c_str(), "%*d %31[a-z0-9](\"%1023[^\"]", call, path) != 2)
      continue;
    const bool failed = line.find(" = -1") != std::string::npos;
    if (failed || path[0] != '/' || Matches(path, {own.c_str(), "/dev/null"})) continue;
    EXPECT_FALSE(Matches(call, {"unlink*", "rename*", "mkdir*", "rmdir", "chmod", "creat"}))
        << line;
    if (!Matches(call, {"open*"}) || line.find("O_DIRECTORY") != std::string::npos) continue;
    ++opened;
    EXPECT_TRUE(Matches(path, readable)) << line;
    EXPECT_FALSE(Matches(line.c_str(), {"*O_WRONLY*", "*O_RDWR*", "*O_CREAT*"})) << line;
  }
  EXPECT_LT(10u, opened);
}

TEST_F(Documents, NamesALockAndAPlaceThatIsNotThere) {
  const std::string lock = "cd '" + folder.Path("") +
                           "' && gs -q -dBATCH -dNOPAUSE -sDEVICE=pdfwrite "
                           "-sOwnerPassword=o -sUserPassword=u -sOutputFile=locked.pdf -c showpage";
  ASSERT_EQ(0, std::system(lock.c_str()));
  Run("locked.pdf");
  ExpectExit(1, "locked.pdf': is protected by a password\n");
  Run("locked.pdf", "export TMPDIR=\"$here/none\";");
  ExpectExit(1, "the temporary folder '" + folder.Path("none") + "': No such file or directory\n");
}

// Every ink takes each of 21 steps on one of 21 pages, each ink in another order.
TEST_F(Documents, PrintsTintsOnPaperAsTheDocumentAsksForThem) {
  Write("ramp.ps",
        "%!PS\n<< /PageSize [36 36] >> setpagedevice /tint { 21 mod 20 div } def\n"
        "0 1 20 { dup tint exch dup 4 mul tint exch dup 8 mul tint exch 13 mul tint setcmykcolor\n"
        "  0 0 36 36 rectfill showpage } for\n");
  Run("ramp.ps");
  ExpectExit(0, "comparison   0 of ");
  const auto pages = InkOnPaper();
  ASSERT_EQ(21u, pages.size());
  for (unsigned page = 0; page < 21; ++page) {
    const std::array<unsigned, 4> steps = {page, page * 4 % 21, page * 8 % 21, page * 13 % 21};
    for (std::size_t ink = 0; ink < 4; ++ink)
      EXPECT_NEAR(steps[ink] * 5.0, pages[page][ink], 1) << "page " << page << ", ink " << ink;
  }
}

TEST_F(Documents, PrintsGreyWithBlackInkAlone) {
  Write("grey.ps",
        "%!PS\n<< /PageSize [36 36] >> setpagedevice /fill { 0 0 36 36 rectfill showpage } def\n"
        "0.5 setgray fill  0 0 0 setrgbcolor fill  0.5 0.5 0.5 setrgbcolor fill  0.2 dup dup "
        "setrgbcolor\n"
        "/Helvetica findfont 30 scalefont setfont 5 5 moveto (x) show  0 0 moveto 36 36 lineto "
        "stroke\n"
        "showpage /box { 36 36 scale 2 2 } def\n"
        "gsave box 8 [2 0 0 2 0 0] {<10808080>} image showpage grestore\n"
        "gsave box 1 [2 0 0 2 0 0] {<4080>} image showpage grestore\n"
        "gsave box true [2 0 0 2 0 0] {<4080>} imagemask showpage grestore\n"
        "gsave box 8 [2 0 0 2 0 0] {<101010808080>} false 3 colorimage showpage grestore\n");
  Convert("plasma: -colorspace gray grey.png");
  Convert("grey.png -type truecolor grey.tif");
  Convert("grey.png -type truecolor scan.pdf");
  Convert("plasma: -monochrome -compress group4 fax.tif");
  for (const char* input : {"grey.ps", "grey.png", "grey.tif", "scan.pdf", "fax.tif"}) {
    Run(input);
    ExpectExit(0, "comparison   0 of ");
    for (const auto& ink : InkOnPaper()) {
      EXPECT_EQ(0, ink[0] + ink[1] + ink[2]) << input;
      EXPECT_LT(5, ink[3]) << input;
    }
  }
}

// Half of the pages blend in RGB. Black covers their right halves.
TEST_F(Documents, KeepsColoursAsTheyAreWhereGreyTurnsBlack) {
  const std::string blue = "0 0 0 rg 18 0 18 36 re f /T gs 0 0 1 rg 0 0 18 36 re f";
  const std::string page =
      "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 36 36] /Contents 3 0 R /Group << /S "
      "/Transparency /CS /DeviceRGB >> /Resources << /ExtGState << /T << /ca ";
  Write("blue.pdf",
        PdfOf({"<< /Type /Catalog /Pages 2 0 R >>",
               "<< /Type /Pages /Count 4 /Kids [4 0 R 5 0 R 6 0 R 7 0 R] >>",
               "<< /Length " + std::to_string(blue.size()) + " >>\nstream\n" + blue + "\nendstream",
               page + "1 >> >> >> >>", page + "0.99 >> >> >> >>", page + "1 >> >> >> >>",
               page + "0.99 >> >> >> >>"}));
  Convert("plasma: -colorspace gray grey.png");
  Convert("grey.png xc:blue two.tif");
  Run("blue.pdf");
  ExpectExit(0, "page         4 of 4, blue.pdf\n");
  for (const auto& ink : InkOnPaper()) {
    EXPECT_NEAR(44, ink[0], 1);
    EXPECT_NEAR(38.5, ink[1], 1);
    EXPECT_NEAR(0, ink[2], 0.1);
    EXPECT_NEAR(50, ink[3], 0.1);
  }
  Run("two.tif");
  ExpectExit(0, "comparison   0 of ");
  const auto ink = InkOnPaper();
  ASSERT_EQ(2u, ink.size());
  EXPECT_EQ(0, ink[0][0]);
  EXPECT_NEAR(88, ink[1][0], 1);
}

TEST_F(Documents, RefusesADamagedPictureInsteadOfPrintingItsRest) {
  Convert("plasma: p.jpg");
  Run("p.jpg --no-verify");
  ExpectExit(0, "not compared");
  const std::string picture = Contents(folder.Path("p.jpg"));
  Write("half.jpg", picture.substr(0, picture.size() / 2));
  Run("half.jpg");
  ExpectExit(1, "half.jpg': gm convert: Premature end of JPEG file\n");
  EXPECT_EQ("", out);
}

}  // namespace
}  // namespace qrn::tool
