#include "sim/quirks/quirk_triggers.h"

#include <algorithm>

namespace qrn::sim {

void QuirkTriggers::PassTime(std::uint32_t nowMs) {
  if (!begun_) beganMs_ = nowMs;
  begun_ = true;
  nowMs_ = nowMs;
}

void QuirkTriggers::BeginPacket(Message message, std::uint32_t swath) {
  written_.message = message;
  if (swath != 0 || message == Message::kCreate) written_.swath = swath;
}

void QuirkTriggers::BeginWrite(std::size_t bytes, bool isData) {
  ++writes_;
  bytes_ += bytes;
  writesData_ = isData;
}

void QuirkTriggers::BeginRead() {
  if (!reading_) ++reads_;
  reading_ = true;
}

// A failing write concerns the message that is being written, all else the one being answered: what
// is written may come to nothing, what is answered has come whole.
const QuirkTriggers::InHand& QuirkTriggers::Concerned(const Quirk& quirk) const {
  return WhereActs(quirk.kind) == Acts::kOnWrite ? written_ : answered_;
}

bool QuirkTriggers::Reached(const Quirk& quirk) const {
  switch (quirk.trigger) {
    case Quirk::Trigger::kStart:
      return true;
    case Quirk::Trigger::kSwath:
      return Concerned(quirk).swath >= quirk.at;
    case Quirk::Trigger::kMessage:
      // A write belongs to the message that it is to complete, anything else to the last whole one.
      return messages_ + (WhereActs(quirk.kind) == Acts::kOnWrite ? 1 : 0) >= quirk.at;
    case Quirk::Trigger::kWrite:
      return writes_ >= quirk.at;
    case Quirk::Trigger::kRead:
      return reads_ >= quirk.at;
    case Quirk::Trigger::kByte:
      return bytes_ >= quirk.at;
    case Quirk::Trigger::kTime:
      return nowMs_ - beganMs_ >= quirk.at;
  }
  return false;
}

bool QuirkTriggers::Fits(const Quirk& quirk) const {
  if (quirk.on != Message::kAny && quirk.on != Concerned(quirk).message) return false;
  return quirk.where == Where::kAny || (quirk.where == Where::kData) == writesData_;
}

const Quirk* QuirkTriggers::Use(Quirk::Kind kind) {
  for (Quirk& quirk : script_) {
    if (quirk.kind != kind || quirk.count == 0 || !Reached(quirk) || !Fits(quirk)) continue;
    --quirk.count;
    used_[static_cast<std::size_t>(&quirk - script_.data())] = true;
    return &quirk;
  }
  return nullptr;
}

std::vector<std::string> QuirkTriggers::Unused() const {
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < script_.size(); ++i) {
    if (!used_[i]) texts.push_back(script_[i].text);
  }
  return texts;
}

std::uint32_t QuirkTriggers::NoLongerThan(std::uint32_t untilMs) const {
  std::uint32_t waitMs = untilMs - nowMs_;
  for (const Quirk& quirk : script_) {
    if (quirk.trigger == Quirk::Trigger::kTime && quirk.count > 0 && !Reached(quirk))
      waitMs = std::min(waitMs, quirk.at - (nowMs_ - beganMs_));
  }
  return nowMs_ + waitMs;
}

}  // namespace qrn::sim
