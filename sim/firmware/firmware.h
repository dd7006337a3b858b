// The printer's firmware: keeps the state of the job, answers each message, and does what its
// quirks say. It gets whole messages and gives whole replies; time is passed in.
#ifndef QRN_SIM_FIRMWARE_FIRMWARE_H_
#define QRN_SIM_FIRMWARE_FIRMWARE_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "sim/firmware/job_state.h"
#include "sim/firmware/message_order.h"
#include "sim/firmware/spool.h"
#include "sim/machine/machine.h"
#include "sim/paper/carriage.h"
#include "sim/paper/paper.h"
#include "sim/quirks/quirk_triggers.h"
#include "sim/wire/messages.h"
#include "sim/wire/wire.h"

namespace qrn::sim {

class Firmware {
 public:
  // `triggers` outlives the firmware.
  Firmware(const Machine& machine, QuirkTriggers& triggers);

  // Takes one message; the reply to it, or none while more is to come.
  std::optional<Reply> Take(const WireMessage& message, std::uint32_t nowMs);
  // The host has read this reply, whole.
  void ReplyRead(const Reply& reply) { order_.ReplyRead(reply); }
  // A transfer of the host's failed.
  void TransferFailed() { order_.TransferFailed(); }
  void Reopened();
  // The swath that a buffer query asks about.
  std::uint32_t NextSwath() const { return lastSwathNo_ + 1; }
  // What a command packet is; kAny for one of no known code.
  static Message MessageOf(const std::vector<std::uint8_t>& packet);
  // Records what happened to the printer apart from what the firmware itself does.
  void Note(const std::string& trouble) { trouble_ = trouble; }

  bool IsPaused() const { return state_.IsPaused(); }
  const std::string& Violation() const { return violation_; }
  // The last thing since the last connect that may have cost the host its job; "" = nothing.
  const std::string& Trouble() const { return trouble_; }
  const Paper& ThePaper() const { return paper_; }
  std::uint32_t ResolutionX() const { return resolution_; }
  std::uint32_t Swaths() const { return swaths_; }
  std::uint32_t FeedOnlySwaths() const { return feedOnlySwaths_; }
  std::uint64_t InkLaid() const { return inkLaid_; }
  std::uint32_t JobsCreated() const { return jobsCreated_; }
  std::uint32_t JobsEnded() const { return jobsEnded_; }

 private:
  using Packet = std::vector<std::uint8_t>;

  void Fail(const std::string& what);
  std::optional<Reply> TakeMessage(const WireMessage& message, std::uint32_t nowMs);
  Reply TakeCommand(const Packet& packet, std::uint32_t nowMs);
  Reply Refuse(std::uint32_t code, std::uint16_t status, std::uint32_t nowMs);
  Reply Connect();
  Reply CreateJob(const Packet& packet);
  Reply TakeSwath(const Packet& packet, const std::vector<std::uint8_t>& data, std::uint32_t nowMs);
  Reply AnswerBufferQuery(std::uint32_t nowMs);
  void PrintSwath(const Packet& packet, const std::vector<std::uint8_t>& data);
  bool CheckSwathOrder(const Packet& packet, const std::vector<std::uint8_t>& data);
  // A reply that reports the job's state, with the parameter update that goes with a pause.
  Reply StateReply(std::uint32_t code, std::uint32_t nowMs);
  // To be called before a reply that reports the state: the pauses and cancels due in it happen.
  void Watch(std::uint32_t nowMs);

  Machine machine_;
  QuirkTriggers* triggers_;
  MessageOrder order_;
  JobState state_;
  Paper paper_;
  std::unique_ptr<Carriage> carriage_;  // null before the first job create
  std::string violation_;
  std::string trouble_;

  Packet jobCreate_;     // the last one
  Packet awaitedSwath_;  // swath command whose data are to come
  Packet lastSwath_;     // last accepted swath and its data, to know a repetition by
  std::vector<std::uint8_t> lastData_;
  std::uint32_t lastSwathNo_ = 0;
  Spool spool_;

  std::uint32_t resolution_ = 0;
  std::uint32_t swaths_ = 0, feedOnlySwaths_ = 0, jobsCreated_ = 0, jobsEnded_ = 0;
  std::uint64_t inkLaid_ = 0;
};

}  // namespace qrn::sim

#endif  // QRN_SIM_FIRMWARE_FIRMWARE_H_
