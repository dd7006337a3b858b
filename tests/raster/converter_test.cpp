// The nozzle-row converters against a slow reference, written pixel by pixel from where each pixel
// must land.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

#include "params/feather_masks.h"
#include "raster/convert.h"
#include "raster/row_converters.h"
#include "support/test_seed.h"

namespace qrn {
namespace {

constexpr std::uint32_t kLines = 360;
constexpr std::uint8_t kGuard = 0xA5;
constexpr std::size_t kGuardBytes = 64;

struct Mode {
  const char* name;
  std::uint32_t columnPixels, passesPerPhase, phases;
  std::uint32_t groupBytes, needBytes;
  void (*forward)(Job&, ConvertParams&);
  void (*reverse)(Job&, ConvertParams&);
  std::uint16_t colStep;
  std::uint32_t (*lastColumn)(std::uint32_t bytes);  // R: reverse = R - forward
  std::uint32_t (*maskByte)(std::uint32_t i, std::uint32_t x,
                            std::uint32_t byteInGroup);  // of the feather mask
};

const Mode kModes[] = {
    {"three-pass", 3, 1, 3, 3, 3, Dual3Forward, Dual3Reverse, 2880,
     [](std::uint32_t w) { return 4 * ((w + 2) / 3) + 3; },
     [](std::uint32_t i, std::uint32_t x, std::uint32_t b) { return 4 * ((i + x) % 64) + b; }},
    {"four-pass", 4, 1, 4, 1, 1, Dual4Forward, Dual4Reverse, 720, [](std::uint32_t w) { return w; },
     [](std::uint32_t i, std::uint32_t x, std::uint32_t) { return (i + x) % 256; }},
    {"six-pass", 6, 1, 6, 3, 3, Dual6Forward, Dual6Reverse, 1440,
     [](std::uint32_t w) { return 2 * (w / 3); },
     [](std::uint32_t i, std::uint32_t x, std::uint32_t) { return (i + x) % 256; }},
    {"eight-pass", 8, 1, 8, 2, 1, Dual8Forward, Dual8Reverse, 720,
     [](std::uint32_t w) { return w / 2; },
     [](std::uint32_t i, std::uint32_t x, std::uint32_t) { return (i + x) % 256; }},
    // Phases from 3 on occur where a band has 8 passes or more; they place nothing.
    {"one head", 3, 2, 4, 3, 3, SingleForward, SingleReverse, 2880,
     [](std::uint32_t w) { return 4 * ((w + 2) / 3) - 1; },
     [](std::uint32_t i, std::uint32_t x, std::uint32_t) { return (x / 3 + i) % 256; }},
};

// A buffer with guard bytes around it.
struct Guarded {
  explicit Guarded(std::size_t size) : all(size + 2 * kGuardBytes, kGuard), bytes(size) {
    std::memset(data(), 0, bytes);
  }
  std::uint8_t* data() { return all.data() + kGuardBytes; }
  std::vector<std::uint8_t> all;
  std::size_t bytes;
};

struct PassSetup {
  const Mode* mode;
  std::uint32_t passIndex, width, featherRows;
  bool reverse, evenStep;
  std::uint32_t phase() const { return passIndex / mode->passesPerPhase; }
  bool oneHead() const { return mode->passesPerPhase == 2; }
  // One head: reverse passes of even steps take the odd lines first.
  bool oddLines() const { return oneHead() && reverse && evenStep && passIndex % 2 == 0; }
  std::uint32_t stride() const { return (width + 3) / 4 * 4; }
  std::size_t columns() const { return 4 * ((width + 2) / 3) + 8; }
};

// Where the reference puts the pixels; changes both buffers like the worker must.
void Reference(const PassSetup& setup, Job& job, Guarded& lines, Guarded& out, std::size_t outA,
               std::size_t outB) {
  const Mode& mode = *setup.mode;
  for (std::uint32_t line = 0; line < kLines; ++line) {
    const std::uint32_t nozzle = line / 2;
    if (setup.oneHead() && (line % 2 == 1) != setup.oddLines()) continue;
    std::uint8_t* bytes = lines.data() + std::size_t{line} * setup.stride();
    for (std::uint32_t pixel = 0; pixel < 4 * setup.stride(); ++pixel) {
      const std::uint32_t byte = pixel / 4, group = byte / mode.groupBytes * mode.groupBytes;
      if (group + mode.needBytes > setup.width || pixel % mode.columnPixels != setup.phase())
        continue;
      const std::uint32_t shift = 6 - 2 * (pixel % 4), level = (bytes[byte] >> shift) & 3u;
      const bool feathered = nozzle >= kNozzles - setup.featherRows;
      if (feathered) {
        const std::uint32_t i = nozzle - (kNozzles - setup.featherRows);
        const std::uint8_t mask = job.pFeatherMask[256 * i + mode.maskByte(i, group, byte - group)];
        if (((mask >> shift) & 3u) == 0) continue;
      }
      if (level == 0) continue;
      const std::uint32_t forward = pixel / mode.columnPixels;
      const std::uint32_t column = setup.reverse ? mode.lastColumn(setup.width) - forward : forward;
      const bool rowA = line % 2 == 0 || setup.oneHead();
      std::uint8_t* dot =
          out.data() + (rowA ? outA : outB) + std::size_t{720} * column + 2 * nozzle;
      const std::uint8_t bit = rowA ? job.rowBitA : job.rowBitB;
      if (level != 1) dot[0] |= bit;
      if (level != 2) dot[360] |= bit;
      bytes[byte] = static_cast<std::uint8_t>(bytes[byte] & ~(3u << shift));
    }
  }
}

void ExpectLikeReference(const PassSetup& setup, std::mt19937& random) {
  Job job{};
  job.lineStride = setup.stride();
  job.passRightByte = setup.width;
  job.passIndex = static_cast<std::uint8_t>(setup.passIndex);
  job.passStep = setup.evenStep ? 38 : 55;
  job.featherPercent = static_cast<std::uint8_t>((setup.featherRows * 100 + 89) / 90);
  BuildFeatherMasks(job);
  ASSERT_EQ(setup.featherRows, job.featherRows);
  job.rowBitA = 0x20;
  job.rowBitB = 0x02;

  Guarded lines(std::size_t{kLines} * setup.stride()), out(720 * setup.columns());
  for (std::size_t i = 0; i < lines.bytes; ++i)
    lines.data()[i] = static_cast<std::uint8_t>(random() & random());
  Guarded wantedLines = lines, wantedOut = out;
  const std::size_t outA = 720 * 2 + 1, outB = 720 * 1 + 1;  // row stagger, bytes of PHB
  Reference(setup, job, wantedLines, wantedOut, outA, outB);

  ConvertParams params{};
  params.pLine = lines.data();
  params.nozzleCount = static_cast<std::uint16_t>(kNozzles - setup.featherRows);
  params.colStep = setup.mode->colStep;
  job.pOutA = out.data() + outA;
  job.pOutB = out.data() + outB;
  (setup.reverse ? setup.mode->reverse : setup.mode->forward)(job, params);
  ASSERT_TRUE(lines.all == wantedLines.all) << "pixels left in the lines";
  ASSERT_TRUE(out.all == wantedOut.all) << "dots";
}

void ExpectEveryPass(const Mode& mode, std::uint32_t width, std::uint32_t featherRows,
                     std::mt19937& random) {
  for (std::uint32_t pass = 0; pass < mode.phases * mode.passesPerPhase; ++pass) {
    for (const bool reverse : {false, true}) {
      for (const bool evenStep : {false, true}) {
        if (evenStep && mode.passesPerPhase == 1) continue;  // makes no difference to two heads
        SCOPED_TRACE(testing::Message()
                     << mode.name << ", pass " << pass << ", width " << width << ", reverse "
                     << reverse << ", feathered " << featherRows << ", even step " << evenStep);
        ExpectLikeReference({&mode, pass, width, featherRows, reverse, evenStep}, random);
        if (testing::Test::HasFatalFailure()) return;
      }
    }
  }
}

TEST(Converters, PlaceAndClearWhatTheReferenceDoes) {
  std::mt19937 random(static_cast<std::uint32_t>(TestSeed()));
  for (const Mode& mode : kModes) {
    for (std::uint32_t width = 0; width <= 40; ++width) {
      for (const std::uint32_t featherRows : {0u, 1u, 9u, 45u, 90u}) {
        ExpectEveryPass(mode, width, featherRows, random);
        if (testing::Test::HasFatalFailure()) return;
      }
    }
    // Wider than the masks: their bytes come round.
    for (const std::uint32_t width : {200u, 263u}) {
      ExpectEveryPass(mode, width, 90, random);
      if (testing::Test::HasFatalFailure()) return;
    }
  }
}

// Column, plane bits and cleared pixels of single pixels, worked out by hand.
struct HandPixel {
  const Mode* mode;
  std::uint32_t passIndex, width;
  bool reverse;
  std::uint32_t pixel, column;
};

TEST(Converters, PutSinglePixelsInTheirColumns) {
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
    for (std::uint32_t level = 1; level <= 3; ++level) {
      Job job{};
      job.lineStride = (hand.width + 3) / 4 * 4;
      job.passRightByte = hand.width;
      job.passIndex = static_cast<std::uint8_t>(hand.passIndex);
      job.rowBitA = 1;
      BuildFeatherMasks(job);
      std::vector<std::uint8_t> lines(std::size_t{kLines} * job.lineStride), out(720 * 32);
      lines[hand.pixel / 4] = static_cast<std::uint8_t>(level << (6 - 2 * (hand.pixel % 4)));
      ConvertParams params{};
      params.pLine = lines.data();
      params.nozzleCount = 180;
      params.colStep = hand.mode->colStep;
      job.pOutA = job.pOutB = out.data();
      (hand.reverse ? hand.mode->reverse : hand.mode->forward)(job, params);
      SCOPED_TRACE(testing::Message()
                   << hand.mode->name << ", pixel " << hand.pixel << ", level " << level);
      EXPECT_EQ(level >= 2 ? 1 : 0, out[720 * hand.column]);
      EXPECT_EQ(level != 2 ? 1 : 0, out[720 * hand.column + 360]);
      EXPECT_EQ(0, lines[hand.pixel / 4]);
    }
  }
}

}  // namespace
}  // namespace qrn
