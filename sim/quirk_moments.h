// Counts what goes by at the printer's border and finds the quirks whose moment has come. Each is
// used up on its own, so any number of them act at once.
#ifndef QRN_SIM_QUIRK_MOMENTS_H_
#define QRN_SIM_QUIRK_MOMENTS_H_

#include <cstddef>
#include <cstdint>

#include "sim/quirks.h"

namespace qrn::sim {

class QuirkMoments {
 public:
  explicit QuirkMoments(QuirkScript script) : script_(std::move(script)) {}

  // The clock stands at `nowMs`; the first call begins the session.
  void PassTime(std::uint32_t nowMs);
  void BeginWrite(std::size_t bytes);
  // A read is asked for again until it has ended: counted once.
  void BeginRead();
  void EndRead() { reading_ = false; }
  void CountMessage() { ++messages_; }
  // The swath that the printer is asked about or given; 0 = none yet.
  void SetSwath(std::uint32_t number) { swath_ = number; }

  std::uint32_t Messages() const { return messages_; }

  // The first quirk of the kind that is due, not used up and for which `fits(quirk)`; null if there
  // is none. The caller takes from its count.
  template <class Fits>
  Quirk* Due(Quirk::Kind kind, Fits fits) {
    for (Quirk& quirk : script_) {
      if (quirk.kind == kind && quirk.count > 0 && Reached(quirk) && fits(quirk)) return &quirk;
    }
    return nullptr;
  }
  // Uses such a quirk once.
  template <class Fits>
  const Quirk* Use(Quirk::Kind kind, Fits fits) {
    Quirk* quirk = Due(kind, fits);
    if (quirk != nullptr) --quirk->count;
    return quirk;
  }
  const Quirk* Use(Quirk::Kind kind) {
    return Use(kind, [](const Quirk&) { return true; });
  }
  // Uses all that is left of the due quirks of the kind, and tells how much that was.
  std::uint32_t UseUp(Quirk::Kind kind);

  // `untilMs`, or the moment of a quirk that comes before it: nobody waits past one.
  std::uint32_t NoLongerThan(std::uint32_t untilMs) const;

 private:
  bool Reached(const Quirk& quirk) const;

  QuirkScript script_;
  bool begun_ = false, reading_ = false;
  std::uint32_t beganMs_ = 0, nowMs_ = 0;
  std::uint32_t swath_ = 0, messages_ = 0, writes_ = 0, reads_ = 0, chunks_ = 0;
  std::uint64_t bytes_ = 0;
};

}  // namespace qrn::sim

#endif  // QRN_SIM_QUIRK_MOMENTS_H_
