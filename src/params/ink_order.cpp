#include "params/ink_order.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "diag/job_log.h"
#include "raster/one_head.h"

namespace qrn {
namespace {

// Each colour on two neighbouring rows of one head: PHA, then PHB.
constexpr std::uint8_t kDefaultInkOrder[kBothHeadsNozzleRows] = {3, 3, 0, 0, 4, 4, 7, 7,
                                                                 1, 1, 5, 5, 2, 2, 6, 6};

// Rows of this head that carry the colour.
int RowsOfColor(const std::uint8_t (&head)[kNozzleRows], std::uint8_t color) {
  return static_cast<int>(std::count(std::begin(head), std::end(head), color));
}

// A colour's dots all go to one head's bytes, so a colour with a row on either head cannot come out
// right.
void WarnOfSplitColors(const Job& job) {
  unsigned splitColors = 0;
  for (std::uint8_t color = 0; color < kColors; ++color) {
    if (RowsOfColor(job.inkOrder[0], color) == 1) splitColors |= 1u << color;
  }
  if (splitColors != 0)
    LogPrint("Ink order: colors 0x%02X have one row on each head, they print wrong", splitColors);
}

}  // namespace

bool SetInkOrder(Job& job, const std::uint8_t* order) {
  std::memcpy(job.inkOrder, order, sizeof job.inkOrder);
  if (job.dualHead == 1) {
    if (!CheckInkOrderDual(job)) {
      LogPrint("双喷头机型墨序不可识别");
      return false;
    }
    WarnOfSplitColors(job);
  } else {
    WarnOfUnprintedColors(job);
  }
  const auto& pha = job.inkOrder[0];
  const auto& phb = job.inkOrder[1];
  if ((job.headMask & kHeadPha) != 0) {
    LogPrint("PHA:%d-%d, %d-%d, %d-%d, %d-%d", pha[0], pha[1], pha[2], pha[3], pha[4], pha[5],
             pha[6], pha[7]);
  }
  if ((job.headMask & kHeadPhb) != 0) {
    LogPrint("PHB:%d-%d, %d-%d, %d-%d, %d-%d", phb[0], phb[1], phb[2], phb[3], phb[4], phb[5],
             phb[6], phb[7]);
  }
  return true;
}

bool CheckInkOrderDual(Job& job) {
  constexpr std::uint8_t kNone[sizeof kDefaultInkOrder] = {};
  if (std::memcmp(job.inkOrder, kNone, sizeof kNone) == 0) {
    std::memcpy(job.inkOrder, kDefaultInkOrder, sizeof kDefaultInkOrder);
    return true;
  }
  for (std::uint8_t color = 0; color < kColors; ++color) {
    if (RowsOfColor(job.inkOrder[0], color) + RowsOfColor(job.inkOrder[1], color) != 2)
      return false;
  }
  return true;
}

}  // namespace qrn
