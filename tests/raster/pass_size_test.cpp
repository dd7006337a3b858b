// Whether the buffers hold the swath of a pass, and the swath all of its columns, at every width
// that a machine can have.
#include "raster/pass_size.h"

#include <algorithm>

#include "raster/column_modes.h"
#include "raster/core_job.h"

namespace qrn {
namespace {

class PassSize : public CoreJob {
 protected:
  void ExpectRoomForEveryWidth() {
    constexpr std::uint32_t kWidestMm = 0xFFFF;  // maxPrintMm has 16 bits
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
  for (const std::uint32_t resolution : {1080u, 1440u, 1620u, 2160u}) {
    for (const std::uint8_t heads : {std::uint8_t{0x10}, std::uint8_t{0x30}}) {
      SCOPED_TRACE(testing::Message() << resolution << " dpi, heads " << int{heads});
      std::vector<std::uint8_t> block = GoodBlock();
      block[90] = heads;
      std::fill(&block[50], &block[54], std::uint8_t{255});
      ASSERT_TRUE(Connect(block.data(), {resolution, 360, 6000, 720}));
      ExpectRoomForEveryWidth();
    }
  }
}

}  // namespace
}  // namespace qrn
