// The printer's firmware: keeps the state of the job, answers each message, and does what its
// quirks say. It gets whole messages and gives whole replies; time is passed in.
#ifndef QRN_SIM_FIRMWARE_H_
#define QRN_SIM_FIRMWARE_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "sim/carriage.h"
#include "sim/machine.h"
#include "sim/paper.h"
#include "sim/quirks.h"
#include "sim/spool.h"
#include "sim/wire.h"

namespace qrn::sim {

using Reply = std::vector<std::uint8_t>;

class Firmware {
 public:
  Firmware(const Machine& machine, QuirkScript quirks);

  // Takes one message; the reply to it, or none while more is to come.
  std::optional<Reply> Take(const WireMessage& message, std::uint32_t nowMs);
  // The link was opened anew.
  void Reopened() { awaitedSwath_.clear(); }
  // False while a quirk keeps the device away from the bus.
  bool Present(std::uint32_t nowMs);

  const std::string& Violation() const { return violation_; }
  // What may have cost the host its job, last of all since the last connect; "" = nothing.
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
  Reply TakeCommand(const Packet& packet, std::uint32_t nowMs);
  Reply Connect();
  Reply CreateJob(const Packet& packet);
  Reply TakeSwath(const Packet& packet, const std::vector<std::uint8_t>& data, std::uint32_t nowMs);
  Reply AnswerBufferQuery(std::uint32_t nowMs);
  void PrintSwath(const Packet& packet, const std::vector<std::uint8_t>& data);
  bool CheckSwathOrder(const Packet& packet, const std::vector<std::uint8_t>& data);
  // The job's state as replies tell it at this moment: 2, 3, 4 once after a pause, else 5.
  std::uint16_t JobState(std::uint32_t nowMs);
  // A quirk of this kind that is due and not used up; null if there is none.
  Quirk* Due(Quirk::Kind kind, std::uint32_t moment);

  Machine machine_;
  QuirkScript quirks_;
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

  bool cancelled_ = false;
  bool paused_ = false;
  std::uint32_t pausedUntilMs_ = 0;
  bool away_ = false;
  bool awayForGood_ = false;
  std::uint32_t awayUntilMs_ = 0;

  std::uint32_t resolution_ = 0;
  std::uint32_t messages_ = 0;
  std::uint32_t swaths_ = 0, feedOnlySwaths_ = 0, jobsCreated_ = 0, jobsEnded_ = 0;
  std::uint64_t inkLaid_ = 0;
};

}  // namespace qrn::sim

#endif  // QRN_SIM_FIRMWARE_H_
