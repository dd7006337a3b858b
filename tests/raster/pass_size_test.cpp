// Whether the buffers hold the swath of a pass, and the swath all of its columns.
#include "raster/pass_size.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "params/param_fixture.h"
#include "params/resolution.h"
#include "raster/column_modes.h"

namespace qrn {
namespace {

class PassSize : public ParamFixture {
 protected:
  static constexpr std::uint32_t kWidestMm = 0xFFFF;  // maxPrintMm has 16 bits

  void ExpectRoomForEveryWidth() {
    const ColumnMode& mode = *ModeOf(job);
    const std::uint32_t gapColumns = job.dualHead == 1 ? job.headGapX : 0;
    for (std::uint32_t pixels = 0; pixels <= kWidestMm * job.nResX * 10 / 254; ++pixels) {
      job.nLineBits = job.passBits = 2 * pixels;
      job.lineStride = (job.nLineBits + 31) / 32 * 4;
      job.passRightByte = job.nLineBits / 8;
      const std::uint32_t lastColumn =
          job.rowOffset[0] + gapColumns + mode.reverseStart(std::max(job.passRightByte, 1u));
      SetPassSize(job);
      const std::uint32_t bytes = SwathDataSize(job);
      ASSERT_TRUE(bytes % 320 == 0 && bytes - job.passDataSize < 320) << pixels;
      // Where neither head is in use the dots of the last column reach into the next one.
      ASSERT_GE(bytes, (lastColumn + 2) * 720) << pixels;
      ASSERT_GE(PrintOutBytes(job), bytes) << pixels;
    }
  }
};

TEST_F(PassSize, IsThatOfAllColumnsAndFitsTheBuffersAtEveryWidth) {
  for (const std::uint32_t resolution : kResolutionX) {
    for (const int heads : {0x10, 0x30}) {
      SCOPED_TRACE(testing::Message() << resolution << " dpi, heads " << heads);
      job.nResX = static_cast<std::uint16_t>(resolution);
      job.nLineBits = 6000;
      block[90] = static_cast<std::uint8_t>(heads);
      for (std::uint8_t row = 0; row < 16; ++row) block[9u + row] = Low8(row / 2u);
      block[50 + ResolutionIndex(resolution)] = 255;
      ASSERT_TRUE(Parse());
      ExpectRoomForEveryWidth();
    }
  }
}

}  // namespace
}  // namespace qrn
