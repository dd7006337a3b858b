#include "sim/firmware/protocol_check.h"

#include <algorithm>

#include "base/bytes.h"

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
  if (!ZeroFrom(packet, 4, 32) || U16(&packet[32]) != 0x1111 || U16(&packet[34]) != 0x2013)
    return "connect body";
  return "";
}

std::string CheckJobCreate(const Packet& packet) {
  const std::uint16_t carriage = U16(&packet[14]);
  const bool constants =
      packet[6] == 0xCF && packet[10] == 25 && packet[11] == 1 && U16(&packet[34]) == 0x2015;
  const bool zeros = packet[4] == 0 && packet[5] == 0 && packet[13] == 0 && U16(&packet[30]) == 0;
  if (!constants || !zeros || (carriage != 1800 && carriage != 1200)) return "job create body";
  return "";
}

std::string CheckSwath(const Packet& packet) {
  const std::uint8_t* header = &packet[kHeaderAt];
  if (!ZeroFrom(packet, 4, 8) || !ZeroFrom(packet, 12, kHeaderAt))
    return "swath packet's zero bytes";
  const bool reserved = header[0] == 0 && header[1] == 0 && header[3] == 0 &&
                        U16(header + 12) == 0 && U16(header + 18) == 0 && U16(header + 24) == 0 &&
                        U16(header + 26) == 0;
  if (!reserved) return "swath header's zero bytes";
  if (header[2] > 1 || header[2] != header[4]) return "swath direction";
  if (U32(&packet[kDataSizeAt]) % kDataUnit != 0) return "swath data size";
  if ((U32(&packet[kFeedStepsAt]) & 0x80000000u) != 0) return "bit 31 of the feed steps";
  return "";
}

}  // namespace

std::string CheckCommandPacket(const Packet& packet) {
  if (packet.size() != kCommandBytes)
    return "command packet of " + std::to_string(packet.size()) + " bytes";
  const std::uint32_t code = U32(packet.data());
  if (code != kSwath && !ZeroFrom(packet, 36, kCommandBytes))
    return "bytes 36..63 of command " + std::to_string(code);
  switch (code) {
    case kConnect:
      return CheckConnect(packet);
    case kJobCreate:
      return CheckJobCreate(packet);
    case kSwath:
      return CheckSwath(packet);
    case kBufferQuery:
      return ZeroFrom(packet, 4, 8) && ZeroFrom(packet, 12, kCommandBytes) ? ""
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
         ZeroFrom(packet, 4, kCommandBytes);
}

}  // namespace qrn::sim
