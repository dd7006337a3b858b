// The worked pixel of docs/architecture.md. Its page is printed through the exports, and every cell
// of the table is put together from what is found where the driver has the pixel: the only ink
// there.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "link/frame.h"
#include "qrn_driver.h"
#include "raster/locate_rows.h"
#include "raster/pass_rows.h"
#include "raster/tile_walk.h"
#include "sim/time/sim_platform.h"
#include "sim/virtual_printer.h"
#include "support/forwarding_platform.h"

namespace qrn {
namespace {

constexpr std::uint32_t kLine = 417, kColor = 1, kPixel = 1003, kLevel = 2, kLineBytes = 252;

std::size_t InkIn(const std::uint8_t* bytes, std::size_t count) {
  const auto blank = [](std::uint8_t byte) { return byte == 0; };
  return static_cast<std::size_t>(std::find_if_not(bytes, bytes + count, blank) - bytes);
}

// Keeps the writes of swath data.
class Listener : public ForwardingPlatform {
 public:
  explicit Listener(Platform& target) : ForwardingPlatform(target) { UsePlatform(this); }
  ~Listener() override { UsePlatform(nullptr); }
  bool BulkWrite(DeviceHandle device, const void* data, std::uint32_t bytes) override {
    const auto* begin = static_cast<const std::uint8_t*>(data);
    if (bytes > kPacketBytes) writes.emplace_back(begin, begin + bytes);
    return ForwardingPlatform::BulkWrite(device, data, bytes);
  }
  std::vector<std::vector<std::uint8_t>> writes;
};

class WorkedPixel : public testing::Test {
 protected:
  // The next cell of the table that says this.
  template <class... Numbers>
  void ExpectCell(const std::string& format, Numbers... numbers) {
    char cell[200];
    std::snprintf(cell, sizeof cell, ("| " + format + " |").c_str(),
                  static_cast<unsigned>(numbers)...);
    const std::size_t found = document_.find(cell, at_);
    EXPECT_NE(std::string::npos, found) << cell;
    if (found != std::string::npos) at_ = found;
  }
  // The same with the byte that is the ink among these.
  template <class... Numbers>
  void ExpectInk(const std::uint8_t* bytes, std::size_t count, const std::string& format,
                 Numbers... numbers) {
    const std::size_t at = InkIn(bytes, count);
    ExpectCell(format + ": byte %u of %u is `%02X`", numbers..., at, count, bytes[at]);
  }
  void GiveLines(std::uint32_t first, std::uint32_t end) {
    for (std::uint32_t call = 8 * first; call < 8 * end; ++call) {
      const bool here = call == 8 * kLine + kColor;
      ASSERT_EQ(1, PP_SendALineAColorData(call % 8, kLineBytes, here ? inked : blank, 0));
    }
  }
  void ExpectOnTheWire(const std::vector<std::vector<std::uint8_t>>& writes) {
    std::size_t first = 0;  // of the message
    for (std::size_t write = 0; write < writes.size(); ++write) {
      if (U16(&writes[write][20]) == 0) first = write;
      for (std::size_t slot = 0; slot < writes[write].size(); slot += kSlotBytes) {
        const std::uint8_t* const frame = &writes[write][slot];
        const std::size_t end = kFrameBytes + 2 * (U16(frame + 22) + std::size_t{1});
        const std::size_t at = kFrameBytes + InkIn(frame + kFrameBytes, end - kFrameBytes);
        if (at == end) continue;
        ExpectCell("chunk %u of %u; write %u: byte %u of %u is `%02X`", U16(frame + 20),
                   U16(frame + 24), write - first, slot + at, writes[write].size(), frame[at]);
      }
    }
  }

  Job& job = GetJob();
  std::uint8_t blank[kLineBytes] = {}, inked[kLineBytes] = {};

 private:
  std::string document_ =
      (std::ostringstream() << std::ifstream(QRN_DOCS "/architecture.md").rdbuf()).str();
  std::size_t at_ = 0;
};

TEST_F(WorkedPixel, IsWhereTheArchitectureSays) {
  sim::VirtualPrinter printer{sim::Machine{}};
  sim::SimPlatform time(printer, {});
  Listener listener(time);
  const HostJobDesc page = {0, 1440, 360, 0, 1440, 4 * kLineBytes, 0, 8, 2, {}};
  ASSERT_EQ(1, PP_Init(&page));
  const RowLayout& layout = job.Mem.layout;

  inked[kPixel / 4] = kLevel << (6 - 2 * (kPixel % 4));
  GiveLines(0, kLine + 1);
  ExpectInk(inked, kLineBytes, "line %u, colour %u", kLine, kColor);
  const std::uint8_t* const occupancy = OccupancyAt(job, kColor, 0);
  const std::uint32_t part = Low32(InkIn(occupancy, layout.rows * layout.occupancyBytes));
  const std::uint32_t row = part / layout.occupancyBytes, phase = part % layout.occupancyBytes;
  ExpectInk(RunAt(job, kColor, phase, row), layout.runBytes,
            "window line %u, row %u of the ring, run of phase %u", row - job.Mem.ringStart, row,
            phase);
  GiveLines(kLine + 1, 1079);
  EXPECT_EQ(1, occupancy[part]);
  ExpectCell("window line %u, row %u of the ring", row - job.Mem.ringStart, row);

  GiveLines(1079, 1080);
  ExpectCell("pass %u, direction %u, `passRow` %u", job.passNo - 1, job.passDir, job.passRow);
  job.curColor = kColor;
  const std::uint32_t head = LocateRowsDual(job);
  const ConvertScratch& scratch = ScratchOf(job);
  std::uint32_t group = 0;
  while (InkIn(scratch.groups[group].occupancy, kGroupJets) == kGroupJets) ++group;
  const JetGroup& jets = scratch.groups[group];
  const std::size_t jet = InkIn(jets.occupancy, kGroupJets);
  const int slot = std::countr_zero(jets.occupancy[jet]);
  EXPECT_TRUE(head == jet % 2 && job.rowBitB == 1 << slot);
  ExpectCell("head %u, slot %u, nozzle %u; column offset %u", head, slot,
             kGroupNozzles * group + jet / 2, job.rowColB);
  const Swath& swath = *job.pPendingSwath;
  const std::size_t column = InkIn(swath.pSwathData, swath.dataSize) / kColumnBytes;
  ExpectInk(jets.rows[jet][slot], kStripBytes, "strip %u, group %u, jet %u", column / kStripColumns,
            group, jet);
  ExpectInk(scratch.tile, sizeof scratch.tile, "tile %u of the strip",
            column % kStripColumns / kTileColumns);
  ExpectInk(swath.pSwathData, swath.dataSize, "swath %u, column %u", swath.header.swathNo, column);

  GiveLines(1080, page.height);
  PP_Uninit();
  ExpectOnTheWire(listener.writes);
}

}  // namespace
}  // namespace qrn
