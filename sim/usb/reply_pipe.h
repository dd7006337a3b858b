// The bulk-in pipe: replies wait in it as packets until the host reads them. What quirks do to
// replies on their way is done here: stray ones before it, corrupt, late and lost ones.
#ifndef QRN_SIM_USB_REPLY_PIPE_H_
#define QRN_SIM_USB_REPLY_PIPE_H_

#include <cstdint>
#include <deque>
#include <vector>

#include "sim/quirks/quirk_triggers.h"
#include "sim/wire/messages.h"
#include "sim/wire/wire.h"

namespace qrn::sim {

class ReplyPipe {
 public:
  explicit ReplyPipe(QuirkTriggers& triggers) : triggers_(&triggers) {}

  void Send(const Reply& reply, std::uint32_t nowMs);
  // The device was opened anew: what was in the pipe is lost, and a printer that was silent for
  // ever answers again.
  void Reopened();
  // The packet to be read next, null if there is none yet; *lookAgainMs then says when to ask
  // again.
  const std::vector<std::uint8_t>* Front(std::uint32_t nowMs, std::uint32_t* lookAgainMs) const;
  void Pop() { packets_.pop_front(); }

 private:
  using Bytes = std::vector<std::uint8_t>;
  struct Packet {
    Bytes bytes;
    std::uint32_t dueMs;
  };

  std::uint32_t DueMs(std::uint32_t nowMs);
  void PushStray(const Reply& reply, std::uint32_t dueMs);
  void PushSaid(const SaidPacket& said, std::uint32_t dueMs);
  void PushGarbage(Garbage form, const Reply& reply, std::uint32_t dueMs);
  Bytes RandomPacket();
  void Push(const std::vector<Bytes>& packets, std::uint32_t dueMs);

  QuirkTriggers* triggers_;
  ReplyPacker packer_;
  std::deque<Packet> packets_;
  std::uint32_t strays_ = 0;  // replies to other codes so far
  bool mute_ = false;         // for ever
  bool silent_ = false;       // until then
  std::uint32_t silentUntilMs_ = 0;
};

}  // namespace qrn::sim

#endif  // QRN_SIM_USB_REPLY_PIPE_H_
