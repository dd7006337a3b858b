#include "sim/quirk_moments.h"

#include <algorithm>

namespace qrn::sim {
namespace {

constexpr std::size_t kSlotBytes = 8192;  // a frame each; a command packet is shorter than one

}  // namespace

void QuirkMoments::PassTime(std::uint32_t nowMs) {
  if (!begun_) beganMs_ = nowMs;
  begun_ = true;
  nowMs_ = nowMs;
}

void QuirkMoments::BeginWrite(std::size_t bytes) {
  ++writes_;
  bytes_ += bytes;
  chunks_ += static_cast<std::uint32_t>((bytes + kSlotBytes - 1) / kSlotBytes);
}

void QuirkMoments::BeginRead() {
  if (!reading_) ++reads_;
  reading_ = true;
}

bool QuirkMoments::Reached(const Quirk& quirk) const {
  switch (quirk.moment) {
    case Quirk::Moment::kStart:
      return true;
    case Quirk::Moment::kSwath:
      return swath_ >= quirk.at;
    case Quirk::Moment::kMessage:
      // A write belongs to the message that it is to complete, anything else to the last whole one.
      return messages_ + (quirk.kind == Quirk::Kind::kWriteFails ? 1 : 0) >= quirk.at;
    case Quirk::Moment::kWrite:
      return writes_ >= quirk.at;
    case Quirk::Moment::kRead:
      return reads_ >= quirk.at;
    case Quirk::Moment::kByte:
      return bytes_ >= quirk.at;
    case Quirk::Moment::kChunk:
      return chunks_ >= quirk.at;
    case Quirk::Moment::kTime:
      return nowMs_ - beganMs_ >= quirk.at;
  }
  return false;
}

std::uint32_t QuirkMoments::UseUp(Quirk::Kind kind) {
  std::uint32_t used = 0;
  while (Use(kind) != nullptr) ++used;
  return used;
}

std::uint32_t QuirkMoments::NoLongerThan(std::uint32_t untilMs) const {
  std::uint32_t waitMs = untilMs - nowMs_;
  for (const Quirk& quirk : script_) {
    if (quirk.moment == Quirk::Moment::kTime && quirk.count > 0 && !Reached(quirk))
      waitMs = std::min(waitMs, quirk.at - (nowMs_ - beganMs_));
  }
  return nowMs_ + waitMs;
}

}  // namespace qrn::sim
