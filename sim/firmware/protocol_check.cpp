#include "sim/firmware/protocol_check.h"

#include <algorithm>
#include <utility>

#include "base/bytes.h"
#include "sim/wire/messages.h"

namespace qrn::sim {
namespace {

constexpr std::uint32_t kDataUnit = 320;

using Packet = std::vector<std::uint8_t>;

bool ZeroFrom(const Packet& packet, std::size_t begin, std::size_t end) {
  return std::all_of(packet.begin() + static_cast<std::ptrdiff_t>(begin),
                     packet.begin() + static_cast<std::ptrdiff_t>(end),
                     [](std::uint8_t byte) { return byte == 0; });
}

std::string CheckConnect(const Packet& packet) {
  constexpr std::size_t kMarkAAt = 32, kMarkBAt = 34;
  if (!ZeroFrom(packet, kBodyAt, kMarkAAt) || U16(&packet[kMarkAAt]) != 0x1111 ||
      U16(&packet[kMarkBAt]) != 0x2013)
    return "connect body";
  return "";
}

std::string CheckJobCreate(const Packet& packet) {
  const std::uint16_t carriage = U16(&packet[kCreateCarriageAt]);
  const bool constants = packet[kCreateMarkAt] == 0xCF && packet[kCreateConstant25At] == 25 &&
                         packet[kCreateConstant1At] == 1 &&
                         U16(&packet[kCreateSignatureAt]) == 0x2015;
  const bool zeros = ZeroFrom(packet, kBodyAt, kCreateMarkAt) &&
                     ZeroFrom(packet, kCreateResolutionIndexEnd, kCreateCarriageAt) &&
                     ZeroFrom(packet, kCreateResolutionParamsEnd, kCreateTimeAt);
  if (!constants || !zeros || (carriage != kTwoHeadCarriage && carriage != kOneHeadCarriage))
    return "job create body";
  return "";
}

std::string CheckSwath(const Packet& packet) {
  if (!ZeroFrom(packet, kBodyAt, kDataSizeAt) || !ZeroFrom(packet, kDataSizeEnd, kHeaderAt))
    return "swath packet's zero bytes";
  for (const auto& [begin, end] : {std::pair{kHeaderAt, kDirAt},
                                   {kDirAt + 1, kSecondDirAt},
                                   {kEndPosEnd, kFlashAmountAt},
                                   {kLinesFedEnd, kSwathNoAt},
                                   {kSwathNoEnd, kFeedStepsAt}}) {
    if (!ZeroFrom(packet, begin, end)) return "swath header's zero bytes";
  }
  if (packet[kDirAt] > 1 || packet[kDirAt] != packet[kSecondDirAt]) return "swath direction";
  if (U32(&packet[kDataSizeAt]) % kDataUnit != 0) return "swath data size";
  if ((U32(&packet[kFeedStepsAt]) & 0x80000000u) != 0) return "bit 31 of the feed steps";
  return "";
}

}  // namespace

std::string CheckCommandPacket(const Packet& packet) {
  if (packet.size() != kCommandBytes)
    return "command packet of " + std::to_string(packet.size()) + " bytes";
  const std::uint32_t code = U32(packet.data());
  if (code != kSwath && !ZeroFrom(packet, kBodyEnd, kCommandBytes))
    return "bytes 36..63 of command " + std::to_string(code);
  switch (code) {
    case kConnect:
      return CheckConnect(packet);
    case kJobCreate:
      return CheckJobCreate(packet);
    case kSwath:
      return CheckSwath(packet);
    case kBufferQuery:
      return ZeroFrom(packet, kBodyAt, kDataSizeAt) && ZeroFrom(packet, kDataSizeEnd, kCommandBytes)
                 ? ""
                 : "buffer query body";
    case kJobEnd:
    case kCancel:
    case kPausePoll:
      return "";
    default:
      return "unknown command " + std::to_string(code);
  }
}

bool IsAnswerTest(const Packet& packet) {
  return packet.size() == kCommandBytes && U32(packet.data()) == kPausePoll &&
         ZeroFrom(packet, kBodyAt, kCommandBytes);
}

}  // namespace qrn::sim
