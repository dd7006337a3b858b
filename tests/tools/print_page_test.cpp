// print-page's readers: rasters in every order and depth, slots, settings.
#include <cups/raster.h>
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <random>

#include "print_page/input.h"
#include "print_page/options.h"
#include "print_page/page.h"
#include "print_page/raster_reader.h"
#include "print_page/settings.h"
#include "print_page/temporary_folder.h"
#include "support/test_seed.h"

namespace qrn::tool {
namespace {

struct Format {
  cups_cspace_t space;
  unsigned colors, bits;
  cups_order_t order;
};

constexpr unsigned kWidth = 53, kLines = 7;

// The value of a colour at a place, the same however the raster is ordered.
unsigned ValueAt(const std::vector<std::uint8_t>& noise, const Format& format, unsigned color,
                 unsigned x, unsigned y) {
  return noise[(color * kLines + y) * kWidth + x] & ((1u << format.bits) - 1u);
}

std::string WriteRaster(const Format& format, const std::vector<std::uint8_t>& noise,
                        const std::function<void(cups_page_header2_t*)>& change = {}) {
  cups_page_header2_t header{};
  header.cupsColorSpace = format.space;
  header.cupsColorOrder = format.order;
  header.cupsBitsPerColor = format.bits;
  header.cupsBitsPerPixel =
      format.order == CUPS_ORDER_CHUNKED ? format.bits * format.colors : format.bits;
  header.cupsNumColors = format.colors;
  header.cupsWidth = kWidth;
  header.cupsHeight = kLines;
  header.HWResolution[0] = 1440;
  header.HWResolution[1] = 360;
  const unsigned planeBytes = (kWidth * format.bits + 7) / 8;
  const bool chunked = format.order == CUPS_ORDER_CHUNKED,
             banded = format.order == CUPS_ORDER_BANDED;
  header.cupsBytesPerLine = chunked  ? (kWidth * header.cupsBitsPerPixel + 7) / 8
                            : banded ? planeBytes * format.colors
                                     : planeBytes;
  if (change) change(&header);

  std::string stream;
  cups_raster_t* raster = cupsRasterOpenIO(
      [](void* context, unsigned char* bytes, size_t count) {
        static_cast<std::string*>(context)->append(reinterpret_cast<char*>(bytes), count);
        return static_cast<ssize_t>(count);
      },
      &stream, CUPS_RASTER_WRITE);
  cupsRasterWriteHeader2(raster, &header);
  const unsigned rounds = format.order == CUPS_ORDER_PLANAR ? format.colors : 1;
  for (unsigned round = 0; round < rounds; ++round) {
    for (unsigned y = 0; y < kLines; ++y) {
      std::vector<std::uint8_t> line(header.cupsBytesPerLine);
      for (unsigned x = 0; x < kWidth; ++x) {
        for (unsigned color = 0; color < format.colors; ++color) {
          if (rounds > 1 && color != round) continue;
          const unsigned bit = chunked  ? (x * format.colors + color) * format.bits
                               : banded ? color * planeBytes * 8 + x * format.bits
                                        : x * format.bits;
          const unsigned value = ValueAt(noise, format, color, x, y);
          if (bit / 8 < line.size())
            line[bit / 8] |= static_cast<std::uint8_t>(value << (8 - format.bits - bit % 8));
        }
      }
      cupsRasterWritePixels(raster, line.data(), header.cupsBytesPerLine);
    }
  }
  cupsRasterClose(raster);
  return stream;
}

ReadResult ReadPage(std::string stream, RasterPage* page, std::string* error) {
  RasterReader reader([&stream](std::uint8_t* buffer, std::size_t bytes) {
    const std::size_t taken = std::min(bytes, stream.size());
    std::memcpy(buffer, stream.data(), taken);
    stream.erase(0, taken);
    return static_cast<std::ptrdiff_t>(taken);
  });
  return reader.NextPage(1440, page, error);
}

std::vector<std::uint8_t> Noise() {
  std::mt19937_64 random(TestSeed());
  std::vector<std::uint8_t> noise(8 * kLines * kWidth);
  for (auto& byte : noise) byte = static_cast<std::uint8_t>(random());
  return noise;
}

TEST(RasterReader, ReadsEveryOrderDepthAndColourSpace) {
  const std::vector<std::uint8_t> noise = Noise();
  for (const auto& [space, colors] :
       std::vector<std::pair<cups_cspace_t, unsigned>>{{CUPS_CSPACE_K, 1},
                                                       {CUPS_CSPACE_CMYK, 4},
                                                       {CUPS_CSPACE_KCMY, 4},
                                                       {CUPS_CSPACE_DEVICE1, 1},
                                                       {CUPS_CSPACE_DEVICE8, 8}}) {
    for (const unsigned bits : {1u, 2u, 8u}) {
      for (const cups_order_t order : {CUPS_ORDER_CHUNKED, CUPS_ORDER_BANDED, CUPS_ORDER_PLANAR}) {
        SCOPED_TRACE(testing::Message()
                     << "space " << space << ", " << bits << " bits, order " << order);
        const Format format{space, colors, bits, order};
        RasterPage page;
        std::string error;
        ASSERT_EQ(ReadResult::kPage, ReadPage(WriteRaster(format, noise), &page, &error)) << error;
        EXPECT_EQ(24u, page.LineBytes());  // 53 pixels, widened to 96
        const bool blackFirst = space == CUPS_CSPACE_K || space == CUPS_CSPACE_KCMY;
        for (unsigned color = 0; color < colors; ++color) {
          const auto& plane = page.planes[blackFirst ? (color + 3) % 4 : color];
          for (unsigned y = 0; y < kLines; ++y) {
            for (unsigned x = 0; x < 96; ++x) {
              const unsigned value = x < kWidth ? ValueAt(noise, format, color, x, y) : 0;
              const unsigned level = bits == 1   ? 3 * value
                                     : bits == 2 ? value
                                                 : LevelOf(static_cast<std::uint8_t>(value), x, y);
              ASSERT_EQ(level, (plane[y * 24 + x / 4] >> (6 - 2 * (x % 4))) & 3u)
                  << color << " " << x << " " << y;
            }
          }
        }
      }
    }
  }
}

TEST(RasterReader, RefusesWhatItCannotTrust) {
  const Format format{CUPS_CSPACE_CMYK, 4, 2, CUPS_ORDER_CHUNKED};
  const std::vector<std::uint8_t> noise = Noise();
  RasterPage page;
  std::string error;
  struct Case {
    std::function<void(cups_page_header2_t*)> change;
  };
  for (const Case& hostile : {
           Case{[](cups_page_header2_t* h) { h->cupsWidth = 0x7FFFFFFF; }},
           Case{[](cups_page_header2_t* h) {
             h->cupsWidth = kWidth + 10;
           }},  // its lines are too short for that
           Case{[](cups_page_header2_t* h) { h->cupsHeight = 0x7FFFFFFF; }},
           Case{[](cups_page_header2_t* h) { h->HWResolution[0] = 600; }},
           Case{[](cups_page_header2_t* h) { h->cupsColorSpace = CUPS_CSPACE_RGB; }},
       }) {
    const ReadResult result = ReadPage(WriteRaster(format, noise, hostile.change), &page, &error);
    EXPECT_TRUE(result == ReadResult::kError || result == ReadResult::kEnd);
  }
  const std::string whole = WriteRaster(format, noise);
  EXPECT_EQ(ReadResult::kTruncated, ReadPage(whole.substr(0, whole.size() - 30), &page, &error));
  EXPECT_NE(std::string::npos, error.find("of 7")) << error;
  EXPECT_LT(page.linesRead, kLines);
  EXPECT_NE(ReadResult::kPage, ReadPage("no raster at all, but some bytes", &page, &error));
}

TEST(Levels, DitherToTheInksShareAndKeepTheEnds) {
  for (unsigned ink = 0; ink < 256; ++ink) {
    unsigned sum = 0;
    for (unsigned place = 0; place < 64; ++place)
      sum += LevelOf(static_cast<std::uint8_t>(ink), place % 8, place / 8);
    EXPECT_NEAR(ink * 3.0 / 255.0, sum / 64.0, 1.0 / 64);
  }
}

TEST(Options, SlotsAreReadOrRefused) {
  SlotMap slots;
  std::string error;
  ASSERT_TRUE(ParseSlots("3,-,0", &slots, &error));
  EXPECT_EQ((SlotMap{3, kBlank, 0, kBlank, kBlank, kBlank, kBlank, kBlank}), slots);
  for (const char* text : {"8", "a", "0,,1", "0,1,2,3,4,5,6,7,0"})
    EXPECT_FALSE(ParseSlots(text, &slots, &error)) << text;
}

TEST(Settings, AreTakenOrRefusedByName) {
  const TemporaryFolder folder;
  const std::string path = folder.Path("printer.toml");
  const auto load = [&](const char* text, sim::Machine* machine) {
    std::ofstream(path) << text;
    std::string error;
    return LoadSettings(path, machine, &error) ? std::string() : error;
  };
  sim::Machine machine;
  EXPECT_EQ("",
            load("heads = 'phb'\nhead_gap_x = [1, 2, 3, 4]\nhead_gap_y = 7\nbidirectional = false\n"
                 "ink_order_phb = [1,1,2,2,3,3,4,4]",
                 &machine));
  EXPECT_EQ(sim::Heads::kPhb, machine.heads);
  EXPECT_EQ(4, machine.headGapX[3]);
  EXPECT_EQ(7, machine.headGapY[0]);
  EXPECT_FALSE(machine.bidirectional);
  for (const char* text :
       {"speed = 256", "speed = -1", "speed = 'fast'", "heads = 'three'", "head_gap_x = [1,2]",
        "ink_order_pha = [8,0,0,0,0,0,0,0]", "colour = 3", "speed = "}) {
    const std::string error = load(text, &machine);
    EXPECT_EQ(0u, error.find("'" + path + "': ")) << text << ": " << error;
    EXPECT_EQ(std::string::npos, error.find('\n'));
  }
  // The documented example is what a machine is without settings.
  sim::Machine example;
  std::string error;
  ASSERT_TRUE(LoadSettings(QRN_SAMPLES_DIR "/printer.toml", &example, &error)) << error;
  EXPECT_EQ(ParameterBlock(sim::Machine{}), ParameterBlock(example));
}

TEST(Input, IsToldByItsFirstBytesAndNamedWhenItCannotBeRead) {
  EXPECT_EQ(InputKind::kRaster, KindOf("2SaR...."));
  EXPECT_EQ(InputKind::kDocument, KindOf("%PDF-1.7"));
  EXPECT_EQ(InputKind::kPicture, KindOf(std::string("II*\0", 4)));
  EXPECT_EQ(InputKind::kUnknown, KindOf("hello"));
  const TemporaryFolder folder;
  const std::string path = folder.Path("page");
  std::string error;
  EXPECT_EQ(nullptr, Input::Open(path, 1440, &error));
  EXPECT_EQ("'" + path + "': No such file or directory", error);
  std::ofstream(path) << "hello";
  EXPECT_EQ(nullptr, Input::Open(path, 1440, &error));
  EXPECT_EQ(0u, error.find("'" + path + "': is none of"));
}

}  // namespace
}  // namespace qrn::tool
