#include "sim/firmware/message_order.h"

#include <utility>

#include "base/bytes.h"
#include "sim/firmware/protocol_check.h"
#include "sim/wire/messages.h"

namespace qrn::sim {
namespace {

std::string NameOf(std::uint32_t command) {
  switch (command) {
    case kJobCreate:
      return "job create";
    case kSwath:
      return "swath";
    case kJobEnd:
      return "job end";
    case kCancel:
      return "cancel";
    case kPausePoll:
      return "pause poll";
    default:
      return "buffer query";
  }
}

}  // namespace

void MessageOrder::Reopened() {
  reopened_ = true;
  TransferFailed();
}

std::string MessageOrder::Check(const Bytes& packet) {
  const bool first = std::exchange(reopened_, false);
  answerTest_ = IsAnswerTest(packet);
  if (answerTest_) return first ? "" : "answer test of a link that was not reopened";
  const std::uint32_t command = U32(packet.data());
  if (command == kConnect) {
    *this = MessageOrder{};
    command_ = kConnect;
    return "";
  }
  // Refused, or its reply was lost.
  const bool again = command == command_ && !taken_;
  command_ = command;
  taken_ = false;
  if (first) return NameOf(command) + " after a reopening without an answer test";
  if (command == kJobCreate) {
    if (again || stage_ == Stage::kConnected) return "";
    return stage_ == Stage::kJob ? "second job create" : "job create without a connect";
  }
  if (again && command != kSwath && command != kBufferQuery) return "";
  return CheckInJob(packet);
}

std::string MessageOrder::CheckInJob(const Bytes& packet) {
  if (stage_ != Stage::kJob) {
    return NameOf(command_) + (stage_ == Stage::kEnded ? " after the job's end" : " without a job");
  }
  switch (command_) {
    case kSwath:
      return CheckSwath(packet);
    case kBufferQuery:
      askedBytes_ = U32(&packet[kDataSizeAt]);
      return "";
    case kPausePoll:
      return paused_ ? "" : "pause poll of a job that was not reported as paused";
    case kCancel:
      return cancelled_ ? "" : "cancel of a job that was not reported as cancelled";
    default:
      return "";
  }
}

std::string MessageOrder::CheckSwath(const Bytes& packet) {
  swathNo_ = U32(&packet[kSwathNoAt]);
  const std::uint32_t dataBytes = U32(&packet[kDataSizeAt]);
  if (swathNo_ == takenSwathNo_)
    return "swath " + std::to_string(swathNo_) + " again, which was reported as taken";
  if (dataBytes == 0) return "";
  const bool roomUnknown = std::exchange(roomUnknown_, false);
  if (std::exchange(roomForBytes_, 0u) == dataBytes || roomUnknown) return "";
  return "swath " + std::to_string(swathNo_) + " without room for its data";
}

void MessageOrder::Taken() {
  if (answerTest_) return;
  if (command_ == kConnect) stage_ = Stage::kConnected;
  if (command_ == kJobCreate) stage_ = Stage::kJob;
  if (command_ == kJobEnd) stage_ = Stage::kEnded;
}

// Words that a reply lacks are 0, but a job state that is not there is none. A host reads on for
// the answer to its command, but takes anything with a code as the answer to a buffer query.
void MessageOrder::ReplyRead(const Bytes& reply) {
  const auto has = [&reply](std::size_t at) { return at + 2 <= reply.size(); };
  const auto word = [&](std::size_t at) { return has(at) ? std::uint32_t{U16(&reply[at])} : 0u; };
  const bool answers = word(kReplyCodeAt) == command_ || command_ == kBufferQuery;
  if (answerTest_ || !has(kReplyCodeAt) || !answers) return;
  taken_ = word(kReplyOkAt) == 1;
  if (command_ == kSwath && taken_) takenSwathNo_ = swathNo_;
  if (command_ == kBufferQuery) {
    const std::uint32_t room = word(kReplyRoomAt) | (word(kReplyRoomAt + 2) << 16);
    roomForBytes_ = room >= askedBytes_ / 2 ? askedBytes_ : 0;
  }
  if (has(kReplyStateAt)) TakeState(U16(&reply[kReplyStateAt]));
}

void MessageOrder::TakeState(std::uint16_t state) {
  const bool ofJob = command_ == kSwath || command_ == kPausePoll;
  if (!ofJob && command_ != kBufferQuery) return;
  if (state == kStatePaused) paused_ = true;
  if (state == kStateResumed || state == kStateRunning) paused_ = false;
  if (state == kStateCancelled || (state == kStateGone && ofJob)) cancelled_ = true;
}

}  // namespace qrn::sim
