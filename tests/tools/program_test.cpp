// The program itself, from the command line to its exit code.
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <thread>
#include <vector>

#include "print_page/temporary_folder.h"
#include "support/test_seed.h"
#include "tools/raster_writer.h"

namespace qrn::tool {
namespace {

namespace fs = std::filesystem;

std::string Contents(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

std::size_t Count(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1))
    ++count;
  return count;
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

class Program : public testing::Test {
 protected:
  Program() { fs::create_directory(folder.Path("tmp")); }

  // Runs it on virtual time in the private folder, after what the shell is told `before`; its own
  // temporary files go to "tmp" there.
  void Run(const std::string& arguments, const std::string& before = "") {
    const auto files = [this] {
      return std::distance(fs::directory_iterator(folder.Path("tmp")), {});
    };
    const auto filesBefore = files();
    const std::string command = "cd '" + folder.Path("") + "' && here=\"$PWD\" && " +
                                "export TMPDIR=\"$here/tmp\" && " + before +
                                " '" QRN_PRINT_PAGE "' " + arguments +
                                " --virtual-time >\"$here/out\" 2>\"$here/err\"";
    const int status = std::system(command.c_str());
    exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    out = Contents(folder.Path("out"));
    err = Contents(folder.Path("err"));
    EXPECT_EQ(filesBefore, files()) << "temporary files stay";
  }
  void Write(const std::string& name, const std::string& bytes) {
    std::ofstream(folder.Path(name), std::ios::binary) << bytes;
  }
  // A page of 240 lines, which takes a few swaths.
  static std::string Raster(const RasterFormat& format) {
    return WriteRaster(format, NoiseFor(format, TestSeed()));
  }
  static RasterFormat Page(unsigned pages = 1) {
    RasterFormat format;
    format.width = 96, format.lines = 240, format.pages = pages;
    return format;
  }
  void ExpectExit(int code, const std::string& said) {
    EXPECT_EQ(code, exitCode) << out << err;
    EXPECT_NE(std::string::npos, (code == 0 ? out : err).find(said)) << out << err;
    EXPECT_EQ(static_cast<std::size_t>(code), Count(err, "\n")) << err;  // silent, or one line
  }

  // Makes a picture with GraphicsMagick.
  void Convert(const std::string& arguments) {
    const std::string make = "cd '" + folder.Path("") + "' && gm convert -size 60x60 ";
    ASSERT_EQ(0, std::system((make + arguments).c_str()));
  }
  // What lies on the paper of each page, in percent of a full solid of C, M, Y, K.
  std::vector<std::array<double, 4>> InkOnPaper() const {
    std::vector<std::array<double, 4>> pages;
    for (std::size_t at = 0; (at = out.find("ink  ", at)) != std::string::npos; ++at) {
      auto& ink = pages.emplace_back();
      EXPECT_EQ(4, std::sscanf(out.c_str() + at, "ink C %lf %%, M %lf %%, Y %lf %%, K %lf %%",
                               &ink[0], &ink[1], &ink[2], &ink[3]));
    }
    return pages;
  }

  const TemporaryFolder folder;
  int exitCode = -1;
  std::string out, err;
};

TEST_F(Program, PrintsEveryPageAsAJobAndNamesThePictures) {
  Write("two.ras", Raster(Page(2)));
  Run("two.ras -o paper.png --dpi 360 --log-dir logs --api line");
  ExpectExit(0, "printed      240 lines, ");
  EXPECT_EQ(2u, Count(out, "printed      240 lines, "));
  EXPECT_EQ(2u, Count(out, "comparison   0 of "));
  EXPECT_EQ(1u, Count(out, "page         2, two.ras\n"));
  EXPECT_EQ(1u, Count(out, "total        2 pages, 2 of them as asked, "));
  const std::string size("\0\0\0\x18\0\0\0\xF0", 8);  // 24 x 240 pixels
  for (const char* name : {"paper.png", "paper-2.png"})
    EXPECT_EQ(size, Contents(folder.Path(name)).substr(16, 8)) << name;
  EXPECT_FALSE(fs::exists(folder.Path("paper-3.png")));
  EXPECT_EQ(2, std::distance(fs::directory_iterator(folder.Path("logs")), {}));
}

TEST_F(Program, ReadsEveryKindFromPipes) {
  Write("page.ras", Raster(Page()));
  Write("page.ps",
        "%!PS\n<< /PageSize [36 36] >> setpagedevice 0 0 moveto 36 36 lineto stroke showpage\n");
  Convert("plasma: page.png");
  Convert("plasma: page.pdf");
  for (const std::string page : {"page.ras", "page.ps", "page.png", "page.pdf"}) {
    for (const std::string& input : {"- <" + page, std::string("-"), std::string("/dev/stdin")}) {
      Run(input, input.size() > 1 && input[0] == '-' ? "" : "cat " + page + " |");
      ExpectExit(0, "comparison   0 of ");
    }
    Run("fifo", "rm -f fifo; mkfifo fifo; cat " + page + " >fifo & ");
    ExpectExit(0, "comparison   0 of ");
  }
}

// As the system's calls show it: what opens or changes files outside of the private folders.
TEST_F(Program, KeepsADocumentFromFilesThatAreNotItsOwn) {
  const std::string tracer = "strace -f -e trace=%file -o trace ";
  if (std::system((tracer + "true 2>/dev/null; x=$?; rm -f trace; exit $x").c_str()) != 0)
    GTEST_SKIP() << "no strace, or none that may trace";
  Write("victim", "1"), Write("tmp/victim", "1");
  const std::string document =
      "%!PS\n/try { stopped { clear } if } def { (@victim) deletefile } try\n"
      "{ (@tmp/victim) deletefile } try { (@tmp/new) (w) file } try\n"
      "{ (/etc/passwd) (r) file } try { (%pipe%id) (r) file } try\n"
      "/NoSuchFont findfont 9 scalefont setfont 9 9 moveto (x) show showpage\n";
  Write("nosy.ps", std::regex_replace(document, std::regex("@"), folder.Path("")));
  Run("nosy.ps", "HOME=/nowhere ASAN_OPTIONS=detect_leaks=0 " + tracer);
  ExpectExit(0, "comparison   0 of ");
  EXPECT_TRUE(fs::exists(folder.Path("victim")) && fs::exists(folder.Path("tmp/victim")));
  const std::regex call("[0-9]+ +(\\w+)\\([^\"]*\"(/[^\"]+)\"(.*) = [0-9]+"),
      open("open(at)?|creat"), change("(unlink|rename|mkdir|rmdir|chmod)(at|at2)?|creat"),
      writing(".*O_(WRONLY|RDWR|CREAT).*"), own(folder.Path("tmp/print-page-") + ".*|/dev/null"),
      readable(
          "/(usr|lib|lib64|proc|sys|etc/fonts|var/cache/fontconfig|var/lib/ghostscript)/.*|"
          "/etc/(ld\\.so\\..*|localtime)|" +
          folder.Path("nosy.ps"));
  std::istringstream trace(Contents(folder.Path("trace")));
  std::smatch part;
  unsigned opened = 0;
  for (std::string line; std::getline(trace, line);) {
    if (!std::regex_match(line, part, call) || std::regex_match(part.str(2), own)) continue;
    EXPECT_FALSE(std::regex_match(part.str(1), change)) << line;
    if (!std::regex_match(part.str(1), open)) continue;
    ++opened;
    if (line.find("O_DIRECTORY") != std::string::npos) continue;  // names are no contents
    EXPECT_TRUE(std::regex_match(part.str(2), readable)) << line;
    EXPECT_FALSE(std::regex_match(part.str(3), writing)) << line;
  }
  EXPECT_LT(10u, opened);
}

TEST_F(Program, SaysWhatIsWrongWithAnInput) {
  const std::string page = Raster(Page());
  const std::size_t lineBytes = 96;  // four planes of two bits make a byte a pixel
  Write("cut.ras", page.substr(0, page.size() - 100 * lineBytes - 1));
  Run("cut.ras");
  ExpectExit(1, "cut.ras': the raster ends at line 139 of 240\n");
  EXPECT_NE(std::string::npos, out.find("printed      139 of 240 lines")) << out;
  Write("more.ras", Raster(Page(2)) + "trailing");
  Run("more.ras");
  ExpectExit(1, "more.ras': after page 2: a page header is cut off or damaged\n");
  EXPECT_EQ(2u, Count(out, "comparison   0 of "));
  Write("text", "hello");
  Run("- <text");
  ExpectExit(1, "'-': is none of CUPS raster, PDF, PostScript, EPS, PNG, JPEG, TIFF\n");

  Write("blank.ps", "%!PS\n1 1 add pop\n");
  Run("blank.ps");
  ExpectExit(1, "blank.ps': holds no page\n");
  Write("fake.pdf", "%PDF-1.7\nbut nothing behind it\n");
  Run("fake.pdf");
  ExpectExit(1, "fake.pdf': is damaged: gs: Error: ");
  const std::string lock = "cd '" + folder.Path("") +
                           "' && gs -q -dBATCH -dNOPAUSE -sDEVICE=pdfwrite "
                           "-sOwnerPassword=o -sUserPassword=u -sOutputFile=locked.pdf -c showpage";
  ASSERT_EQ(0, std::system(lock.c_str()));
  Run("locked.pdf");
  ExpectExit(1, "locked.pdf': is protected by a password\n");
  Run("locked.pdf", "export TMPDIR=\"$here/none\";");
  ExpectExit(1, "the temporary folder '" + folder.Path("none") + "': No such file or directory\n");
  Write("wrong.ps", "%!PS\nshowpage\nnosuchname\n");
  Run("wrong.ps");
  ExpectExit(1, "wrong.ps': after page 1: gs: Error: /undefined in nosuchname\n");
}

// Every ink takes each of 21 steps on one of 21 pages, each ink in another order.
TEST_F(Program, PrintsTintsOnPaperAsTheDocumentAsksForThem) {
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

TEST_F(Program, PrintsGreyWithBlackInkAlone) {
  Write("grey.ps",
        "%!PS\n<< /PageSize [36 36] >> setpagedevice /fill { 0 0 36 36 rectfill showpage } def\n"
        "0.5 setgray fill  0 0 0 setrgbcolor fill  0.5 0.5 0.5 setrgbcolor fill  0.2 dup dup "
        "setrgbcolor\n"
        "/Helvetica findfont 30 scalefont setfont 5 5 moveto (x) show  0 0 moveto 36 36 lineto "
        "stroke\n"
        "showpage /box { 36 36 scale 2 2 } def\n"
        "gsave box 8 [2 0 0 2 0 0] {<10808080>} image showpage grestore\n"
        "gsave box 1 [2 0 0 2 0 0] {<4080>} image showpage grestore\n"
        "gsave box true [2 0 0 2 0 0] {<4080>} imagemask showpage grestore\n");
  Convert("plasma: -colorspace gray grey.png");
  Convert("grey.png -type truecolor grey.tif");
  Convert("plasma: -monochrome -compress group4 fax.tif");
  for (const char* input : {"grey.ps", "grey.png", "grey.tif", "fax.tif"}) {
    Run(input);
    ExpectExit(0, "comparison   0 of ");
    for (const auto& ink : InkOnPaper()) {
      EXPECT_EQ(0, ink[0] + ink[1] + ink[2]) << input;
      EXPECT_LT(5, ink[3]) << input;
    }
  }
}

// Half of the pages blend in RGB. Black covers their right halves.
TEST_F(Program, KeepsColoursAsTheyAreWhereGreyTurnsBlack) {
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

TEST_F(Program, RefusesADamagedPictureInsteadOfPrintingItsRest) {
  Convert("plasma: p.jpg");
  Run("p.jpg --no-verify");
  ExpectExit(0, "not compared");
  const std::string picture = Contents(folder.Path("p.jpg"));
  Write("half.jpg", picture.substr(0, picture.size() / 2));
  Run("half.jpg");
  ExpectExit(1, "half.jpg': gm convert: Premature end of JPEG file\n");
  EXPECT_EQ("", out);
}

TEST_F(Program, ComparesOnlyWhatIsThere) {
  RasterFormat format = Page();
  Write("cmyk.ras", Raster(format));
  Run("cmyk.ras --slots 0,7");
  ExpectExit(1, "cmyk.ras': page 1: there is no plane 7 for --slots\n");
  EXPECT_EQ("", out);
  format.space = CUPS_CSPACE_K, format.colors = 1;
  Write("k.ras", Raster(format));
  Run("k.ras");  // the default takes what there is
  ExpectExit(0, "comparison   0 of ");
  Run("k.ras --slots 2");
  ExpectExit(1, "there is no plane 2");
  format.space = CUPS_CSPACE_DEVICE8, format.colors = 8;
  Write("eight.ras", Raster(format));
  Run("eight.ras");
  ExpectExit(0, ", 7 ");
  EXPECT_EQ(0u, Count(out, " 0.00 %"));
  format.space = CUPS_CSPACE_K, format.colors = 1;
  Write("white.ras", WriteRaster(format, std::vector<std::uint8_t>(96 * 240)));
  Run("white.ras");
  ExpectExit(0, "comparison   nothing to compare, blank page\n");
}

TEST_F(Program, NeedsAPlaceForPictureAndLogsBeforeItPrints) {
  Write("page.ras", Raster(Page()));
  Run("page.ras -o no/paper.png");
  ExpectExit(1, "/no': No such file or directory\n");
  EXPECT_EQ("", out);
  fs::create_directory(folder.Path("folder.png"));
  Run("page.ras -o folder.png");
  ExpectExit(1, "/folder.png': is a folder\n");
  Run("page.ras --log-dir page.ras");
  ExpectExit(1, "/page.ras': is not a folder\n");
  EXPECT_EQ("", out);
}

TEST_F(Program, TellsWhatADiskHadNoRoomFor) {
  Write("page.ras", Raster(Page()));
  const std::string full = "ulimit -f 2;";  // blocks of 512 bytes
  Run("page.ras -o paper.png", full);
  ExpectExit(1, "cannot write picture '" + folder.Path("paper.png") + "': File too large\n");
  EXPECT_EQ(1u, Count(out, "picture      not written\n"));
  EXPECT_FALSE(fs::exists(folder.Path("paper.png")) || fs::exists(folder.Path("paper.png.part")));
  Run("page.ras --log-dir logs", full);
  ExpectExit(1, "' does not reach to the job's end\n");
  if (!fs::exists("/dev/full")) GTEST_SKIP() << "no device that is always full";
  Run("page.ras --virtual-time 2>\"$here/err\" >/dev/full #");
  ExpectExit(1, "print-page: cannot write to standard output: No space left on device\n");
}

TEST_F(Program, PrintsAPartOfThePagesInksOnlyWhenAsked) {
  Write("page.ras", Raster(Page()));
  Write("one.toml", "heads = 'pha'\nink_order_pha = [3,3,1,1,2,2,4,4]\n");
  Run("page.ras -s one.toml");
  ExpectExit(1, "page 1: the machine has no nozzle row for ink C; --partial leaves it out\n");
  EXPECT_EQ("", out);
  Run("page.ras -s one.toml --partial");
  ExpectExit(0, "ink          C 0.00 %, M ");
}

TEST_F(Program, RefusesAPageThatIsTooLargeBeforeItIsRendered) {
  Write("large.ps", "%!PS\n<< /PageSize [7000 200000] >> setpagedevice 9 9 moveto showpage\n");
  Run("large.ps");
  ExpectExit(1, "large.ps': page 1: it is too large for memory\n");
  RasterFormat format = Page();
  format.space = CUPS_CSPACE_K, format.colors = 1, format.lines = 2;
  format.width = 129552;  // 2285 mm, what the driver takes
  Write("widest.ras", Raster(format));
  Run("widest.ras");
  ExpectExit(0, "comparison   0 of ");
  format.width += 1;
  Write("wide.ras", Raster(format));
  Run("wide.ras");
  ExpectExit(1, "wide.ras': page 1: it is 2286 mm wide, the machine prints 2285 mm\n");
  EXPECT_EQ("", out);
}

TEST_F(Program, NeedsNoCurrentFolder) {
  Write("page.ras", Raster(Page()));
  Run("\"$here/page.ras\"", "mkdir gone; cd gone; rmdir ../gone;");
  ExpectExit(0, "comparison   0 of ");
  Run("page.ras", "mkdir gone; cd gone; rmdir ../gone;");
  ExpectExit(1, "'page.ras': the current folder is gone\n");
}

TEST_F(Program, EndsWithTwoOnWrongUsage) {
  Write("page.ras", Raster(Page()));
  for (const char* arguments : {"", "page.ras more.ras", "page.ras -r 1000", "page.ras --slots -",
                                "page.ras --slots 8", "page.ras --quirk cancel:ms=1",
                                "page.ras -o -", "page.ras -o paper.jpg", "page.ras --seed -1"}) {
    Run(arguments);
    ExpectExit(2, "\nRun with --help for more information.\n");
    EXPECT_EQ(0u, err.find("print-page: ")) << err;
    EXPECT_EQ("", out);
  }
  Run("--help");
  EXPECT_EQ(0, exitCode);
}

TEST_F(Program, TellsWhyAJobWasNotCompleted) {
  Write("page.ras", Raster(Page()));
  Run("page.ras --quirk pause:at=2,ms=60000 --quirk unplug:msg=6,ms=3000");
  ExpectExit(0, "comparison   0 of ");
  Run("page.ras --quirk unplug:byte=9000,ms=100,back=other --quirk garbage:form=split,count=9");
  ExpectExit(0, "comparison   0 of ");
  Run("page.ras --api line --quirk block:defect=signature");
  EXPECT_NE(std::string::npos,
            out.find("not completed: the printer's parameter block has a defect"))
      << out;
  Run("page.ras --quirk cancel:at=2");
  EXPECT_EQ(1, exitCode);
  EXPECT_NE(std::string::npos,
            out.find("job          not completed: the job was cancelled at the printer, at swath "
                     "2; --log-dir keeps the driver's log\n"))
      << out;
  Run("page.ras --api line --log-dir logs --quirk refuse:on=connect,status=0x21");
  EXPECT_EQ(1, exitCode);
  EXPECT_NE(std::string::npos, out.find("printed      0 of 240 lines")) << out;
  EXPECT_NE(std::string::npos,
            out.find("not completed: the printer refused the connect with status 33; see the log "
                     "in " +
                     folder.Path("logs") + "\n"))
      << out;
}

TEST_F(Program, LeavesNothingBehindWhenASignalEndsIt) {
  Write("page.ras", Raster(Page()));
  Run("page.ras --virtual-time | true #");  // which reads nothing
  const std::string page = folder.Path("page.ras"), temporary = "TMPDIR=" + folder.Path("tmp");
  const char* const argv[] = {QRN_PRINT_PAGE, page.c_str(), "--quirk", "pause:ms=60000", nullptr};
  const char* const environment[] = {temporary.c_str(), nullptr};
  for (const int number : {SIGINT, SIGQUIT, SIGTERM}) {
    pid_t child = 0;
    ASSERT_EQ(0, posix_spawn(&child, QRN_PRINT_PAGE, nullptr, nullptr, const_cast<char**>(argv),
                             const_cast<char**>(environment)));
    while (fs::is_empty(folder.Path("tmp")))
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    kill(child, number);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == number) << status;
    EXPECT_TRUE(fs::is_empty(folder.Path("tmp")));
  }
}

}  // namespace
}  // namespace qrn::tool
