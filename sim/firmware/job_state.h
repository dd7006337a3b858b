// The state of the job at the printer as its replies report it: running, paused and resumed, or
// cancelled by the operator. Pauses and cancels come from quirks, in the reply that each names.
#ifndef QRN_SIM_FIRMWARE_JOB_STATE_H_
#define QRN_SIM_FIRMWARE_JOB_STATE_H_

#include <cstdint>
#include <vector>

#include "sim/machine/machine.h"
#include "sim/quirks/quirk_triggers.h"

namespace qrn::sim {

class JobState {
 public:
  explicit JobState(QuirkTriggers& triggers) : triggers_(&triggers) {}

  void Begin() { cancelled_ = gone_ = paused_ = false; }
  // To be called before a reply that reports the state: what is due in it happens. True when that
  // is a cancel.
  bool TakeDue(std::uint32_t nowMs);
  bool IsPaused() const { return paused_; }
  // The state that the next reply reports; that a pause is over, once.
  std::uint16_t Report(std::uint32_t nowMs);
  // What a pause reply carries from kReplyUpdateAt on: a mark and the parameter update; empty when
  // the pause brings none.
  std::vector<std::uint8_t> UpdateSection(const Machine& machine) const;

 private:
  QuirkTriggers* triggers_;
  bool cancelled_ = false, gone_ = false, paused_ = false;
  std::uint32_t pausedUntilMs_ = 0;
  Update update_ = Update::kNone;
};

}  // namespace qrn::sim

#endif  // QRN_SIM_FIRMWARE_JOB_STATE_H_
