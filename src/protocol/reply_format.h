// How the printer's replies are laid out. Plain data; any thread.
#ifndef QRN_PROTOCOL_REPLY_FORMAT_H_
#define QRN_PROTOCOL_REPLY_FORMAT_H_

#include <cstddef>
#include <cstdint>

namespace qrn {

// The start of every reply, little-endian. From byte 8 on the command decides what a reply holds.
// Words that a reply lacks read as 0; a job state that is not there is none.
struct ReplyRec {
  std::uint16_t code;    // 0  the command it answers; no command has code 0
  std::uint16_t ok;      // 2  1 = taken
  std::uint16_t sub;     // 4  JobState (swath, pause poll, buffer query)
  std::uint16_t status;  // 6  why the command was refused
};
// Connect: parameter block; buffer query: u32 free room.
constexpr std::uint32_t kReplyPayloadAt = 8;
constexpr std::uint32_t kReplyPauseWordAAt = 10;
constexpr std::uint32_t kReplyPauseWordBAt = 12;  // kParamUpdateMark: new parameters follow
constexpr std::uint32_t kReplyUpdateAt = 14;
constexpr std::uint16_t kParamUpdateMark = 0x1122;
static_assert(sizeof(ReplyRec) == kReplyPayloadAt && offsetof(ReplyRec, status) == 6);

ReplyRec DecodeReply(const std::uint8_t* reply, std::uint32_t bytes);
// The word at `at`; 0 where the reply ends before it does.
std::uint16_t ReplyWord(const std::uint8_t* reply, std::uint32_t bytes, std::uint32_t at);

// Job states in replies.
enum JobState : std::uint16_t {
  kJobGone = 0,        // the operator cancelled
  kJobUnreported = 1,  // says nothing
  kJobCancelled = 2,
  kJobPaused = 3,
  kJobResumed = 4,
  kJobRunning = 5,
};

}  // namespace qrn

#endif  // QRN_PROTOCOL_REPLY_FORMAT_H_
