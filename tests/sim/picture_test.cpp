// Pictures of the paper: their size, where the ink is in them, how inks mix.
#include "sim/paper/picture.h"

#include <gtest/gtest.h>
#include <png.h>

#include "support/temp_folder.h"

namespace qrn::sim {
namespace {

constexpr std::uint32_t kWhite = 0xFFFFFFFF, kCyan = 0xFF00AEEF;

using Rows = std::vector<std::vector<std::uint32_t>>;

class PictureTest : public testing::Test {
 protected:
  void Lay(int color, int direction, std::int32_t line, std::int32_t column, std::uint8_t ink) {
    AddInk(paper.Prepare(color, direction, line, column, column), column, ink);
  }
  void Render() {
    ASSERT_EQ("", WritePng(paper, options, path));
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    ASSERT_NE(0, png_image_begin_read_from_file(&image, path.c_str()));
    image.format = PNG_FORMAT_BGRA;  // 0xFFrrggbb
    std::vector<std::uint32_t> pixels(image.width * image.height);
    ASSERT_NE(0, png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr));
    picture.clear();
    for (auto row = pixels.begin(); row != pixels.end(); row += image.width)
      picture.emplace_back(row, row + image.width);
  }

  const TempFolder folder;
  const std::string path = (folder.Path() / "picture.png").string();
  Paper paper;
  PictureOptions options;
  Rows picture;
};

TEST_F(PictureTest, LaysInksOnEachOtherLikeFilters) {
  options.lines = 2, options.columns = 3, options.lineOrigin = 10, options.reverseShift = 3;
  Lay(0, 0, 10, 0, 6);  // cyan alone, in two passes
  Lay(0, 1, 10, 3, 6);
  Lay(2, 1, 10, 2, 12);  // left of the picture
  Lay(0, 0, 10, 1, 6);   // half covered
  Lay(0, 0, 11, 2, 12);  // cyan under yellow
  Lay(2, 0, 11, 2, 12);
  Lay(2, 0, 12, 0, 12);  // below the picture
  Render();
  // Half covered is halfway to white: 127.5, 214.5, 247, rounded up. Under yellow: 0 x 255,
  // 0xAE x 0xF2 / 255, 0xEF x 0.
  EXPECT_EQ((Rows{{kCyan, 0xFF80D7F7, kWhite}, {kWhite, kWhite, 0xFF00A500}}), picture);
}

TEST_F(PictureTest, FitsItsWidthKeepsTheAspectAndFindsTheInkByItself) {
  for (std::int32_t line = 100; line < 130; ++line) {
    for (std::int32_t column = 0; column < 20; ++column) Lay(0, 0, line, column, 12);
  }
  Lay(0, 0, 100, 59, 12);
  options.widthMax = 20, options.columnsPerInch = 270;
  Render();
  ASSERT_EQ(8u, picture.size());  // 30 lines of 1/360 inch are 22.5 columns, a third of that 7.5
  ASSERT_EQ(20u, picture[7].size());
  EXPECT_EQ(kCyan, picture[0][0]);
  // Two columns of three: a third of white remains.
  EXPECT_EQ((Rows{{kCyan, 0xFF55C9F4, kWhite}}),
            (Rows{{picture[7].begin() + 5, picture[7].begin() + 8}}));
}

}  // namespace
}  // namespace qrn::sim
