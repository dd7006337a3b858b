#include "sim/firmware/job_state.h"

#include "base/bytes.h"
#include "sim/firmware/parameter_block.h"
#include "sim/wire/messages.h"

namespace qrn::sim {
namespace {

constexpr std::size_t kCorrections = 4;  // that the update quirk changes
constexpr std::uint16_t kUpdateMark = 0x1122;
constexpr std::size_t kShortUpdateBytes = 10;

}  // namespace

bool JobState::TakeDue(std::uint32_t nowMs) {
  if (const Quirk* pause = triggers_->Use(Quirk::Kind::kPause)) {
    paused_ = true;
    pausedUntilMs_ = nowMs + pause->ms;
    update_ = pause->update;
  }
  const Quirk* cancel = triggers_->Use(Quirk::Kind::kCancel);
  if (cancel == nullptr) return false;
  cancelled_ = true;
  gone_ = cancel->gone;
  return true;
}

std::uint16_t JobState::Report(std::uint32_t nowMs) {
  if (cancelled_) return gone_ ? kStateGone : kStateCancelled;
  if (!paused_) return kStateRunning;
  if (static_cast<std::int32_t>(nowMs - pausedUntilMs_) < 0) return kStatePaused;
  paused_ = false;
  return kStateResumed;
}

std::vector<std::uint8_t> JobState::UpdateSection(const Machine& machine) const {
  if (update_ == Update::kNone) return {};
  Machine changed = machine;
  if (update_ == Update::kCalibration) ++changed.feedCalib;
  auto block = ParameterBlock(changed);
  if (update_ == Update::kCorrection) {
    for (std::size_t i = 0; i < kCorrections; ++i) ++block[kCorrectionsAt + i];
  }
  std::vector<std::uint8_t> section(2);
  PutU16(section.data(), kUpdateMark);
  const std::size_t bytes = update_ == Update::kShort ? kShortUpdateBytes : kUpdateBytes;
  section.insert(section.end(), block.begin() + kUpdateAt, block.begin() + kUpdateAt + bytes);
  return section;
}

}  // namespace qrn::sim
