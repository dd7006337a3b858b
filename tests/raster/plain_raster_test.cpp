// The raster, with every kernel, beside the plain one of tests/reference: the same lines go into
// both, and every pass must give the same bytes and leave the same pixels, band after band.
#include "reference/plain_raster.h"

#include <algorithm>
#include <cstring>
#include <optional>
#include <random>
#include <vector>

#include "params/feather_masks.h"
#include "params/image_mode.h"
#include "raster/band.h"
#include "raster/job_memory.h"
#include "raster/kernels.h"
#include "raster/line_intake.h"
#include "raster/pass_rows.h"
#include "raster/pass_size.h"
#include "support/job_fixture.h"
#include "support/test_seed.h"

namespace qrn {
namespace {

using Bytes = std::vector<std::uint8_t>;

struct ImageSetup {
  bool oneHead;
  std::uint8_t passCount;  // of two heads
  std::uint32_t widthBytes, restBits, featherRows;
  bool mirrored, sharedRows;
};

class BesidePlain : public JobFixture {
 protected:
  ~BesidePlain() override {
    FreeJobMem(job);
    UseKernel(*Kernels().front());
  }

  void SetUpJob(const ImageSetup& setup) {
    FreeJobMem(job);
    job = Job{};
    job.nSwathLimit = UINT32_MAX;
    job.nHeight = UINT32_MAX;
    job.nResX = 381;  // room for 600 columns after the image
    job.nResY = 360;
    job.nColors = 8;
    job.nBitsPerPixel = 2;
    job.nLineBits = 8 * setup.widthBytes + setup.restBits;
    job.lineStride = (job.nLineBits + 31) / 32 * 4;
    job.dualHead = setup.oneHead ? 0 : 1;
    job.passCount = setup.passCount;
    job.headMirror = setup.mirrored ? 1 : 0;
    job.headGapX = static_cast<std::uint16_t>(random() % 70);
    job.headGapY = static_cast<std::uint8_t>(random() % 60);
    constexpr std::uint8_t kSingleHeads[] = {0, 1, 4};  // 4: neither is in use
    job.singleHead = kSingleHeads[random() % 3];
    job.featherPercent = static_cast<std::uint8_t>((setup.featherRows * 100 + 89) / 90);
    std::uint16_t offset = 0;
    for (int row = 7; row >= 0; --row) {
      job.rowOffset[row] = offset;
      offset = static_cast<std::uint16_t>(offset + random() % 40);
    }
    SetInks(setup.oneHead, setup.sharedRows);
    ASSERT_TRUE(CheckImageMode(job));
    AllocJobMem(job);
    TakeLog();
    plain.emplace(job);
  }

  // With two heads each colour twice; only a shuffle over both heads makes colours share rows.
  void SetInks(bool oneHead, bool sharedRows) {
    std::uint8_t inks[16];
    for (std::uint8_t i = 0; i < 16; ++i) inks[i] = i % 8;
    std::shuffle(inks, inks + 8, random);
    for (int i = 0; i < 8; ++i) inks[8 + i] = inks[i];
    if (!oneHead) {
      for (int i = 0; i < 8; ++i) inks[i] = inks[i / 2 * 2 + 8];  // two rows of a colour on PHA
      std::uint8_t left = 8;
      for (std::uint8_t color = 0; color < 8; ++color) {
        if (std::find(inks, inks + 8, color) != inks + 8) continue;
        inks[left] = inks[left + 1u] = color;
        left = static_cast<std::uint8_t>(left + 2);
      }
      if (sharedRows) std::shuffle(inks, inks + 16, random);
    }
    std::memcpy(job.inkOrder, inks, sizeof inks);
    std::memcpy(job.inkOrder[3], inks, 8);  // what counts when neither head is in use
  }

  // A line of every kind: blank, dense, a few dots, ink in one stretch; often shorter than a row.
  Bytes DrawLine() {
    Bytes line(1 + random() % (job.lineStride + 8));
    if (random() % 3 != 0) line.resize(job.lineStride);
    const auto kind = random() % 4;
    for (std::size_t i = 0; i < line.size(); ++i) {
      const auto byte = static_cast<std::uint8_t>(random() & random());
      const bool inked =
          kind == 1 || (kind == 2 && byte % 16 == 1) || (kind == 3 && i / 40 == line.size() / 80);
      line[i] = inked ? byte : 0;
    }
    return line;
  }

  void AddLineToBoth(std::uint32_t plane, std::uint32_t row, const Bytes& line) {
    const auto bytes = std::min(static_cast<std::uint32_t>(line.size()), job.lineStride);
    StoreRow(job, plane, row, line.data(), bytes);
    std::memcpy(plain->Row(plane, row), line.data(), bytes);
  }

  void FillBand() {
    std::vector<Bytes> lines(37);
    for (Bytes& line : lines) line = DrawLine();
    const auto rows = static_cast<std::uint32_t>(random() % 4 == 0 ? 5 : job.swathH);
    for (std::uint32_t row = 0; row < rows; ++row) {
      for (std::uint32_t plane = 0; plane < kPlanes; ++plane) {
        const std::size_t draw = random();
        if (draw % 8 != 0) AddLineToBoth(plane, job.historyRows + row, lines[draw / 8 % 37]);
        if (draw % 32 == 1) AddLineToBoth(plane, job.historyRows + row, lines[draw / 512 % 37]);
      }
    }
  }

  void ExpectSamePass() {
    Job& other = plain->Record();
    other.passNo = job.passNo;
    other.passDir = job.passDir = static_cast<std::uint8_t>(random() % 2);
    std::memset(job.PrintOutBuf, 0xA5, job.printOutBufSize);
    plain->ConvertPass();
    ConvertPass(job);
    ++job.passNo;
    ASSERT_EQ(other.passEmpty, job.passEmpty);
    if (job.passEmpty == 1) {
      ASSERT_TRUE(plain->IsPassBlankByteByByte());
      ++blankPasses;
      return;
    }
    ASSERT_EQ(other.passDataSize, job.passDataSize);
    ASSERT_EQ(other.passRightByte, job.passRightByte);
    const auto [wanted, got] =
        std::mismatch(plain->PrintOut(), plain->PrintOut() + SwathDataSize(job), job.PrintOutBuf);
    const auto at = wanted - plain->PrintOut();
    ASSERT_EQ(SwathDataSize(job), at)
        << "column " << at / 720 << ", byte " << at % 720 << ": " << int{*wanted} << " became "
        << int{*got} << ", direction " << int{job.passDir};
    // All columns with dots travel.
    const std::uint8_t* const end = plain->PrintOut() + job.printOutBufSize;
    ASSERT_EQ(end, std::find_if(wanted, end, [](std::uint8_t byte) { return byte != 0; }));
  }

  void ExpectSameRows() {
    Bytes line(job.lineStride + 1);  // lines of no bytes have a place, too
    for (std::uint32_t row = 0; row < 1440; ++row) {
      for (std::uint32_t plane = 0; plane < kPlanes; ++plane) {
        LoadRow(job, plane, row, line.data());
        ASSERT_EQ(0, std::memcmp(plain->Row(plane, row), line.data(), job.lineStride))
            << "plane " << plane << ", row " << row;
      }
    }
  }

  // Bands; every fourth time more without lines until nothing is left.
  void ExpectSameBands(int bands) {
    const int draining = random() % 4 == 0 ? 3 : 0;
    for (int band = 0; band < bands + draining; ++band) {
      if (band < bands) FillBand();
      for (std::uint32_t pass = 0; pass < job.passCount; ++pass) {
        SCOPED_TRACE(testing::Message() << "band " << band << ", pass " << pass);
        ASSERT_NO_FATAL_FAILURE(ExpectSamePass());
      }
      ASSERT_NO_FATAL_FAILURE(ExpectSameRows());
      ShiftPassBuffers(job);
      plain->Shift();
    }
    ASSERT_NO_FATAL_FAILURE(ExpectSameRows());
  }

  std::mt19937 random{static_cast<std::uint32_t>(TestSeed())};
  std::optional<plain::PlainRaster> plain;
  int blankPasses = 0;
};

struct Mode {
  bool oneHead;
  std::uint8_t passCount;
};
constexpr Mode kModes[] = {{false, 3}, {false, 4}, {false, 6}, {false, 8}, {true, 3}, {true, 4}};
constexpr std::uint32_t kFeatherRows[] = {0, 9, 45, 90};

// Every width up to 200 bytes in every mode, the other properties in turn, and so the kernels: the
// tests of the workers compare those in every case.
TEST_F(BesidePlain, PassesAndRowsAreTheSameInEveryModeAndWidth) {
  std::uint32_t turn = 0;
  for (const Mode& mode : kModes) {
    for (std::uint32_t width = 0; width <= 200; ++width, ++turn) {
      UseKernel(*Kernels()[random() % Kernels().size()]);
      const ImageSetup setup{mode.oneHead,     mode.passCount,         width,
                             2 * (turn % 5),   kFeatherRows[turn % 4], turn / 4 % 2 == 0,
                             turn / 8 % 3 == 0};
      SCOPED_TRACE(testing::Message()
                   << "one head " << mode.oneHead << ", passes " << int{mode.passCount}
                   << ", width " << width << "+" << setup.restBits << ", feathered "
                   << setup.featherRows << ", mirrored " << setup.mirrored << ", shared rows "
                   << setup.sharedRows << ", kernel " << TheKernel().name);
      ASSERT_NO_FATAL_FAILURE(SetUpJob(setup));
      ASSERT_NO_FATAL_FAILURE(ExpectSameBands(width % 25 == 24 ? 5 : 1));
    }
  }
  EXPECT_GT(blankPasses, 0);
}

// Wide enough that tiles have neighbours on both sides.
TEST_F(BesidePlain, PassesAndRowsAreTheSameInWideImages) {
  for (const Mode& mode : kModes) {
    for (const std::uint32_t featherRows : kFeatherRows) {
      SCOPED_TRACE(testing::Message() << "one head " << mode.oneHead << ", passes "
                                      << int{mode.passCount} << ", feathered " << featherRows);
      ASSERT_NO_FATAL_FAILURE(
          SetUpJob({mode.oneHead, mode.passCount, 2017, 0, featherRows, false, false}));
      ASSERT_NO_FATAL_FAILURE(ExpectSameBands(1));
    }
  }
}

}  // namespace
}  // namespace qrn
