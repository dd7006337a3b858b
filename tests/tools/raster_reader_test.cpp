// Rasters in every order, depth and coding, whole and cut off.
#include "print_page/raster_reader.h"

#include <gtest/gtest.h>

#include <cstring>

#include "print_page/drop_levels.h"
#include "support/test_seed.h"
#include "tools/raster_writer.h"

namespace qrn::tool {
namespace {

// What a reader makes of a stream: its pages, and how it ended.
struct Outcome {
  std::vector<RasterPage> pages;
  ReadResult end;
  std::string error;
};

Outcome ReadAll(std::string stream) {
  RasterReader reader([&stream](std::uint8_t* buffer, std::size_t bytes) {
    const std::size_t taken = std::min(bytes, stream.size());
    std::memcpy(buffer, stream.data(), taken);
    stream.erase(0, taken);
    return static_cast<std::ptrdiff_t>(taken);
  });
  Outcome outcome;
  for (;;) {
    RasterPage page;
    outcome.end = reader.NextPage({}, &page, &outcome.error);
    if (outcome.end == ReadResult::kPage || outcome.end == ReadResult::kTruncated)
      outcome.pages.push_back(page);
    if (outcome.end != ReadResult::kPage) return outcome;
  }
}

void ExpectPage(const RasterFormat& format, const std::vector<std::uint8_t>& noise,
                const RasterPage& page) {
  ASSERT_EQ(WidenedWidth(format.width) / 4, page.LineBytes());
  ASSERT_EQ(format.lines, page.lines);
  const bool blackFirst = format.space == CUPS_CSPACE_K || format.space == CUPS_CSPACE_KCMY;
  EXPECT_EQ(format.colors, page.present.count());
  for (unsigned color = 0; color < format.colors; ++color) {
    const std::size_t plane = blackFirst ? (color + 3) % 4 : color;
    EXPECT_TRUE(page.present.test(plane));
    std::vector<std::uint8_t> bytes = page.planes[plane];
    bytes.resize(std::size_t{format.lines} * page.LineBytes());  // blank lines at its end take none
    for (unsigned y = 0; y < format.lines; ++y) {
      for (unsigned x = 0; x < page.LineBytes() * 4; ++x) {
        const unsigned value = x < format.width ? ValueAt(noise, format, color, x, y) : 0;
        const unsigned level = format.bits == 1   ? 3 * value
                               : format.bits == 2 ? value
                                                  : LevelOf(static_cast<std::uint8_t>(value), x, y);
        ASSERT_EQ(level, (bytes[y * page.LineBytes() + x / 4] >> (6 - 2 * (x % 4))) & 3u)
            << "colour " << color << ", pixel " << x << ", line " << y;
      }
    }
  }
}

void ExpectRead(const RasterFormat& format, std::uint64_t seed) {
  SCOPED_TRACE(testing::Message() << "space " << format.space << ", " << format.bits
                                  << " bits, order " << format.order << ", width " << format.width
                                  << ", padding " << format.padding << ", mode " << format.mode);
  const std::vector<std::uint8_t> noise = NoiseFor(format, seed);
  const Outcome outcome = ReadAll(WriteRaster(format, noise));
  ASSERT_EQ(ReadResult::kEnd, outcome.end) << outcome.error;
  ASSERT_EQ(format.pages, outcome.pages.size());
  for (const RasterPage& page : outcome.pages) ExpectPage(format, noise, page);
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
        for (unsigned width = 1; width <= 54; width = width == 9 ? 47 : width + 1) {
          RasterFormat format{space, colors, bits, order};
          format.width = width;
          ExpectRead(format, seed);
        }
      }
    }
  }
}

TEST(RasterReader, SkipsThePaddingInFrontOfChunkedColours) {
  const std::uint64_t seed = TestSeed();
  for (const auto& [bits, colors, padding] : std::vector<std::array<unsigned, 3>>{
           {1, 4, 4}, {2, 3, 2}, {2, 6, 4}, {8, 3, 8}, {1, 1, 2}}) {
    RasterFormat format{static_cast<cups_cspace_t>(CUPS_CSPACE_DEVICE1 + colors - 1), colors, bits,
                        CUPS_ORDER_CHUNKED};
    format.padding = padding;
    ExpectRead(format, seed);
  }
}

TEST(RasterReader, ReadsSeveralPagesCompressedAndSwappedOnes) {
  const std::uint64_t seed = TestSeed();
  for (const cups_mode_t mode :
       {CUPS_RASTER_WRITE, CUPS_RASTER_WRITE_COMPRESSED, CUPS_RASTER_WRITE_PWG}) {
    RasterFormat format;
    format.mode = mode;  // PWG: compressed, and always in network byte order
    format.pages = 3;
    ExpectRead(format, seed);
  }
  const RasterFormat format;
  const std::vector<std::uint8_t> noise = NoiseFor(format, seed);
  const Outcome outcome = ReadAll(Swapped(WriteRaster(format, noise)));
  ASSERT_EQ(1u, outcome.pages.size()) << outcome.error;
  ExpectPage(format, noise, outcome.pages[0]);
  EXPECT_EQ(ReadResult::kEnd, outcome.end);
}

TEST(RasterReader, TellsTheEndFromAHeaderThatIsCutOff) {
  const std::vector<std::uint8_t> noise = NoiseFor({}, TestSeed());
  for (const cups_mode_t mode : {CUPS_RASTER_WRITE, CUPS_RASTER_WRITE_COMPRESSED}) {
    RasterFormat format;
    format.mode = mode;
    const std::string page = WriteRaster(format, noise);
    for (const std::size_t bytes : {0u, 1u, 1795u}) {
      SCOPED_TRACE(testing::Message() << "mode " << mode << ", " << bytes << " bytes of a header");
      const Outcome alone = ReadAll(page.substr(0, 4 + bytes));
      EXPECT_EQ(bytes == 0 ? ReadResult::kEnd : ReadResult::kError, alone.end);
      EXPECT_EQ(0u, alone.pages.size());
      const Outcome behind = ReadAll(page + page.substr(4, bytes));
      EXPECT_EQ(bytes == 0 ? ReadResult::kEnd : ReadResult::kError, behind.end);
      EXPECT_EQ(1u, behind.pages.size());
    }
  }
  EXPECT_EQ(ReadResult::kEnd, ReadAll("").end);
  EXPECT_EQ(ReadResult::kError, ReadAll("Ra").end);
}

// The numbers are none that the header's enumerations have room for.
TEST(RasterReader, NamesColorSpacesAndOrdersThatDoNotExist) {
  const RasterFormat format;
  const std::string whole = WriteRaster(format, NoiseFor(format, TestSeed()));
  const std::size_t spaceAt = 4 + offsetof(cups_page_header2_t, cupsColorSpace);
  const std::size_t orderAt = 4 + offsetof(cups_page_header2_t, cupsColorOrder);
  for (const auto& [at, error] :
       {std::pair{spaceAt,
                  "colour space 2054 is not read: only K, CMYK, KCMY and DEVICE1 to DEVICE8 are"},
        std::pair{orderAt, "colour order 2048 is not read"}}) {
    std::string stream = whole;
    stream[at + 1] = 8;
    const Outcome outcome = ReadAll(stream);
    EXPECT_EQ(ReadResult::kRefused, outcome.end);
    EXPECT_EQ(error, outcome.error);
  }
}

TEST(RasterReader, RefusesWhatItCannotTrust) {
  const RasterFormat format;
  const std::vector<std::uint8_t> noise = NoiseFor(format, TestSeed());
  const auto endOf = [&](const std::function<void(cups_page_header2_t*)>& change) {
    return ReadAll(WriteRaster(format, noise, change)).end;
  };
  for (const auto& change : std::vector<std::function<void(cups_page_header2_t*)>>{
           [](cups_page_header2_t* h) { h->cupsWidth = 0x7FFFFFFF; },
           [](cups_page_header2_t* h) { h->cupsWidth += 10; },  // its lines are too short for that
           [](cups_page_header2_t* h) { h->cupsHeight = 0x7FFFFFFF; },
           [](cups_page_header2_t* h) { h->HWResolution[0] = 600; },
           [](cups_page_header2_t* h) { h->cupsColorSpace = CUPS_CSPACE_RGB; },
       }) {
    const ReadResult end = endOf(change);
    EXPECT_TRUE(end == ReadResult::kRefused || end == ReadResult::kEnd);
  }
  EXPECT_EQ(ReadResult::kError, ReadAll("no raster at all, but some bytes").end);
  const std::string whole = WriteRaster(format, noise);
  const Outcome cut = ReadAll(whole.substr(0, whole.size() - 54));  // a line is of 53 bytes
  EXPECT_EQ(ReadResult::kTruncated, cut.end);
  EXPECT_EQ("the raster ends at line 5 of 7", cut.error);
  ASSERT_EQ(1u, cut.pages.size());
  EXPECT_EQ(5u, cut.pages[0].linesRead);
}

}  // namespace
}  // namespace qrn::tool
