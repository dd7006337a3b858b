// Pictures of the paper: their size, where the ink lies in them, how inks mix.
#include "sim/picture.h"

#include <gtest/gtest.h>
#include <png.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

namespace qrn::sim {
namespace {

constexpr std::uint32_t kWhite = 0xFFFFFF, kCyan = 0x00AEEF, kYellow = 0xFFF200;

class PictureTest : public testing::Test {
 protected:
  ~PictureTest() override { std::remove(path.c_str()); }

  void Lay(int plane, int direction, std::int32_t line, std::int32_t column, std::uint8_t ink) {
    AddInk(paper.Prepare(plane, direction, line, column, column), column, ink);
  }
  void Render() {
    ASSERT_EQ("", WritePng(paper, options, path));
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    ASSERT_NE(0, png_image_begin_read_from_file(&image, path.c_str()));
    image.format = PNG_FORMAT_RGB;
    width = image.width;
    height = image.height;
    bytes.resize(PNG_IMAGE_SIZE(image));
    ASSERT_NE(0, png_image_finish_read(&image, nullptr, bytes.data(), 0, nullptr));
  }
  std::uint32_t At(std::uint32_t x, std::uint32_t y) const {
    const std::uint8_t* pixel = &bytes.at(3 * (std::size_t{y} * width + x));
    return std::uint32_t{pixel[0]} << 16 | std::uint32_t{pixel[1]} << 8 | pixel[2];
  }

  Paper paper;
  PictureOptions options;
  std::string path = (std::filesystem::temp_directory_path() /
                      ("qrn-picture-" + std::to_string(getpid()) + ".png"))
                         .string();
  std::uint32_t width = 0, height = 0;
  std::vector<std::uint8_t> bytes;
};

TEST_F(PictureTest, LaysInksOnEachOtherLikeFilters) {
  options.lines = 2, options.columns = 3, options.lineOrigin = 10;
  Lay(0, 0, 10, 0, 12);  // cyan alone
  Lay(0, 0, 10, 1, 6);   // half covered
  Lay(0, 0, 11, 2, 12);  // cyan under yellow
  Lay(2, 0, 11, 2, 12);
  Lay(2, 0, 12, 0, 12);  // below the picture
  Render();
  ASSERT_EQ(3u, width);
  ASSERT_EQ(2u, height);
  EXPECT_EQ(kCyan, At(0, 0));
  EXPECT_EQ(0x80D7F7u, At(1, 0));  // halfway to white: 127.5, 214.5, 247, rounded up
  EXPECT_EQ(kWhite, At(2, 0));
  EXPECT_EQ(kWhite, At(0, 1));
  EXPECT_EQ(0x00A500u, At(2, 1));  // 0 x 255, 0xAE x 0xF2 / 255, 0xEF x 0
}

TEST_F(PictureTest, LaysReversePassesBackOnForwardOnes) {
  options.lines = 1, options.columns = 4, options.reverseShift = 3;
  Lay(0, 0, 0, 1, 6);
  Lay(0, 1, 0, 4, 6);   // the other half of column 1
  Lay(2, 1, 0, 2, 12);  // lies left of the picture
  Lay(2, 1, 0, 6, 12);
  Render();
  EXPECT_EQ(kWhite, At(0, 0));
  EXPECT_EQ(kCyan, At(1, 0));
  EXPECT_EQ(kWhite, At(2, 0));
  EXPECT_EQ(kYellow, At(3, 0));
}

TEST_F(PictureTest, FitsItsWidthKeepsTheAspectAndFindsTheInkByItself) {
  for (std::int32_t line = 100; line < 130; ++line) {
    for (std::int32_t column = 0; column < 20; ++column) Lay(0, 0, line, column, 12);
  }
  Lay(0, 0, 100, 59, 12);
  options.widthMax = 20, options.columnsPerInch = 270;
  Render();
  EXPECT_EQ(20u, width);
  EXPECT_EQ(8u, height);  // 30 lines of 1/360 inch are 22.5 columns, a third of that 7.5
  EXPECT_EQ(kCyan, At(0, 0));
  EXPECT_EQ(kCyan, At(5, 7));
  EXPECT_EQ(0x55C9F4u, At(6, 7));  // two columns of three: a third of white remains
  EXPECT_EQ(kWhite, At(7, 7));
}

// A line between two rows goes half to each: rows that cover one or two lines in turn are streaks.
TEST_F(PictureTest, AveragesByArea) {
  for (std::int32_t column = 0; column < 3; ++column) Lay(0, 0, 1, column, 12);
  options.lines = 3, options.columns = 3, options.widthMax = 2;
  Render();
  ASSERT_EQ(2u, width);
  ASSERT_EQ(2u, height);
  for (const auto& [x, y] : {std::pair{0, 0}, std::pair{1, 0}, std::pair{0, 1}, std::pair{1, 1}})
    EXPECT_EQ(0xAAE4FAu, At(static_cast<std::uint32_t>(x), static_cast<std::uint32_t>(y)));
}

TEST_F(PictureTest, ThatCannotBeWrittenSaysWhy) {
  EXPECT_EQ("No such file or directory", WritePng(paper, options, path + "/no/paper.png"));
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no device that is always full";
  EXPECT_EQ("No space left on device", WritePng(paper, options, "/dev/full"));
}

}  // namespace
}  // namespace qrn::sim
