// For targets that call single parts of the library, without its threads: a cleared job, and
// packets for the fake platform to receive.
#ifndef QRN_FUZZ_SINGLE_PARTS_H_
#define QRN_FUZZ_SINGLE_PARTS_H_

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "host/job.h"
#include "link/frame.h"
#include "params/printer_params.h"
#include "platform/bytes.h"

namespace qrn::fuzz {

// The job and the parameter block as the library starts with them, so that an input gives the same
// alone as behind others. The log is written, to where nobody reads it.
inline Job& FreshJob() {
  Job& job = GetJob();
  job = Job{};
  job.nSwathLimit = 0xFFFFFFFF;
  std::snprintf(job.szLogFile, sizeof job.szLogFile, "/dev/null");
  job.bLogOn = 1;
  GetPrinterParams() = PrinterParams{};
  return job;
}

// One received packet:
//   u8   bits 0..2: kind (only, first, middle, last, then any u16); bit 3: a false length follows
//   u16  kind, when it is any
//   u16  chunk words, when false
//   u8   payload bytes, then these
inline std::vector<std::uint8_t> TakePacket(Input& in) {
  constexpr std::uint16_t kKinds[] = {CHUNK_ONLY, CHUNK_FIRST, CHUNK_MIDDLE, CHUNK_LAST};
  constexpr std::uint8_t kFalseLength = 0x08;
  const std::uint8_t shape = in.U8();
  const std::uint16_t kind = (shape & 7u) < std::size(kKinds) ? kKinds[shape & 7u] : in.U16();
  const std::uint16_t claimedWords = (shape & kFalseLength) != 0 ? in.U16() : std::uint16_t{0};
  const std::size_t payloadBytes = in.U8() % (2 * kPacketRoomWords + 1);
  const std::vector<std::uint8_t> payload = in.Bytes(payloadBytes);

  std::vector<std::uint8_t> packet(kPacketBytes);
  PutU16(&packet[offsetof(FrameHeader, kind)], kind);
  PutU16(&packet[offsetof(FrameHeader, chunkWords)],
         (shape & kFalseLength) != 0 ? claimedWords : Low16((payload.size() + 1) / 2));
  std::copy(payload.begin(), payload.end(), packet.begin() + kFrameBytes);
  return packet;
}

}  // namespace qrn::fuzz

#endif  // QRN_FUZZ_SINGLE_PARTS_H_
