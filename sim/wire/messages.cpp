#include "sim/wire/messages.h"

#include "base/bytes.h"

namespace qrn::sim {

Reply MakeReply(std::uint32_t code, bool ok, std::uint16_t state, std::uint16_t status) {
  Reply reply(kReplyBytes);
  PutU16(&reply[kReplyCodeAt], Low16(code));
  PutU16(&reply[kReplyOkAt], ok ? 1 : 0);
  PutU16(&reply[kReplyStateAt], state);
  PutU16(&reply[kReplyStatusAt], status);
  return reply;
}

}  // namespace qrn::sim
