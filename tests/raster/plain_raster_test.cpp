// The passes of whole bands against the plain raster: columns, sizes and what stays in the rows.
#include "reference/plain_raster.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <ostream>
#include <random>
#include <vector>

#include "params/printer_params.h"
#include "raster/job_memory.h"
#include "reference/core_steps.h"
#include "sim/machine.h"
#include "support/fake_platform.h"
#include "support/test_seed.h"

namespace qrn {
namespace {

using plain::PlainRaster;

constexpr std::uint32_t kWidthMax = 200;
constexpr std::uint8_t kFeatherPercents[] = {0, 10, 50, 100};  // 0, 9, 45, 90 nozzles

struct Mode {
  const char* name;
  std::uint16_t resolution;
  sim::Heads heads;
};
void PrintTo(const Mode& mode, std::ostream* out) { *out << mode.name; }

struct Draw {
  std::uint32_t lineBytes;
  std::uint8_t featherPercent, dir;
  bool mirrored;
  std::uint32_t inkPercent;  // of the bytes of a line; the rest is blank
};

class Passes : public testing::TestWithParam<Mode> {
 protected:
  ~Passes() override {
    FreeJobMem(job);
    job = Job{};
  }

  void SetUpJob(const Draw& draw) {
    const Mode& mode = GetParam();
    sim::Machine machine;
    machine.heads = mode.heads;
    machine.featherPercent = draw.featherPercent;
    machine.mirroredHeads = draw.mirrored;
    if (mode.heads != sim::Heads::kBoth) machine.inkOrder.fill({7, 1, 2, 3, 3, 5, 6, 0});
    FreeJobMem(job);
    job = Job{};
    job.nSwathLimit = job.nHeight = UINT32_MAX;
    job.nResX = mode.resolution;
    job.nResY = 360;
    job.nLineBits = 8 * draw.lineBytes;
    job.nBitsPerPixel = 2;
    job.nColors = kPlanes;
    const auto block = sim::ParameterBlock(machine);
    ASSERT_TRUE(ParsePrinterParams(job, block.data(), static_cast<std::uint32_t>(block.size())));
    ASSERT_NE(nullptr, job.PrintOutBuf);
  }

  // The same lines in every row of both. Some are blank, so are some whole planes.
  void FillRows(PlainRaster& plain, const Draw& draw) {
    std::vector<std::uint8_t> line(draw.lineBytes + 1);  // a line of no bytes has a place, too
    for (std::uint32_t plane = 0; plane < kPlanes; ++plane) {
      const bool blankPlane = random() % 8 == 0;
      for (std::uint32_t row = 0; row < plain.Rows(); ++row) {
        const bool blank = blankPlane || random() % 8 == 0;
        for (std::uint8_t& byte : line) {
          const bool ink = !blank && random() % 100 < draw.inkPercent;
          byte = static_cast<std::uint8_t>(ink ? random() : 0);
        }
        std::copy_n(line.data(), draw.lineBytes, plain.Row(plane, row));
        PutRow(job, plane, row, line.data(), draw.lineBytes);
      }
    }
  }

  void ExpectSamePass(const PlainRaster& plain) {
    const Job& wanted = plain.Record();
    ASSERT_EQ(wanted.passEmpty, job.passEmpty);
    if (wanted.passEmpty == 1) return;
    ASSERT_EQ(wanted.passDataSize, job.passDataSize);
    ASSERT_EQ(wanted.passRightByte, job.passRightByte);
    ASSERT_EQ(wanted.passBits, job.passBits);
    ASSERT_EQ(wanted.passRowPad, job.passRowPad);
    const std::uint8_t* const end = plain.PrintOut() + wanted.passDataSize;
    const auto at = std::mismatch(plain.PrintOut(), end, job.PrintOutBuf).first - plain.PrintOut();
    ASSERT_EQ(wanted.passDataSize, at)
        << "column " << at / 720 << ", byte " << at % 720 << ": not " << int{plain.PrintOut()[at]}
        << " but " << int{job.PrintOutBuf[at]};
  }

  void ExpectSameRows(PlainRaster& plain) {
    std::vector<std::uint8_t> line(job.lineStride + 1);
    for (std::uint32_t plane = 0; plane < kPlanes; ++plane) {
      for (std::uint32_t row = 0; row < plain.Rows(); ++row) {
        GetRow(job, plane, row, line.data());
        ASSERT_EQ(0, std::memcmp(line.data(), plain.Row(plane, row), job.lineStride))
            << "plane " << plane << ", row " << row;
      }
    }
  }

  // A band's passes; the rows of each reach into those that earlier passes have taken dots from.
  void ExpectSameBand(const Draw& draw) {
    SCOPED_TRACE(testing::Message()
                 << GetParam().name << ", " << draw.lineBytes << " bytes, feathered "
                 << int{draw.featherPercent} << " %, dir " << int{draw.dir} << ", mirrored "
                 << draw.mirrored << ", ink " << draw.inkPercent << " %");
    ASSERT_NO_FATAL_FAILURE(SetUpJob(draw));
    PlainRaster plain(job);
    FillRows(plain, draw);
    for (std::uint32_t pass = 0; pass < job.passCount; ++pass) {
      SCOPED_TRACE(testing::Message() << "pass " << pass);
      job.passDir = plain.Record().passDir = draw.dir;
      plain.ConvertPass();
      ++plain.Record().passNo;
      RunPass(job);
      ASSERT_NO_FATAL_FAILURE(ExpectSamePass(plain));
    }
    ASSERT_NO_FATAL_FAILURE(ExpectSameRows(plain));
    ShiftPassBuffers(job);
    plain.Shift();
    ExpectSameRows(plain);
  }

  Draw DrawFor(std::uint32_t lineBytes) {
    constexpr std::uint32_t kInk[] = {1, 20, 100};
    return {lineBytes, kFeatherPercents[random() % 4], static_cast<std::uint8_t>(random() % 2),
            random() % 2 == 0, kInk[random() % 3]};
  }

  FakePlatform platform;
  Job& job = GetJob();
  std::mt19937 random{static_cast<std::uint32_t>(TestSeed())};
};

TEST_P(Passes, EqualThePlainRasterAtEveryWidth) {
  for (std::uint32_t width = 0; width <= kWidthMax; ++width) {
    ASSERT_NO_FATAL_FAILURE(ExpectSameBand(DrawFor(width)));
  }
}

TEST_P(Passes, EqualThePlainRasterHoweverTheMachineIsSet) {
  for (const std::uint32_t width : {1u, 33u, 64u, 131u}) {
    for (const std::uint8_t feather : kFeatherPercents) {
      for (const bool mirrored : {false, true}) {
        for (const bool reverse : {false, true}) {
          Draw draw = DrawFor(width);
          draw.featherPercent = feather;
          draw.mirrored = mirrored;
          draw.dir = reverse ? 1 : 0;
          ASSERT_NO_FATAL_FAILURE(ExpectSameBand(draw));
        }
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Modes, Passes,
                         testing::Values(Mode{"Two1080", 1080, sim::Heads::kBoth},
                                         Mode{"Two1440", 1440, sim::Heads::kBoth},
                                         Mode{"Two1620", 1620, sim::Heads::kBoth},
                                         Mode{"Two2160", 2160, sim::Heads::kBoth},
                                         Mode{"Pha1080", 1080, sim::Heads::kPha},
                                         Mode{"Phb1440", 1440, sim::Heads::kPhb},
                                         Mode{"Phb1620", 1620, sim::Heads::kPhb},
                                         Mode{"None2160", 2160, sim::Heads::kNone}),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace qrn
