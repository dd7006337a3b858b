#include "sim/firmware.h"

#include <algorithm>

#include "platform/bytes.h"
#include "sim/protocol_check.h"

namespace qrn::sim {
namespace {

constexpr std::uint16_t kStateCancelled = 2, kStatePaused = 3, kStateResumed = 4, kStateRunning = 5;
constexpr std::uint16_t kStatusSpoolOverflow = 7;
constexpr std::size_t kReplyBytes = 16;  // up to the word behind the two of a pause reply

Reply MakeReply(std::uint32_t code, bool ok, std::uint16_t sub, std::uint16_t status) {
  Reply reply(kReplyBytes);
  PutU16(&reply[0], Low16(code));
  PutU16(&reply[2], ok ? 1 : 0);
  PutU16(&reply[4], sub);
  PutU16(&reply[6], status);
  return reply;
}

bool Passed(std::uint32_t nowMs, std::uint32_t momentMs) {
  return static_cast<std::int32_t>(nowMs - momentMs) >= 0;
}

}  // namespace

Firmware::Firmware(const Machine& machine, QuirkScript quirks)
    : machine_(machine), quirks_(std::move(quirks)) {}

void Firmware::Fail(const std::string& what) {
  if (violation_.empty()) violation_ = "message " + std::to_string(messages_) + ": " + what;
}

bool Firmware::Present(std::uint32_t nowMs) {
  if (away_ && !awayForGood_ && Passed(nowMs, awayUntilMs_)) away_ = false;
  return !away_;
}

Quirk* Firmware::Due(Quirk::Kind kind, std::uint32_t moment) {
  for (Quirk& quirk : quirks_) {
    if (quirk.kind == kind && quirk.count > 0 && moment >= quirk.at) return &quirk;
  }
  return nullptr;
}

std::optional<Reply> Firmware::Take(const WireMessage& message, std::uint32_t nowMs) {
  ++messages_;
  if (Quirk* quirk = Due(Quirk::Kind::kUnplug, messages_)) {
    quirk->count = 0;
    away_ = true;
    awayForGood_ = quirk->durationMs == 0;
    awayUntilMs_ = nowMs + quirk->durationMs;
    trouble_ = "the printer was unplugged at message " + std::to_string(messages_);
  }
  if (message.isData) {
    if (awaitedSwath_.empty()) {
      Fail("swath data without a swath command");
      return std::nullopt;
    }
    const Packet packet = std::move(awaitedSwath_);
    awaitedSwath_.clear();
    return TakeSwath(packet, message.bytes, nowMs);
  }
  if (!awaitedSwath_.empty()) Fail("a command instead of swath data");
  awaitedSwath_.clear();
  const std::string fault = CheckCommandPacket(message.bytes);
  if (!fault.empty()) {
    Fail(fault);
    return std::nullopt;
  }
  if (U32(message.bytes.data()) == kSwath && U32(&message.bytes[kDataSizeAt]) != 0) {
    awaitedSwath_ = message.bytes;
    return std::nullopt;
  }
  return TakeCommand(message.bytes, nowMs);
}

Reply Firmware::TakeCommand(const Packet& packet, std::uint32_t nowMs) {
  const std::uint32_t code = U32(packet.data());
  switch (code) {
    case kConnect:
      return Connect();
    case kJobCreate:
      ++jobsCreated_;
      return CreateJob(packet);
    case kSwath:
      return TakeSwath(packet, {}, nowMs);
    case kBufferQuery:
      return AnswerBufferQuery(nowMs);
    case kPausePoll:
      if (IsAnswerTest(packet)) return MakeReply(code, true, kStateRunning, 0);
      break;
    case kJobEnd:
      ++jobsEnded_;
      break;
    default:
      break;
  }
  // These carry whatever body the command before them left: within a job that is the job create's.
  if (!jobCreate_.empty() &&
      !std::equal(packet.begin() + 4, packet.end(), jobCreate_.begin() + 4, jobCreate_.end())) {
    Fail("command " + std::to_string(code) + " without the job create's body");
  }
  return MakeReply(code, true, JobState(nowMs), 0);
}

Reply Firmware::Connect() {
  if (Quirk* quirk = Due(Quirk::Kind::kConnectRefused, 1)) {
    --quirk->count;
    trouble_ = "the printer refused the connect with status " + std::to_string(quirk->value);
    return MakeReply(kConnect, false, 0, Low16(quirk->value));
  }
  trouble_.clear();
  Reply reply = MakeReply(kConnect, true, 0, 0);
  reply.resize(8);
  const auto block = ParameterBlock(machine_);
  reply.insert(reply.end(), block.begin(), block.end());
  return reply;
}

Reply Firmware::CreateJob(const Packet& packet) {
  jobCreate_ = packet;
  resolution_ = U16(&packet[16]);
  paper_.Clear();
  lastSwathNo_ = 0;
  lastSwath_.clear();
  cancelled_ = paused_ = false;
  carriage_.reset();
  if (ResolutionIndexOf(resolution_) < 0) {
    Fail("job at " + std::to_string(resolution_) + " dpi");
  } else {
    carriage_ = std::make_unique<Carriage>(machine_, resolution_);
    const std::uint32_t passes = BasePassCountOf(resolution_);
    if (packet[8] != (machine_.heads == Heads::kBoth ? passes : 2 * passes))
      Fail("job of " + std::to_string(packet[8]) + " passes");
    if (U16(&packet[14]) != (machine_.twoHeadCarriage ? 1800 : 1200)) Fail("job's carriage");
  }
  return MakeReply(kJobCreate, true, kStateRunning, 0);
}

std::uint16_t Firmware::JobState(std::uint32_t nowMs) {
  if (cancelled_) return kStateCancelled;
  if (!paused_) return kStateRunning;
  if (!Passed(nowMs, pausedUntilMs_)) return kStatePaused;
  paused_ = false;
  return kStateResumed;
}

Reply Firmware::AnswerBufferQuery(std::uint32_t nowMs) {
  const std::uint16_t state = JobState(nowMs);
  std::uint32_t room = state == kStatePaused ? 0 : spool_.Room(nowMs);
  if (Quirk* quirk = Due(Quirk::Kind::kBufferFull, lastSwathNo_ + 1)) {
    --quirk->count;
    room = 0;
  }
  Reply reply = MakeReply(kBufferQuery, true, state, 0);
  PutU32(&reply[8], room);
  return reply;
}

// Numbers rise by one; a swath whose reply was lost may come again, and then it is the same to the
// byte.
bool Firmware::CheckSwathOrder(const Packet& packet, const std::vector<std::uint8_t>& data) {
  const std::uint32_t number = U32(&packet[kSwathNoAt]);
  if (carriage_ == nullptr) {
    Fail("swath " + std::to_string(number) + " without a job");
    return false;
  }
  if (number == lastSwathNo_) {
    if (packet != lastSwath_ || data != lastData_)
      Fail("swath " + std::to_string(number) + " came again, but changed");
    return false;
  }
  if (number != lastSwathNo_ + 1) {
    Fail("swath " + std::to_string(number) + " behind swath " + std::to_string(lastSwathNo_));
  }
  return true;
}

Reply Firmware::TakeSwath(const Packet& packet, const std::vector<std::uint8_t>& data,
                          std::uint32_t nowMs) {
  if (data.size() != U32(&packet[kDataSizeAt])) {
    Fail(std::to_string(data.size()) + " bytes of swath data, announced " +
         std::to_string(U32(&packet[kDataSizeAt])));
  }
  const std::uint32_t number = U32(&packet[kSwathNoAt]);
  Quirk* overflow = Due(Quirk::Kind::kSpoolOverflow, number);
  if (overflow != nullptr && number == overflow->at) {
    --overflow->count;
    return MakeReply(kSwath, false, kStateRunning, kStatusSpoolOverflow);
  }
  if (CheckSwathOrder(packet, data)) {
    if (!spool_.Take(data.size(), nowMs))
      return MakeReply(kSwath, false, kStateRunning, kStatusSpoolOverflow);
    PrintSwath(packet, data);
    lastSwathNo_ = number;
    lastSwath_ = packet;
    lastData_ = data;
  }
  if (Quirk* quirk = Due(Quirk::Kind::kCancel, number)) {
    quirk->count = 0;
    cancelled_ = true;
    trouble_ = "the job was cancelled at the printer, at swath " + std::to_string(number);
  }
  if (Quirk* quirk = Due(Quirk::Kind::kPause, number)) {
    quirk->count = 0;
    paused_ = true;
    pausedUntilMs_ = nowMs + quirk->durationMs;
  }
  return MakeReply(kSwath, true, JobState(nowMs), 0);
}

void Firmware::PrintSwath(const Packet& packet, const std::vector<std::uint8_t>& data) {
  PassCommand pass;
  pass.direction = packet[kDirAt];
  pass.startPos = U16(&packet[kStartPosAt]);
  pass.feedSteps = U32(&packet[kFeedStepsAt]);
  inkLaid_ += carriage_->Print(pass, data, paper_);
  if (carriage_->StrayBytes() != 0) Fail("dots for a head that is not in use");
  ++swaths_;
  if (data.empty()) ++feedOnlySwaths_;
}

}  // namespace qrn::sim
