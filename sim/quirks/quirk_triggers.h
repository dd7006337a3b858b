// Counts what crosses the printer's border and finds the quirks that are triggered. Each is used up
// on its own, so any number of them act at once.
#ifndef QRN_SIM_QUIRKS_QUIRK_TRIGGERS_H_
#define QRN_SIM_QUIRKS_QUIRK_TRIGGERS_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "sim/quirks/quirks.h"

namespace qrn::sim {

class QuirkTriggers {
 public:
  explicit QuirkTriggers(QuirkScript script) : script_(std::move(script)), used_(script_.size()) {}

  // It is `nowMs` now; the first call begins the session.
  void PassTime(std::uint32_t nowMs);
  // The host writes a command packet of this message, or data, which belong to the message before.
  // `swath`: the one that the message is of; with 0 the swath before stays, but a job create begins
  // at none.
  void BeginPacket(Message message, std::uint32_t swath);
  void BeginWrite(std::size_t bytes, bool isData);
  // A read is asked for again until it has ended: counted once.
  void BeginRead();
  void EndRead() { reading_ = false; }
  void CountMessage() { ++messages_; }
  // The printer begins to answer a message.
  void BeginAnswer(Message message) { answered_.message = message; }
  // The swath that the printer is asked about or given; 0 = none yet.
  void SetSwath(std::uint32_t number) { answered_.swath = number; }

  std::uint32_t Messages() const { return messages_; }

  // Takes one use of the first quirk of this kind that is due and not used up; null if there is
  // none.
  const Quirk* Use(Quirk::Kind kind);

  // The quirks that have not acted up to now, as they were given.
  std::vector<std::string> Unused() const;

  // `untilMs`, or the time at which a quirk is triggered before it: nobody waits past one.
  std::uint32_t NoLongerThan(std::uint32_t untilMs) const;

 private:
  // The message that is in hand, and the swath that it is of.
  struct InHand {
    Message message = Message::kAny;
    std::uint32_t swath = 0;
  };

  bool Reached(const Quirk& quirk) const;
  bool Fits(const Quirk& quirk) const;
  const InHand& Concerned(const Quirk& quirk) const;

  QuirkScript script_;
  std::vector<bool> used_;  // of each quirk
  bool begun_ = false, reading_ = false, writesData_ = false;
  std::uint32_t beganMs_ = 0, nowMs_ = 0;
  InHand written_, answered_;  // by the host, by the printer
  std::uint32_t messages_ = 0, writes_ = 0, reads_ = 0;
  std::uint64_t bytes_ = 0;
};

}  // namespace qrn::sim

#endif  // QRN_SIM_QUIRKS_QUIRK_TRIGGERS_H_
