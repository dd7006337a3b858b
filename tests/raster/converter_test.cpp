// The workers, with every kernel, against a slow reference, written pixel by pixel from where each
// pixel must land.
#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "params/feather_masks.h"
#include "raster/convert.h"
#include "raster/job_memory.h"
#include "raster/kernels.h"
#include "raster/pass_rows.h"
#include "raster/row_converters.h"
#include "support/job_fixture.h"
#include "support/test_seed.h"

namespace qrn {
namespace {

constexpr std::uint32_t kLines = 360;
constexpr std::uint8_t kUntouched = 0xA5;

using Bytes = std::vector<std::uint8_t>;

struct Mode {
  const char* name;
  std::uint32_t columnPixels, passesPerPhase, phases;
  std::uint32_t groupBytes, needBytes;
  void (*forward)(Job&, ConvertParams&);
  void (*reverse)(Job&, ConvertParams&);
  std::uint32_t (*lastColumn)(std::uint32_t bytes);  // R: reverse = R - forward
  std::uint32_t (*maskByte)(std::uint32_t i, std::uint32_t x,
                            std::uint32_t byteInGroup);  // of the feather mask
};

const Mode kModes[] = {
    {"three-pass", 3, 1, 3, 3, 3, Dual3Forward, Dual3Reverse,
     [](std::uint32_t w) { return 4 * ((w + 2) / 3) + 3; },
     [](std::uint32_t i, std::uint32_t x, std::uint32_t b) { return 4 * ((i + x) % 64) + b; }},
    {"four-pass", 4, 1, 4, 1, 1, Dual4Forward, Dual4Reverse, [](std::uint32_t w) { return w; },
     [](std::uint32_t i, std::uint32_t x, std::uint32_t) { return (i + x) % 256; }},
    {"six-pass", 6, 1, 6, 3, 3, Dual6Forward, Dual6Reverse,
     [](std::uint32_t w) { return 2 * (w / 3); },
     [](std::uint32_t i, std::uint32_t x, std::uint32_t) { return (i + x) % 256; }},
    {"eight-pass", 8, 1, 8, 2, 1, Dual8Forward, Dual8Reverse, [](std::uint32_t w) { return w / 2; },
     [](std::uint32_t i, std::uint32_t x, std::uint32_t) { return (i + x) % 256; }},
    // Phases from 3 on occur where a band has 8 passes or more; they place nothing.
    {"one head", 3, 2, 4, 3, 3, SingleForward, SingleReverse,
     [](std::uint32_t w) { return 4 * ((w + 2) / 3) - 1; },
     [](std::uint32_t i, std::uint32_t x, std::uint32_t) { return (x / 3 + i) % 256; }},
};

// Row A fires bit 5 in columns from 2 on, row B bit 1 in columns from 1 on, both through PHB.
constexpr PassRow kRowA = {1, 5, 0, 2, 0}, kRowB = {1, 1, 0, 1, 1};

struct PassSetup {
  const Mode* mode;
  std::uint32_t passIndex, width, featherRows;
  bool reverse;
  std::uint32_t phase() const { return passIndex / mode->passesPerPhase; }
};

// A job of one mode and width whose plane 0 has the lines of one pass.
class Converters : public JobFixture {
 protected:
  ~Converters() override {
    FreeJobMem(job);
    UseKernel(*Kernels().front());
  }

  void SetUpMode(const Mode& mode, std::uint32_t width, std::uint32_t featherRows) {
    FreeJobMem(job);
    job = Job{};
    job.nResY = 360;
    job.nLineBits = 8 * width;
    job.lineStride = (width + 3) / 4 * 4;
    job.passRightByte = width;
    job.dualHead = mode.passesPerPhase == 1 ? 1 : 0;
    job.passCount = static_cast<std::uint8_t>(mode.phases * mode.passesPerPhase);
    job.nResX = 254;  // 25 columns and more behind the image
    job.featherPercent = static_cast<std::uint8_t>((featherRows * 100 + 89) / 90);
    BuildFeatherMasks(job);
    ASSERT_EQ(featherRows, job.featherRows);
    AllocJobMem(job);
    TakeLog();
  }

  // Lines of no bytes have a place, too.
  std::size_t LinesBytes() const { return std::size_t{kLines} * job.lineStride + 1; }

  void Store(const Bytes& lines) {
    for (std::uint32_t line = 0; line < kLines; ++line)
      StoreRow(job, 0, line, lines.data() + std::size_t{line} * job.lineStride, job.lineStride);
  }

  Bytes Load() const {
    Bytes lines(LinesBytes());
    for (std::uint32_t line = 0; line < kLines; ++line)
      LoadRow(job, 0, line, lines.data() + std::size_t{line} * job.lineStride);
    return lines;
  }

  ConvertParams Run(const Mode& mode, std::uint32_t passIndex, bool reverse) {
    std::memset(job.PrintOutBuf, kUntouched, job.printOutBufSize);
    job.passIndex = static_cast<std::uint8_t>(passIndex);
    ConvertParams params{};
    params.rows[params.rowCount++] = kRowA;
    if (mode.passesPerPhase == 1) params.rows[params.rowCount++] = kRowB;
    (reverse ? mode.reverse : mode.forward)(job, params);
    return params;
  }

  void ExpectLikeReference(const PassSetup& setup, std::mt19937& random);
  void ExpectEveryPass(const Mode& mode, std::uint32_t width, std::uint32_t featherRows,
                       std::mt19937& random);
};

// Where the reference puts the pixels of a pass; changes lines and columns like the worker must.
void Reference(const PassSetup& setup, const Job& job, Bytes& lines, Bytes& out) {
  const Mode& mode = *setup.mode;
  for (std::uint32_t line = 0; line < kLines; ++line) {
    const std::uint32_t nozzle = line / 2;
    if (mode.passesPerPhase == 2 && line % 2 == 1) continue;
    std::uint8_t* bytes = lines.data() + std::size_t{line} * job.lineStride;
    for (std::uint32_t pixel = setup.phase(); pixel < 4 * job.lineStride;
         pixel += mode.columnPixels) {
      const std::uint32_t byte = pixel / 4, group = byte / mode.groupBytes * mode.groupBytes;
      if (group + mode.needBytes > setup.width || setup.phase() >= mode.columnPixels) continue;
      const std::uint32_t shift = 6 - 2 * (pixel % 4), level = (bytes[byte] >> shift) & 3u;
      if (nozzle >= kNozzles - setup.featherRows) {
        const std::uint32_t i = nozzle - (kNozzles - setup.featherRows);
        const std::uint8_t mask = job.pFeatherMask[256 * i + mode.maskByte(i, group, byte - group)];
        if (((mask >> shift) & 3u) == 0) continue;
      }
      if (level == 0) continue;
      const std::uint32_t forward = pixel / mode.columnPixels;
      const std::uint32_t column = setup.reverse ? mode.lastColumn(setup.width) - forward : forward;
      const PassRow& row = line % 2 == 0 ? kRowA : kRowB;
      std::uint8_t* dot = out.data() + std::size_t{720} * (column + row.column) + 2 * nozzle + 1;
      if (level != 1) dot[0] = static_cast<std::uint8_t>(dot[0] | 1u << row.slot);
      if (level != 2) dot[360] = static_cast<std::uint8_t>(dot[360] | 1u << row.slot);
      bytes[byte] = static_cast<std::uint8_t>(bytes[byte] & ~(3u << shift));
    }
  }
}

void Converters::ExpectLikeReference(const PassSetup& setup, std::mt19937& random) {
  Bytes lines(LinesBytes());
  const bool sparse = random() % 2 == 0;
  for (std::uint8_t& byte : lines)
    byte = static_cast<std::uint8_t>(sparse && random() % 16 != 0 ? 0 : random() & random());
  lines.back() = 0;
  Bytes wantedLines = lines, wantedOut(job.printOutBufSize);
  Reference(setup, job, wantedLines, wantedOut);

  const auto isZero = [](std::uint8_t byte) { return byte == 0; };
  for (const Kernel* kernel : Kernels()) {
    SCOPED_TRACE(kernel->name);
    UseKernel(*kernel);
    Store(lines);
    const ConvertParams written = Run(*setup.mode, setup.passIndex, setup.reverse);
    ASSERT_TRUE(Load() == wantedLines) << "pixels left in the lines";
    // What the worker has not written keeps its bytes, and has no dots.
    Bytes wanted = wantedOut;
    const auto first = wanted.begin() + static_cast<std::ptrdiff_t>(written.firstByte);
    const auto last = wanted.begin() + static_cast<std::ptrdiff_t>(written.endByte);
    ASSERT_TRUE(std::all_of(wanted.begin(), first, isZero) &&
                std::all_of(last, wanted.end(), isZero));
    std::fill(wanted.begin(), first, kUntouched);
    std::fill(last, wanted.end(), kUntouched);
    ASSERT_TRUE(std::equal(wanted.begin(), wanted.end(), job.PrintOutBuf)) << "dots";
  }
}

void Converters::ExpectEveryPass(const Mode& mode, std::uint32_t width, std::uint32_t featherRows,
                                 std::mt19937& random) {
  ASSERT_NO_FATAL_FAILURE(SetUpMode(mode, width, featherRows));
  for (std::uint32_t pass = 0; pass < mode.phases * mode.passesPerPhase; ++pass) {
    for (const bool reverse : {false, true}) {
      SCOPED_TRACE(testing::Message() << mode.name << ", pass " << pass << ", width " << width
                                      << ", reverse " << reverse << ", feathered " << featherRows);
      ASSERT_NO_FATAL_FAILURE(
          ExpectLikeReference({&mode, pass, width, featherRows, reverse}, random));
    }
  }
}

TEST_F(Converters, PlaceAndTakeWhatTheReferenceDoes) {
  std::mt19937 random(static_cast<std::uint32_t>(TestSeed()));
  for (const Mode& mode : kModes) {
    for (std::uint32_t width = 0; width <= 40; ++width) {
      for (const std::uint32_t featherRows : {0u, 9u, 90u})
        ASSERT_NO_FATAL_FAILURE(ExpectEveryPass(mode, width, featherRows, random));
    }
    // Wider than the masks, whose bytes come round, than a tile, and than a part of a run.
    for (const std::uint32_t width : {200u, 263u, 1601u})
      ASSERT_NO_FATAL_FAILURE(ExpectEveryPass(mode, width, 90, random));
  }
}

// Column, plane bits and taken pixels of single pixels, worked out by hand; row A begins in
// column 2.
struct HandPixel {
  const Mode* mode;
  std::uint32_t passIndex, width;
  bool reverse;
  std::uint32_t pixel, column;
};

TEST_F(Converters, PutSinglePixelsInTheirColumns) {
  const HandPixel pixels[] = {
      {&kModes[0], 0, 12, false, 0, 0},  {&kModes[0], 0, 12, false, 45, 15},
      {&kModes[0], 0, 12, true, 0, 19},  {&kModes[0], 0, 12, true, 45, 4},
      {&kModes[0], 0, 13, true, 0, 23},  {&kModes[0], 0, 13, true, 45, 8},
      {&kModes[1], 2, 12, true, 2, 12},  {&kModes[1], 2, 12, true, 46, 1},
      {&kModes[2], 3, 12, false, 9, 1},  {&kModes[2], 3, 12, false, 15, 2},
      {&kModes[2], 3, 12, true, 3, 8},   {&kModes[2], 3, 12, true, 9, 7},
      {&kModes[3], 5, 13, true, 5, 6},   {&kModes[3], 5, 13, true, 53, 0},
      {&kModes[3], 5, 13, false, 53, 6}, {&kModes[4], 1, 12, false, 45, 15},
      {&kModes[4], 1, 12, true, 0, 15},  {&kModes[4], 1, 12, true, 45, 0},
      {&kModes[4], 1, 13, true, 0, 19},  {&kModes[4], 5, 13, true, 47, 4},
  };
  for (const HandPixel& hand : pixels) {
    for (unsigned level = 1; level <= 3; ++level) {
      SCOPED_TRACE(testing::Message()
                   << hand.mode->name << ", pixel " << hand.pixel << ", level " << level);
      ASSERT_NO_FATAL_FAILURE(SetUpMode(*hand.mode, hand.width, 0));
      Bytes lines(LinesBytes());
      lines[hand.pixel / 4] = static_cast<std::uint8_t>(level << (6 - 2 * (hand.pixel % 4)));
      Store(lines);
      (void)Run(*hand.mode, hand.passIndex, hand.reverse);
      const std::uint8_t* const column = job.PrintOutBuf + 720 * (hand.column + kRowA.column) + 1;
      EXPECT_EQ(level >= 2 ? 0x20 : 0, column[0]);
      EXPECT_EQ(level != 2 ? 0x20 : 0, column[360]);
      EXPECT_TRUE(Load() == Bytes(lines.size()));
    }
  }
}

}  // namespace
}  // namespace qrn
