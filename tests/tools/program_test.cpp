// The program itself, from the command line to its exit code.
#include <cstring>
#include <sstream>
#include <utility>
#include <vector>

#include "tools/program_fixture.h"

namespace qrn::tool {
namespace {

TEST_F(Program, PrintsEveryPageAsAJobAndNamesThePictures) {
  WritePage("two.ras", Page(2));
  Expect(0, "print-page two.ras -o paper.png --dpi 360 --log-dir logs --api line",
         "page         2, two.ras\n");
  EXPECT_EQ(2u, Count(out, "printed      240 lines, "));
  EXPECT_EQ(2u, Count(out, kAsAsked));
  EXPECT_EQ(1u, Count(out, "total        2 pages, 2 of them as asked, "));
  const std::string size("\0\0\0\x18\0\0\0\xF0", 8);  // 24 x 240 pixels
  for (const char* name : {"paper.png", "paper-2.png"})
    EXPECT_EQ(size, Contents(folder.Path(name)).substr(16, 8)) << name;
  EXPECT_FALSE(fs::exists(folder.Path("paper-3.png")));
  EXPECT_EQ(2, std::distance(fs::directory_iterator(folder.Path("logs")), {}));
}

TEST_F(Program, DoesWhatItsCommandLinesAsk) {
  WritePage();
  WritePage("black.ras", BlackPage(96, 240));
  WritePage("widest.ras", BlackPage(129552, 2));
  WritePage("wide.ras", BlackPage(129553, 2));
  RasterFormat white = BlackPage(96, 240);
  white.blank = true;
  WritePage("white.ras", white);
  ASSERT_EQ(0, Shell("mkdir folder.png; head -c 1000 page.ras >head.ras; "
                     "gm convert -size 60x60 plasma: jpg:- | head -c 900 >half.jpg; "
                     "gs -q -dBATCH -dNOPAUSE -sDEVICE=pdfwrite -sOwnerPassword=o "
                     "-sUserPassword=u -sOutputFile=locked.pdf -c showpage"));
  std::istringstream lines(Contents(QRN_COMMAND_LINES));
  unsigned cases = 0;
  std::string command;
  for (std::string line; std::getline(lines, line);) {
    if (line.size() < 2 || line[1] != ' ') continue;
    const std::string text = line.substr(2);
    if (line[0] == '$') {
      command = text;
      ++cases;
    } else if (line[0] == '!') {
      Run(command);
      EXPECT_EQ(1, exitCode) << command << err;
      EXPECT_EQ(1u, Count(out, text)) << command << out;
    } else if (line[0] >= '0' && line[0] <= '2') {
      Expect(line[0] - '0', command, text);
      EXPECT_EQ(line[0] == '0', out != "") << command;
    }
  }
  EXPECT_LT(40u, cases);
}

TEST_F(Program, RefusesARasterWhoseHeaderCannotBe) {
  using Header = cups_page_header2_t;
  // Another number in a field, for which the field's own type may have no room.
  const auto page = [](auto Header::*field, std::uint32_t number, RasterFormat format = Page()) {
    std::string raster = WriteRaster(format, TestSeed());
    auto* header = reinterpret_cast<Header*>(raster.data() + 4);  // a word tells the byte order
    std::memcpy(&(header->*field), &number, sizeof number);
    return raster;
  };
  for (const auto& [raster, said] : std::vector<std::pair<std::string, std::string>>{
           {page(&Header::cupsColorSpace, 2054), "colour space 2054 is not read: "},
           {page(&Header::cupsColorOrder, 2048), "colour order 2048 is not read\n"},
           {page(&Header::cupsColorSpace, CUPS_CSPACE_RGB), "colour space 1 is not read: "},
           {page(&Header::cupsWidth, 400'001), "400001 x 240 pixels are not read: "},
           {page(&Header::cupsHeight, 4'000'001), "96 x 4000001 pixels are not read: "},
           {page(&Header::cupsWidth, 97), "lines of 96 bytes do not fit its pixels\n"},
           {page(&Header::cupsHeight, 9000, BlackPage(129552, 2)),
            "a picture of 64776 x 18000 pixels is too large\n"},
       }) {
    Write("page.ras", raster);
    Expect(1, "print-page page.ras -o paper.png --dpi 720", "page.ras': page 1: " + said);
  }
}

TEST_F(Program, PrintsEightInks) {
  RasterFormat format = Page();
  format.space = CUPS_CSPACE_DEVICE8, format.colors = 8;
  WritePage("eight.ras", format);
  Expect(0, "print-page eight.ras", ", 7 ");
  EXPECT_EQ(0u, Count(out, " 0.00 %"));
}

// Each page that came is printed; what is wrong is told after it.
TEST_F(Program, PrintsWhatCameOfAStreamThatBreaksOff) {
  RasterFormat format = Page(2);
  const std::string whole = WriteRaster(format, TestSeed());
  Write("cut.ras", whole.substr(0, whole.size() - 100 * 96 - 1));  // a byte a pixel, 96 a line
  Expect(1, "print-page cut.ras", "cut.ras': the raster ends at line 139 of 240\n");
  EXPECT_EQ(1u, Count(out, "printed      139 of 240 lines")) << out;
  format.mode = CUPS_RASTER_WRITE_COMPRESSED;  // read ahead of need
  const std::string packed = WriteRaster(format, TestSeed());
  Write("packed.ras", packed);
  Expect(0, "print-page packed.ras", "total        2 pages, 2 of them as asked, ");
  for (const std::string& pages : {whole, packed}) {
    Write("more.ras", pages + "t");
    Expect(1, "print-page more.ras",
           "more.ras': after page 2: a page header is cut off or damaged\n");
    EXPECT_EQ(2u, Count(out, kAsAsked));
  }
  format = Page(), format.order = CUPS_ORDER_PLANAR;  // the colours after the cut never came
  Write("planar.ras", WriteRaster(format, TestSeed()).substr(0, whole.size() / 4));
  Expect(1, "print-page planar.ras", "planar.ras': the raster ends at line 0 of 240\n");
  Expect(1, "print-page wrong.ps",
         "wrong.ps': after page 1: gs: Error: /undefined in nosuchname\n");
}

TEST_F(Program, TellsWhatADiskHadNoRoomFor) {
  WritePage();
  const std::string full = "ulimit -f 2; print-page page.ras ";  // blocks of 512 bytes
  const std::string picture = folder.Path("paper.png");
  Expect(1, full + "-o paper.png", "cannot write picture '" + picture + "': File too large\n");
  EXPECT_EQ(1u, Count(out, "picture      not written\n"));
  EXPECT_FALSE(fs::exists(picture) || fs::exists(picture + ".part"));
  Expect(1, full + "--log-dir logs", "' does not reach the job's end\n");
  if (!fs::exists("/dev/full")) GTEST_SKIP() << "no device that is always full";
  Expect(1, "print-page page.ras >/dev/full",
         "print-page: cannot write to standard output: No space left on device\n");
}

TEST_F(Program, LeavesNothingBehindWhenASignalEndsIt) {
  WritePage();
  Run("print-page page.ras | true");  // which reads nothing
  for (const std::string signal : {"INT", "QUIT", "TERM"}) {
    Run("signal=" + signal +
        "; env --default-signal=INT,QUIT \"$program\" page.ras --quirk pause:ms=60000 & "
        "while kill -0 $! && [ -z \"$(ls tmp)\" ]; do sleep 0.005; done; "
        "kill -$signal $!; wait $!; [ $(kill -l $?) = $signal ]");
    EXPECT_EQ(0, exitCode) << signal << err;
  }
}

}  // namespace
}  // namespace qrn::tool
