// The program itself, from the command line to its exit code.
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <thread>

#include "tools/program_fixture.h"

namespace qrn::tool {
namespace {

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

// Complaints: one line, or two on wrong usage, and nothing printed before.
TEST_F(Program, SaysWhatIsWrongBeforeItPrints) {
  struct Wrong {
    const char *arguments, *said;
  };
  const auto expect = [this](int code, const Wrong& wrong) {
    Run(wrong.arguments);
    ExpectExit(code, wrong.said);
    EXPECT_EQ("", out) << wrong.arguments;
  };
  const RasterFormat black = {CUPS_CSPACE_K, 1, 2, CUPS_ORDER_CHUNKED, 129553, 2};
  Write("page.ras", Raster(Page()));
  Write("wide.ras", Raster(black));
  Write("head.ras", Raster(Page()).substr(0, 1000));
  Write("text", "hello");
  Write("one.toml", "heads = 'pha'\nink_order_pha = [3,3,1,1,2,2,4,4]\n");
  Write("blank.ps", "%!PS\n1 1 add pop\n");
  Write("large.ps", "%!PS\n<< /PageSize [7000 200000] >> setpagedevice 9 9 moveto showpage\n");
  Write("fake.pdf", "%PDF-1.7\nbut nothing behind it\n");
  fs::create_directory(folder.Path("folder.png"));
  for (const Wrong& wrong : {
           Wrong{"page.ras --slots 0,7", "page.ras': page 1: there is no plane 7 for --slots\n"},
           {"page.ras -o no/paper.png", "/no': No such file or directory\n"},
           {"page.ras -o folder.png", "/folder.png': is a folder\n"},
           {"page.ras --log-dir page.ras", "/page.ras': is not a folder\n"},
           {"page.ras -s one.toml",
            "page 1: the machine has no nozzle row for ink C; --partial leaves it out\n"},
           {"page.ras -s folder.png", "folder.png': is a folder\n"},
           {"page.ras -r 1080", "it is of 1440x360 dpi, asked is 1080x360\n"},
           {"wide.ras", "wide.ras': page 1: it is 2286 mm wide, the machine prints 2285 mm\n"},
           {"head.ras", "head.ras': a page header is cut off or damaged\n"},
           {"no.ras", "no.ras': No such file or directory\n"},
           {"- <text", "'-': is none of CUPS raster, PDF, PostScript, EPS, PNG, JPEG, TIFF\n"},
           {"blank.ps", "blank.ps': holds no page\n"},
           {"large.ps", "large.ps': page 1: it is 2469 mm wide, the machine prints 2285 mm\n"},
           {"fake.pdf", "fake.pdf': is damaged: gs: Error: "},
       })
    expect(1, wrong);
  for (const char* arguments :
       {"", "page.ras more.ras", "page.ras -r 1000", "page.ras --slots -", "page.ras --slots 8",
        "page.ras --slots 0,,1", "page.ras --slots 0,1,2,3,4,5,6,7,0",
        "page.ras --quirk cancel:ms=1", "page.ras -o -", "page.ras -o paper.jpg",
        "page.ras --seed -1"})
    expect(2, {arguments, "\nRun with --help for more information.\n"});
  Run("--help");
  EXPECT_EQ(0, exitCode);
  for (const auto& [settings, said] :
       {Wrong{"speed = 256", "speed must be a whole number from 1 to 255"},
        {"speed = 0", "speed must be a whole number from 1 to 255"},
        {"heads = 'three'", "heads must be \"both\", \"pha\", \"phb\" or \"none\""},
        {"head_gap_x = [1,2]", "head_gap_x must be a number or four of them, for 1080"},
        {"ink_order_pha = [8,0,0,0,0,0,0,0]", "ink_order_pha must be a whole number from 0 to 7"},
        {"bidirectional = 1", "bidirectional must be true or false"},
        {"colour = 3", "colour is not a setting"},
        {"\nspeed = ", ", line 2"}}) {
    Write("wrong.toml", settings);
    expect(1, {"page.ras -s wrong.toml", said});
    EXPECT_NE(std::string::npos, err.find("wrong.toml': ")) << err;
  }
}

TEST_F(Program, RefusesARasterWhoseHeaderCannotBe) {
  using Change = std::function<void(cups_page_header2_t*)>;
  // The types of space and order have no room for the numbers of the first two.
  const auto set = [](auto* field, std::uint32_t number) {
    std::memcpy(field, &number, sizeof number);
  };
  for (const auto& [change, said] : std::vector<std::pair<Change, const char*>>{
           {[&](auto* h) { set(&h->cupsColorSpace, 2054); }, "colour space 2054 is not read: "},
           {[&](auto* h) { set(&h->cupsColorOrder, 2048); }, "colour order 2048 is not read\n"},
           {[](auto* h) { h->cupsColorSpace = CUPS_CSPACE_RGB; }, "colour space 1 is not read: "},
           {[](auto* h) { h->cupsWidth = 400'001; }, "400001 x 240 pixels are not read: "},
           {[](auto* h) { h->cupsHeight = 4'000'001; }, "96 x 4000001 pixels are not read: "},
           {[](auto* h) { h->cupsWidth += 1; }, "lines of 96 bytes do not fit its pixels\n"}}) {
    Write("page.ras", WriteRaster(Page(), NoiseFor(Page(), TestSeed()), change));
    Run("page.ras");
    ExpectExit(1, std::string("page.ras': page 1: ") + said);
  }
}

TEST_F(Program, PrintsAndComparesWhatIsThere) {
  RasterFormat format = Page();
  Write("page.ras", Raster(format));
  Write("one.toml", "heads = 'pha'\nink_order_pha = [3,3,1,1,2,2,4,4]\n");
  Run("page.ras -s one.toml --partial");
  ExpectExit(0, "ink          C 0.00 %, M ");
  format.space = CUPS_CSPACE_DEVICE8, format.colors = 8;
  Write("eight.ras", Raster(format));
  Run("eight.ras");
  ExpectExit(0, ", 7 ");
  EXPECT_EQ(0u, Count(out, " 0.00 %"));
  format.space = CUPS_CSPACE_K, format.colors = 1;
  Write("k.ras", Raster(format));
  Run("k.ras");  // the default takes what there is
  ExpectExit(0, "comparison   0 of ");
  Run("k.ras --slots 2");
  ExpectExit(1, "there is no plane 2");
  Write("white.ras", WriteRaster(format, std::vector<std::uint8_t>(96 * 240)));
  Run("white.ras");
  ExpectExit(0, "comparison   nothing to compare, blank page\n");
  format.lines = 2, format.width = 129552;  // 2285 mm, what the driver takes
  Write("widest.ras", Raster(format));
  Run("widest.ras");
  ExpectExit(0, "comparison   0 of ");
}

// Each page that came is printed; what is wrong is told after it.
TEST_F(Program, PrintsWhatCameOfAStreamThatBreaksOff) {
  RasterFormat format = Page(2);
  const std::string whole = Raster(format);
  Write("cut.ras", whole.substr(0, whole.size() - 100 * 96 - 1));  // a byte a pixel, 96 a line
  Run("cut.ras");
  ExpectExit(1, "cut.ras': the raster ends at line 139 of 240\n");
  EXPECT_NE(std::string::npos, out.find("printed      139 of 240 lines")) << out;
  Write("more.ras", whole + "trailing");
  Run("more.ras");
  ExpectExit(1, "more.ras': after page 2: a page header is cut off or damaged\n");
  EXPECT_EQ(2u, Count(out, "comparison   0 of "));
  format.mode = CUPS_RASTER_WRITE_COMPRESSED;  // read ahead of need
  Write("packed.ras", Raster(format));
  Run("packed.ras");
  ExpectExit(0, "total        2 pages, 2 of them as asked, ");
  Write("packed.ras", Raster(format) + "t");
  Run("packed.ras");
  ExpectExit(1, "packed.ras': after page 2: a page header is cut off or damaged\n");
  format = Page(), format.order = CUPS_ORDER_PLANAR;  // the colours after the cut never came
  Write("planar.ras", Raster(format).substr(0, whole.size() / 4));
  Run("planar.ras");
  ExpectExit(1, "planar.ras': the raster ends at line 0 of 240\n");
  Write("wrong.ps", "%!PS\nshowpage\nnosuchname\n");
  Run("wrong.ps");
  ExpectExit(1, "wrong.ps': after page 1: gs: Error: /undefined in nosuchname\n");
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

TEST_F(Program, NeedsNoCurrentFolder) {
  Write("page.ras", Raster(Page()));
  Run("\"$here/page.ras\"", "mkdir gone; cd gone; rmdir ../gone;");
  ExpectExit(0, "comparison   0 of ");
  Run("page.ras", "mkdir gone; cd gone; rmdir ../gone;");
  ExpectExit(1, "'page.ras': the current folder is gone\n");
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
