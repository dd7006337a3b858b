#include "reference/plain_geometry.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iterator>

namespace qrn::plain {
namespace {

constexpr std::uint32_t kResolutions[] = {1080, 1440, 1620, 2160};
constexpr std::uint32_t kBasePasses[] = {3, 4, 6, 8};

std::uint32_t Cut16(std::uint32_t value) { return value % 0x10000; }

bool IsInkOrderGood(const Geometry& g) {
  for (std::uint8_t color = 0; color < kColors; ++color) {
    if (std::count(g.ink[0], g.ink[2], color) != 2) return false;
  }
  return true;
}

bool IsTooWide(const std::uint8_t* block, const JobDesc& desc, Geometry& g) {
  const std::uint32_t travel600 = Word(block + 192, 4);
  const std::uint32_t margin = block[93] != 0 ? 0 : Word(block + 116, 2);
  const std::uint32_t travelMm = travel600 != 0 ? travel600 * 254 / 6000 : 2150;
  const std::uint32_t reserveMm = margin * 1016 / 6000 + 195 + (block[91] % 16 != 0 ? 60 : 0);
  g.maxPrintMm = travelMm > reserveMm ? Cut16(travelMm - reserveMm) : 0;
  return Cut16(desc.lineBits / 2 * 254 / (desc.resX * 10)) > g.maxPrintMm;
}

void SetHeads(const std::uint8_t* block, Geometry& g) {
  g.twoHeads = block[90] / 16 == 3;
  g.singleHead = g.twoHeads ? 4 : block[90] / 16 % 2 == 1 ? 0 : block[90] / 32 % 2 == 1 ? 1 : 4;
  g.mirrored = block[91] / 16 == 1;
  g.bidirectional = block[83] == 1;
  g.fixedDir = block[87] / 32 % 2;
  std::memcpy(g.ink, block + 9, sizeof g.ink);
  constexpr std::uint8_t kDefault[] = {3, 3, 0, 0, 4, 4, 7, 7, 1, 1, 5, 5, 2, 2, 6, 6};
  const bool none = std::count(block + 9, block + 25, 0) == 16;
  if (g.twoHeads && none) std::memcpy(g.ink, kDefault, sizeof kDefault);
}

// `passes`: before they are doubled for one head.
void SetColumns(const std::uint8_t* block, const JobDesc& desc, std::uint32_t passes, Geometry& g) {
  const std::uint32_t resIndex = ResolutionIndexOf(desc.resX);
  g.resFactor = static_cast<float>(desc.resX) * 0.0033333334f;
  const int base = 33120 / static_cast<int>(2 * desc.resX / passes);
  g.speed = static_cast<std::uint8_t>(10 + (base - 10) * block[82] / 10);
  g.headGapX = desc.resX * 1400 / 254 / passes + block[50 + resIndex];
  g.headGapY = block[45 + 1 + resIndex];
  g.margin = desc.resX * 640 / 254;
  if (block[91] % 16 == 1 && g.singleHead == 1) g.margin = Cut16(g.margin + passes * g.headGapX);
  // From row 7 on the gaps are 53 and 180 of 1/600 inch alternately; half columns round down.
  for (std::uint32_t row = 0, sixHundredths = 0; row < kSlots; ++row) {
    const std::uint32_t dots = sixHundredths * desc.resX;
    g.rowOffset[7 - row] = (2 * dots + 600 * passes - 1) / (2 * 600 * passes);
    sixHundredths += row % 2 == 0 ? 53 : 180;
  }
}

void SetBand(const std::uint8_t* block, const JobDesc& desc, std::uint32_t passes, Geometry& g) {
  g.featherRows = block[109] > 100 ? 0 : block[109] * 90u / 100;
  const std::uint32_t wholeLines = 2 * (kJets - g.featherRows);
  if (g.twoHeads) {
    g.columnPixels = g.passCount = passes;
    g.passStep = wholeLines / passes;
    g.firstLineRow = 720 - g.headGapY;
    g.checkRows = 2 * desc.resY;
  } else {
    g.columnPixels = 3;
    g.passCount = 2 * passes;
    g.passStep = wholeLines / g.passCount + 1;
    if (g.passStep * g.passCount > desc.resY) g.passStep -= g.passCount;
    g.firstLineRow = g.checkRows = desc.resY;
  }
  g.bandLines = g.passCount * g.passStep;
  g.rows = 4 * desc.resY;
}

void SetSizes(const JobDesc& desc, Geometry& g) {
  g.height = desc.height;
  g.lineBits = desc.lineBits;
  g.lineBytes = desc.lineBits / 8;
  g.lineStride = (desc.lineBits + 31) / 32 * 4;
  g.passRight = g.lineBytes + (g.twoHeads ? g.headGapX * g.passCount / 4 : 0);
  g.rowPad = Cut16(g.rowOffset[0] * g.passCount / 2);
  const std::uint32_t bits = g.twoHeads ? 8 * g.passRight : g.lineBits;
  const std::uint32_t padDots = g.rowOffset[0] * g.columnPixels / 2;
  const std::uint64_t quarters = bits + 4ull * (64 * g.columnPixels + padDots);
  g.swathBytes = static_cast<std::uint32_t>((quarters * 360 / g.columnPixels + 319) / 320 * 320);
}

}  // namespace

std::uint32_t Word(const std::uint8_t* bytes, int count) {
  return count == 0 ? 0 : bytes[0] + 256 * Word(bytes + 1, count - 1);
}

std::uint32_t ResolutionIndexOf(std::uint32_t resX) {
  return static_cast<std::uint32_t>(
      std::find(std::begin(kResolutions), std::end(kResolutions), resX) - kResolutions);
}

std::uint32_t CalibrationOf(const std::uint8_t* block) {
  return block[8] > 4 ? 0 : block[72 + block[8]] + 256u * block[77];
}

// Long multiplication by the factor, a whole number of 2^-45, and long division in one.
std::uint16_t StepsOf(std::uint32_t lines, std::uint32_t stepBase, std::uint32_t calib,
                      std::uint32_t resY) {
  const auto factor = static_cast<std::uint64_t>(std::ldexp(253.99999187200024, 45));
  const std::uint64_t product = std::uint64_t{lines} * stepBase, divisor = calib * resY;
  std::uint64_t steps = 0, rest = 0;
  for (int bit = 63; bit >= 0; --bit) {
    rest = 2 * rest + (factor >> bit & 1) * product;
    steps = 2 * steps + rest / divisor;
    rest %= divisor;
  }
  return static_cast<std::uint16_t>(steps >> 45);
}

Geometry GeometryOf(const std::uint8_t* block, const JobDesc& desc) {
  Geometry g{};
  const auto refused = [&g](int error) {
    g.error = error;
    return g;
  };
  if (Word(block + 204, 2) != 0x5213) return refused(3);
  if (ResolutionIndexOf(desc.resX) == 4) return refused(0);
  const std::uint32_t passes = kBasePasses[ResolutionIndexOf(desc.resX)];
  SetHeads(block, g);
  SetColumns(block, desc, passes, g);
  if (block[91] / 16 > 1 || desc.colors != kColors || desc.bitsPerPixel != 2) return refused(32);
  if (desc.resY >= 1 && desc.resY <= 359) return refused(32);
  SetBand(block, desc, passes, g);
  if (IsTooWide(block, desc, g)) return refused(4);
  if (desc.resY == 0 || CalibrationOf(block) == 0) return refused(29);
  if (g.twoHeads && !IsInkOrderGood(g)) return refused(35);
  SetSizes(desc, g);
  g.accepted = true;
  return g;
}

}  // namespace qrn::plain
