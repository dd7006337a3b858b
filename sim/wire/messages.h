// What the host and the printer say to each other: the commands, and what stands where in a command
// packet and in a reply. Little-endian.
#ifndef QRN_SIM_WIRE_MESSAGES_H_
#define QRN_SIM_WIRE_MESSAGES_H_

#include <cstddef>
#include <cstdint>
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

// A command packet begins with the u32 code.
constexpr std::size_t kCommandBytes = 64;
constexpr std::size_t kBodyAt = 4, kBodyEnd = 36;

// Places in the packet of a swath; a buffer query has the size, too.
constexpr std::size_t kDataSizeAt = 8, kDataSizeEnd = 12, kHeaderAt = 28;
constexpr std::size_t kDirAt = kHeaderAt + 2, kSecondDirAt = kHeaderAt + 4,
                      kStartPosAt = kHeaderAt + 8, kEndPosEnd = kHeaderAt + 12,
                      kFlashAmountAt = kHeaderAt + 14, kLinesFedEnd = kHeaderAt + 18,
                      kSwathNoAt = kHeaderAt + 20, kSwathNoEnd = kHeaderAt + 24,
                      kFeedStepsAt = kHeaderAt + 28;

// Places in the packet of a job create.
constexpr std::size_t kCreateMarkAt = 6, kCreatePassesAt = 8, kCreateConstant25At = 10,
                      kCreateConstant1At = 11, kCreateResolutionIndexEnd = 13,
                      kCreateCarriageAt = 14, kCreateResolutionAt = 16,
                      kCreateResolutionParamsEnd = 30, kCreateTimeAt = 32, kCreateSignatureAt = 34;
constexpr std::uint16_t kTwoHeadCarriage = 1800, kOneHeadCarriage = 1200;

using Reply = std::vector<std::uint8_t>;

// Places in a reply, u16 where nothing is said. From byte 8 on the command decides.
constexpr std::size_t kReplyCodeAt = 0, kReplyOkAt = 2, kReplyStateAt = 4, kReplyStatusAt = 6;
constexpr std::size_t kReplyBlockAt = 8;    // connect: the parameter block
constexpr std::size_t kReplyRoomAt = 8;     // buffer query: u32
constexpr std::size_t kReplyUpdateAt = 12;  // pause: the mark and the section of an update
constexpr std::size_t kReplyBytes = 16;     // where no more is said; what is not used is 0

// State of the job, in a reply.
constexpr std::uint16_t kStateGone = 0, kStateCancelled = 2, kStatePaused = 3, kStateResumed = 4,
                        kStateRunning = 5;

Reply MakeReply(std::uint32_t code, bool ok, std::uint16_t state, std::uint16_t status);

}  // namespace qrn::sim

#endif  // QRN_SIM_WIRE_MESSAGES_H_
