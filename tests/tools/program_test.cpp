// The program itself, from the command line to its exit code.
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
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
