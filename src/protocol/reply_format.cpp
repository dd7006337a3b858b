#include "protocol/reply_format.h"

#include "base/bytes.h"

namespace qrn {

std::uint16_t ReplyWord(const std::uint8_t* reply, std::uint32_t bytes, std::uint32_t at) {
  return at + sizeof(std::uint16_t) <= bytes ? U16(reply + at) : std::uint16_t{0};
}

ReplyRec DecodeReply(const std::uint8_t* reply, std::uint32_t bytes) {
  const auto word = [reply, bytes](std::uint32_t at) { return ReplyWord(reply, bytes, at); };
  const bool reportsState = bytes >= offsetof(ReplyRec, status);
  return {word(offsetof(ReplyRec, code)), word(offsetof(ReplyRec, ok)),
          reportsState ? word(offsetof(ReplyRec, sub)) : std::uint16_t{kJobUnreported},
          word(offsetof(ReplyRec, status))};
}

}  // namespace qrn
