// What the printer demands of each command packet: its length, its constant bytes, its zero bytes
// and its place in the job. Strict, so that a driver that sends more or less than agreed is caught.
#ifndef QRN_SIM_FIRMWARE_PROTOCOL_CHECK_H_
#define QRN_SIM_FIRMWARE_PROTOCOL_CHECK_H_

#include <cstdint>
#include <string>
#include <vector>

namespace qrn::sim {

enum Command : std::uint32_t {
  kConnect = 2,
  kJobCreate = 3,
  kSwath = 4,
  kJobEnd = 5,
  kCancel = 9,
  kPausePoll = 10,
  kBufferQuery = 12,
};

constexpr std::size_t kCommandBytes = 64;
constexpr std::size_t kBodyAt = 4, kBodyEnd = 36;

// Places in the packet of a swath; a buffer query has the size, too.
constexpr std::size_t kDataSizeAt = 8, kDataSizeEnd = 12, kHeaderAt = 28;
constexpr std::size_t kDirAt = kHeaderAt + 2, kSecondDirAt = kHeaderAt + 4,
                      kStartPosAt = kHeaderAt + 8, kSwathNoAt = kHeaderAt + 20,
                      kFeedStepsAt = kHeaderAt + 28;

// Places in the packet of a job create.
constexpr std::size_t kCreateMarkAt = 6, kCreatePassesAt = 8, kCreateConstant25At = 10,
                      kCreateConstant1At = 11, kCreateCarriageAt = 14, kCreateResolutionAt = 16,
                      kCreateSignatureAt = 34;
constexpr std::uint16_t kTwoHeadCarriage = 1800, kOneHeadCarriage = 1200;

// Why this packet breaks the rules of its code; "" when it does not. Looks at the packet alone.
std::string CheckCommandPacket(const std::vector<std::uint8_t>& packet);
// True for the packet that tests, after a reconnection, whether the printer answers: code 10 and
// nothing else.
bool IsAnswerTest(const std::vector<std::uint8_t>& packet);

}  // namespace qrn::sim

#endif  // QRN_SIM_FIRMWARE_PROTOCOL_CHECK_H_
