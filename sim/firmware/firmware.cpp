#include "sim/firmware/firmware.h"

#include <algorithm>

#include "base/bytes.h"
#include "sim/firmware/parameter_block.h"
#include "sim/firmware/protocol_check.h"

namespace qrn::sim {
namespace {

constexpr std::uint16_t kStatusSpoolOverflow = 7;

}  // namespace

Firmware::Firmware(const Machine& machine, QuirkTriggers& triggers)
    : machine_(machine), triggers_(&triggers), state_(triggers) {}

void Firmware::Fail(const std::string& what) {
  if (violation_.empty())
    violation_ = "message " + std::to_string(triggers_->Messages()) + ": " + what;
}

Message Firmware::MessageOf(const Packet& packet) {
  switch (U32(packet.data())) {
    case kConnect:
      return Message::kConnect;
    case kJobCreate:
      return Message::kCreate;
    case kSwath:
      return Message::kSwath;
    case kJobEnd:
      return Message::kEnd;
    case kCancel:
      return Message::kCancel;
    case kPausePoll:
      return IsAnswerTest(packet) ? Message::kTest : Message::kPoll;
    case kBufferQuery:
      return Message::kQuery;
    default:
      return Message::kAny;
  }
}

void Firmware::Reopened() {
  awaitedSwath_.clear();
  order_.Reopened();
}

std::optional<Reply> Firmware::Take(const WireMessage& message, std::uint32_t nowMs) {
  triggers_->CountMessage();
  std::optional<Reply> reply = TakeMessage(message, nowMs);
  if (reply && U16(&(*reply)[kReplyOkAt]) == 1) order_.Taken();
  return reply;
}

std::optional<Reply> Firmware::TakeMessage(const WireMessage& message, std::uint32_t nowMs) {
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
  const std::string disorder = order_.Check(message.bytes);
  if (!disorder.empty()) Fail(disorder);
  if (U32(message.bytes.data()) == kSwath && U32(&message.bytes[kDataSizeAt]) != 0) {
    awaitedSwath_ = message.bytes;
    return std::nullopt;
  }
  return TakeCommand(message.bytes, nowMs);
}

Reply Firmware::TakeCommand(const Packet& packet, std::uint32_t nowMs) {
  const std::uint32_t code = U32(packet.data());
  if (code == kSwath) return TakeSwath(packet, {}, nowMs);
  triggers_->BeginAnswer(MessageOf(packet));
  if (code == kBufferQuery) triggers_->SetSwath(NextSwath());
  if (const Quirk* refusal = triggers_->Use(Quirk::Kind::kRefuse))
    return Refuse(code, refusal->status, nowMs);
  switch (code) {
    case kConnect:
      return Connect();
    case kJobCreate:
      ++jobsCreated_;
      return CreateJob(packet);
    case kBufferQuery:
      return AnswerBufferQuery(nowMs);
    case kPausePoll:
      if (IsAnswerTest(packet)) return MakeReply(code, true, kStateRunning, 0);
      Watch(nowMs);
      break;
    case kJobEnd:
      ++jobsEnded_;
      break;
    default:
      break;
  }
  // These carry whatever body the command before them left: within a job that is the job create's.
  if (!jobCreate_.empty() && !std::equal(packet.begin() + kBodyAt, packet.end(),
                                         jobCreate_.begin() + kBodyAt, jobCreate_.end())) {
    Fail("command " + std::to_string(code) + " without the job create's body");
  }
  return StateReply(code, nowMs);
}

Reply Firmware::StateReply(std::uint32_t code, std::uint32_t nowMs) {
  const std::uint16_t state = state_.Report(nowMs);
  Reply reply = MakeReply(code, true, state, 0);
  const std::vector<std::uint8_t> update =
      state == kStatePaused ? state_.UpdateSection(machine_) : std::vector<std::uint8_t>{};
  if (update.empty()) return reply;
  reply.resize(kReplyUpdateAt);
  reply.insert(reply.end(), update.begin(), update.end());
  return reply;
}

void Firmware::Watch(std::uint32_t nowMs) {
  if (state_.TakeDue(nowMs)) {
    trouble_ = "the job was cancelled at the printer, at swath " + std::to_string(lastSwathNo_);
  }
}

Reply Firmware::Refuse(std::uint32_t code, std::uint16_t status, std::uint32_t nowMs) {
  if (code != kConnect) return MakeReply(code, false, state_.Report(nowMs), status);
  trouble_ = "the printer refused the connect with status " + std::to_string(status);
  return MakeReply(kConnect, false, 0, status);
}

Reply Firmware::Connect() {
  trouble_.clear();
  Reply reply = MakeReply(kConnect, true, 0, 0);
  reply.resize(kReplyBlockAt);
  const auto whole = ParameterBlock(machine_);
  std::vector<std::uint8_t> block(whole.begin(), whole.end());
  if (const Quirk* defect = triggers_->Use(Quirk::Kind::kBlock)) {
    CorruptBlock(defect->defect, &block);
    trouble_ = "the printer's parameter block has a defect";
  }
  reply.insert(reply.end(), block.begin(), block.end());
  return reply;
}

Reply Firmware::CreateJob(const Packet& packet) {
  jobCreate_ = packet;
  resolution_ = U16(&packet[kCreateResolutionAt]);
  paper_.Clear();
  lastSwathNo_ = 0;
  lastSwath_.clear();
  triggers_->SetSwath(0);
  state_.Begin();
  carriage_.reset();
  if (ResolutionIndexOf(resolution_) < 0) {
    Fail("job at " + std::to_string(resolution_) + " dpi");
  } else {
    carriage_ = std::make_unique<Carriage>(machine_, resolution_);
    const std::uint32_t passes = BasePassCountOf(resolution_);
    if (packet[kCreatePassesAt] != (machine_.heads == Heads::kBoth ? passes : 2 * passes))
      Fail("job of " + std::to_string(packet[kCreatePassesAt]) + " passes");
    if (U16(&packet[kCreateCarriageAt]) !=
        (machine_.twoHeadCarriage ? kTwoHeadCarriage : kOneHeadCarriage))
      Fail("job's carriage");
  }
  return MakeReply(kJobCreate, true, kStateRunning, 0);
}

Reply Firmware::AnswerBufferQuery(std::uint32_t nowMs) {
  Watch(nowMs);
  Reply reply = StateReply(kBufferQuery, nowMs);
  const bool full = triggers_->Use(Quirk::Kind::kBufferFull) != nullptr;
  const bool paused = U16(&reply[kReplyStateAt]) == kStatePaused;
  PutU32(&reply[kReplyRoomAt], full || paused ? 0 : spool_.Room(nowMs));
  return reply;
}

// Numbers rise by one; a swath whose reply was lost may come again, and then it is the same to the
// byte.
bool Firmware::CheckSwathOrder(const Packet& packet, const std::vector<std::uint8_t>& data) {
  const std::uint32_t number = U32(&packet[kSwathNoAt]);
  if (carriage_ == nullptr) return false;
  if (number == lastSwathNo_) {
    if (packet != lastSwath_ || data != lastData_)
      Fail("swath " + std::to_string(number) + " came again, but changed");
    return false;
  }
  if (number != lastSwathNo_ + 1) {
    Fail("swath " + std::to_string(number) + " after swath " + std::to_string(lastSwathNo_));
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
  triggers_->BeginAnswer(Message::kSwath);
  triggers_->SetSwath(number);
  if (const Quirk* refusal = triggers_->Use(Quirk::Kind::kRefuse))
    return MakeReply(kSwath, false, kStateRunning, refusal->status);
  if (CheckSwathOrder(packet, data)) {
    if (!spool_.Take(data.size(), nowMs))
      return MakeReply(kSwath, false, kStateRunning, kStatusSpoolOverflow);
    PrintSwath(packet, data);
    lastSwathNo_ = number;
    lastSwath_ = packet;
    lastData_ = data;
  }
  Watch(nowMs);
  return StateReply(kSwath, nowMs);
}

void Firmware::PrintSwath(const Packet& packet, const std::vector<std::uint8_t>& data) {
  PassCommand pass;
  pass.direction = packet[kDirAt];
  pass.startPos = U16(&packet[kStartPosAt]);
  pass.feedSteps = U32(&packet[kFeedStepsAt]);
  inkLaid_ += carriage_->PrintPass(pass, data, paper_);
  if (carriage_->StrayBytes() != 0) Fail("dots for a head that is not in use");
  ++swaths_;
  if (data.empty()) ++feedOnlySwaths_;
}

}  // namespace qrn::sim
