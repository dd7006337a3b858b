// What print-page does with pixels and texts, where no run of it shows everything.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "print_page/console.h"
#include "print_page/drop_levels.h"
#include "print_page/raster_reader.h"
#include "print_page/settings.h"
#include "print_page/temporary_folder.h"
#include "sim/firmware/parameter_block.h"
#include "support/test_seed.h"
#include "tools/raster_writer.h"

namespace qrn::tool {
namespace {

// Each level of each pixel, of a raster that is handed over in pieces.
void ExpectRead(const RasterFormat& format, std::uint64_t seed) {
  SCOPED_TRACE(testing::Message() << "space " << format.space << ", " << format.bits
                                  << " bits, order " << format.order << ", width " << format.width
                                  << ", padding " << format.padding);
  std::istringstream stream(WriteRaster(format, seed));
  RasterReader reader([&stream](std::uint8_t* buffer, std::size_t bytes) {
    return stream.readsome(reinterpret_cast<char*>(buffer), std::min<std::ptrdiff_t>(bytes, 999));
  });
  RasterPage page;
  std::string error;
  ASSERT_EQ(ReadResult::kPage, reader.NextPage({}, &page, &error)) << error;
  ASSERT_EQ(WidenedWidth(format.width) / 4, page.LineBytes());
  EXPECT_EQ(format.colors, page.present.count());
  const bool blackFirst = format.space == CUPS_CSPACE_K || format.space == CUPS_CSPACE_KCMY;
  for (unsigned color = 0; color < format.colors; ++color) {
    const std::size_t plane = blackFirst ? (color + 3) % 4 : color;
    EXPECT_TRUE(page.present.test(plane));
    std::vector<std::uint8_t> bytes = page.planes[plane];
    bytes.resize(std::size_t{format.lines} * page.LineBytes());  // blank lines at its end take none
    for (unsigned at = 0; at < bytes.size() * 4; ++at) {
      const unsigned x = at % (page.LineBytes() * 4), y = at / (page.LineBytes() * 4);
      const unsigned value = x < format.width ? ValueAt(format, seed, color, x, y) : 0;
      const unsigned level = format.bits == 1   ? 3 * value
                             : format.bits == 2 ? value
                                                : LevelOf(static_cast<std::uint8_t>(value), x, y);
      ASSERT_EQ(level, bytes[at / 4] >> (6 - 2 * (x % 4)) & 3u)
          << "colour " << color << ", pixel " << x << ", line " << y;
    }
  }
  EXPECT_EQ(ReadResult::kEnd, reader.NextPage({}, &page, &error)) << error;
}

TEST(RasterReader, ReadsEveryOrderDepthColourSpaceAndWidth) {
  const std::uint64_t seed = TestSeed();
  std::vector<std::pair<cups_cspace_t, unsigned>> spaces = {
      {CUPS_CSPACE_K, 1}, {CUPS_CSPACE_CMYK, 4}, {CUPS_CSPACE_KCMY, 4}};
  for (unsigned n = 1; n <= 8; ++n)
    spaces.emplace_back(static_cast<cups_cspace_t>(CUPS_CSPACE_DEVICE1 + n - 1), n);
  for (const auto& [space, colors] : spaces) {
    for (const unsigned bits : {1u, 2u, 8u}) {
      for (const cups_order_t order : {CUPS_ORDER_CHUNKED, CUPS_ORDER_BANDED, CUPS_ORDER_PLANAR}) {
        for (const unsigned width : {1u, 2u, 3u, 4u, 5u, 8u, 9u, 53u})
          ExpectRead({space, colors, bits, order, width}, seed);
      }
    }
  }
  for (const auto& [bits, colors, padding] :
       {std::array{1u, 4u, 4u}, {2u, 3u, 2u}, {2u, 6u, 4u}, {8u, 3u, 8u}, {1u, 1u, 2u}}) {
    const auto space = static_cast<cups_cspace_t>(CUPS_CSPACE_DEVICE1 + colors - 1);
    ExpectRead({space, colors, bits, CUPS_ORDER_CHUNKED, 53, 7, padding}, seed);
  }
}

TEST(Levels, DitherToTheInksShare) {
  for (unsigned ink = 0; ink < 256; ++ink) {
    unsigned sum = 0;
    for (unsigned place = 0; place < 64; ++place)
      sum += LevelOf(static_cast<std::uint8_t>(ink), place % kScreenPixels, place / kScreenPixels);
    EXPECT_NEAR(ink * 3.0 / 255.0, sum / 64.0, 1.0 / 64);
  }
}

TEST(Progress, FitsATerminalOfFortyColumns) {
  EXPECT_EQ("page 1: rendering, 12 s", ProgressText({1, 0, "rendering", 0, 0, 12}));
  EXPECT_EQ("page 2/5: printing 50 % [######.......]", ProgressText({2, 5, "printing", 9, 18, 0}));
  for (const char* doing : {"rendering", "printing", "paused at", "reconnecting at"}) {
    for (const std::uint32_t page : {1u, 999u, 99999u, 4294967294u})
      EXPECT_GE(39u, ProgressText({page, page, doing, 100, page % 2 * 100, 99999}).size());
  }
}

// The documented example is what a machine is without settings: here each of them is another.
TEST(Settings, AreTakenFromAFile) {
  sim::Machine machine;
  std::string error;
  ASSERT_TRUE(LoadSettings(QRN_SAMPLES_DIR "/printer.toml", &machine, &error)) << error;
  EXPECT_EQ(ParameterBlock(sim::Machine{}), ParameterBlock(machine));
  const TemporaryFolder folder;
  std::ofstream(folder.Path("a.toml")) << "heads = 'phb'\nhead_gap_x = [1, 2, 3, 4]\n"
                                          "head_gap_y = 7\nbidirectional = false\n";
  ASSERT_TRUE(LoadSettings(folder.Path("a.toml"), &machine, &error)) << error;
  EXPECT_EQ(sim::Heads::kPhb, machine.heads);
  EXPECT_EQ((std::array<std::uint8_t, 4>{1, 2, 3, 4}), machine.headGapX);
  EXPECT_EQ(7, machine.headGapY[3]);
  EXPECT_FALSE(machine.bidirectional);
}

}  // namespace
}  // namespace qrn::tool
