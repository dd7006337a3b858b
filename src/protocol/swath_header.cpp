#include "protocol/swath_header.h"

#include <cstring>

#include "base/bytes.h"

namespace qrn {

void EncodeSwathHeader(const SwathHeader& header, std::uint8_t* bytes) {
  std::memset(bytes, 0, kSwathHeaderBytes);
  bytes[offsetof(SwathHeader, dir)] = header.dir;
  bytes[offsetof(SwathHeader, dir2)] = header.dir2;
  bytes[offsetof(SwathHeader, spitMode)] = header.spitMode;
  PutU16(bytes + offsetof(SwathHeader, speed), header.speed);
  PutU16(bytes + offsetof(SwathHeader, startPos), header.startPos);
  PutU16(bytes + offsetof(SwathHeader, endPos), header.endPos);
  PutU16(bytes + offsetof(SwathHeader, spitAmount), header.spitAmount);
  PutU16(bytes + offsetof(SwathHeader, stepLines), header.stepLines);
  PutU32(bytes + offsetof(SwathHeader, swathNo), header.swathNo);
  PutU32(bytes + offsetof(SwathHeader, feedSteps), header.feedSteps);
  PutU32(bytes + offsetof(SwathHeader, feedLine), header.feedLine);
}

}  // namespace qrn
