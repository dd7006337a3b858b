// The program itself, from the command line to its exit code.
#include <gtest/gtest.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

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

class Program : public testing::Test {
 protected:
  Program() { fs::create_directory(folder.Path("tmp")); }

  // Runs it on virtual time in the private folder; its own temporary files go to "tmp" there.
  void Run(const std::string& arguments, const std::string& input = "/dev/null") {
    const std::string command = "cd '" + folder.Path("") + "' && TMPDIR=tmp '" QRN_PRINT_PAGE "' " +
                                arguments + " --virtual-time <" + input + " >out 2>err";
    const int status = std::system(command.c_str());
    exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    out = Contents(folder.Path("out"));
    err = Contents(folder.Path("err"));
    EXPECT_TRUE(fs::is_empty(folder.Path("tmp"))) << "temporary files stay";
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

  const TemporaryFolder folder;
  int exitCode = -1;
  std::string out, err;
};

TEST_F(Program, PrintsEveryPageAsAJobAndNamesThePictures) {
  Write("two.ras", Raster(Page(2)));
  Run("two.ras -o paper.png --log-dir logs --api line");
  ExpectExit(0, "printed      240 lines, ");
  EXPECT_EQ(2u, Count(out, "printed      240 lines, "));
  EXPECT_EQ(2u, Count(out, "comparison   0 of "));
  for (const char* name : {"paper.png", "paper-2.png"})
    EXPECT_EQ("\x89PNG", Contents(folder.Path(name)).substr(0, 4)) << name;
  EXPECT_FALSE(fs::exists(folder.Path("paper-3.png")));
  EXPECT_EQ(2, std::distance(fs::directory_iterator(folder.Path("logs")), {}));
  Run("-", "two.ras");
  ExpectExit(0, "comparison   0 of ");
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
  ExpectExit(1, "more.ras': behind page 2: a page header is cut off or damaged\n");
  EXPECT_EQ(2u, Count(out, "comparison   0 of "));
  Write("text", "hello");
  Run("- --no-verify", "text");
  ExpectExit(1, "'-': is not a CUPS raster stream\n");

  Write("blank.ps", "%!PS\n1 1 add pop\n");
  Run("blank.ps");
  ExpectExit(1, "blank.ps': holds no page\n");
  Write("fake.pdf", "%PDF-1.7\nbut nothing behind it\n");
  Run("fake.pdf");
  ExpectExit(1, "fake.pdf': gs: Error: ");
  Write("wrong.ps", "%!PS\nshowpage\nnosuchname\n");
  Run("wrong.ps");
  ExpectExit(1, "wrong.ps': behind page 1: gs: Error: /undefined in nosuchname\n");
}

TEST_F(Program, RefusesADamagedPictureInsteadOfPrintingItsRest) {
  const std::string make = "cd '" + folder.Path("") + "' && gm convert -size 200x200 plasma: p.jpg";
  ASSERT_EQ(0, std::system(make.c_str()));
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
  ExpectExit(1, "cmyk.ras': page 1 has no plane 7 for --slots\n");
  EXPECT_EQ("", out);
  format.space = CUPS_CSPACE_K, format.colors = 1;
  Write("k.ras", Raster(format));
  Run("k.ras");  // the default takes what there is
  ExpectExit(0, "comparison   0 of ");
  Run("k.ras --slots 2");
  ExpectExit(1, "has no plane 2");
  Write("white.ras", WriteRaster(format, std::vector<std::uint8_t>(96 * 240)));
  Run("white.ras");
  ExpectExit(0, "comparison   nothing to compare, blank page\n");
}

TEST_F(Program, NeedsAPlaceForThePictureBeforeItPrints) {
  Write("page.ras", Raster(Page()));
  Run("page.ras -o no/paper.png");
  ExpectExit(1, "/no': No such file or directory\n");
  EXPECT_EQ("", out);
  Run("page.ras -o tmp");
  ExpectExit(1, "/tmp': is a folder\n");
  if (!fs::exists("/dev/full")) GTEST_SKIP() << "no device that is always full";
  Run("page.ras -o /dev/full");
  ExpectExit(1, "cannot write picture '/dev/full': No space left on device\n");
  EXPECT_EQ(1u, Count(out, "picture      not written\n"));
  EXPECT_EQ(0u, Count(out, "not completed"));
}

TEST_F(Program, EndsWithTwoOnWrongUsage) {
  Write("page.ras", Raster(Page()));
  for (const char* arguments : {"", "page.ras more.ras", "page.ras -r 1000", "page.ras --slots -",
                                "page.ras --slots 8", "page.ras --quirk cancel:ms=1"}) {
    Run(arguments);
    EXPECT_EQ(2, exitCode) << arguments << ": " << err;
    EXPECT_NE("", err);
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
  const std::string page = folder.Path("page.ras"), temporary = "TMPDIR=" + folder.Path("tmp");
  const char* const argv[] = {QRN_PRINT_PAGE, page.c_str(), "--quirk", "pause:ms=60000", nullptr};
  const char* const environment[] = {temporary.c_str(), nullptr};
  for (const int number : {SIGINT, SIGTERM}) {
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
