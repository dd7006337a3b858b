// Whatever a printer sends: packets in any order and of any kind joined to replies; replies of any
// length to any command interpreted; both within a wait for room and within a whole exchange, with
// link losses.
//
// Input: u8 what to run, u8 command code, u8 state of the job, u8 writes that succeed (0 = all),
// then
//   interpretation: replies: u8 bytes, then these
//   else: packets; after the last one reads fail. For joining alone u16 capacity before them.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <numeric>
#include <vector>

#include "base/bytes.h"
#include "fuzz/fuzz_input.h"
#include "job/job.h"
#include "link/exchange.h"
#include "link/frame.h"
#include "link/transmit.h"
#include "link/transport.h"
#include "link/usb_device.h"
#include "params/connect.h"
#include "params/param_block.h"
#include "params/resolution.h"
#include "protocol/command.h"
#include "protocol/reply.h"
#include "protocol/reply_format.h"
#include "raster/job_memory.h"
#include "sim/wire/wire.h"
#include "support/fake_platform.h"

using namespace qrn;

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kSwathBytes = 320, kCapacityMax = 4096;
constexpr std::uint16_t kKinds[] = {CHUNK_ONLY, CHUNK_FIRST, CHUNK_MIDDLE, CHUNK_LAST};
constexpr std::uint8_t kChinese = 0x40, kReplugged = 0x80;  // bits of the state byte

// A job of a small image on a printer with a plausible feed, so that an input gives the same alone
// as after others. The log is written, to where nobody reads it.
Job& FreshJob(std::uint8_t command, std::uint8_t state) {
  Job& job = GetJob();
  job = Job{};
  GetPrinterParams() = PrinterParams{};
  PutU32(GetPrinterParams().bytes + kParamStepBaseAt, 72001);
  std::snprintf(job.szLogFile, sizeof job.szLogFile, "/dev/null");
  job.bLogOn = 1;
  job.nSwathLimit = 0xFFFFFFFF;
  job.resIdx = state & 3;
  job.nResX = Low16(kResolutionX[job.resIdx]);
  job.nResY = 360;
  job.nLineBits = 96;
  job.nHeight = 10;
  job.nColors = 8;
  job.nBitsPerPixel = 2;
  job.nTxCmd = command;
  job.stepCalib = 2540;
  job.passStep = 120;
  job.bPrnPause = (state >> 2) & 1;
  job.bCancelLatch = (state >> 3) & 1;
  job.bTxRun = 1;
  SetUsbIds(job);
  return job;
}

// One received packet:
//   u8   bits 0..2: kind (only, first, middle, last, then any u16); bit 3: a false length follows
//   u16  kind, when it is any
//   u16  chunk words, when false
//   u8   payload bytes, then these
Bytes TakePacket(fuzz::Input& in) {
  const std::uint8_t shape = in.U8();
  const bool isFalse = (shape & 8u) != 0;
  const std::uint16_t kind = (shape & 7u) < std::size(kKinds) ? kKinds[shape & 7u] : in.U16();
  const std::uint16_t claimedWords = isFalse ? in.U16() : std::uint16_t{0};
  const std::size_t payloadBytes = in.U8() % (2 * kPacketRoomWords + 1);
  const Bytes payload = in.Bytes(payloadBytes);
  Bytes packet(kPacketBytes);
  PutU16(&packet[offsetof(FrameHeader, kind)], kind);
  PutU16(&packet[offsetof(FrameHeader, chunkWords)],
         isFalse ? claimedWords : Low16((payload.size() + 1) / 2));
  std::copy(payload.begin(), payload.end(), packet.begin() + kFrameBytes);
  return packet;
}

bool IsPacket(const Bytes& packet) {
  const std::uint16_t kind = U16(&packet[offsetof(FrameHeader, kind)]);
  return std::count(std::begin(kKinds), std::end(kKinds), kind) != 0 &&
         U16(&packet[offsetof(FrameHeader, chunkWords)]) <= kPacketRoomWords;
}

// A reply is what came from its last beginning on, whole or as far as there is room; the packet
// that ends it is the last one that is read for it.
void Join(Job& job, fuzz::Input& in, FakePlatform& platform) {
  const std::uint32_t capacity = in.U16() % kCapacityMax;
  while (!in.Empty()) platform.replies.push_back(TakePacket(in));
  for (bool more = true; more;) {
    auto packets = platform.replies;
    Bytes reply(capacity), joined;
    std::uint32_t bytes = 0xFFFFFFFF;
    more = LinkRecv(job, reply.data(), capacity, &bytes) == 1;
    packets.resize(packets.size() - platform.replies.size());
    sim::ReplyJoiner joiner;
    bool ended = false;
    for (const Bytes& packet : packets) {
      FUZZ_CHECK(!ended);
      const auto whole = joiner.Take(packet.data());
      joined = whole.value_or(Bytes());
      ended = whole || !IsPacket(packet);
    }
    FUZZ_CHECK(more == ended && bytes == (more ? joined.size() : 0));
    if (more && bytes < capacity) FUZZ_CHECK(std::equal(&reply[0], &reply[bytes], joined.data()));
  }
}

void CheckJob(const Job& job) {
  for (const std::uint8_t flag : {job.bPrnPause, job.bPrnCancel, job.bPauseSeen, job.bCancelLatch})
    FUZZ_CHECK(flag <= 1);
  // All buffers or none, and none only where an error says so.
  const auto obtained =
      std::count_if(std::begin(job.Mem.pPassBuffer), std::end(job.Mem.pPassBuffer),
                    [](const std::uint8_t* buffer) { return buffer != nullptr; });
  FUZZ_CHECK(obtained == (job.PrintOutBuf != nullptr ? std::ssize(job.Mem.pPassBuffer) : 0));
}

// An update replaces its section of the block, whole; nothing else ever changes it, or what the job
// has taken from there.
void CheckUpdate(const Job& job, const Job& before, const PrinterParams& params,
                 const Bytes& reply) {
  PrinterParams expected = params;
  const bool answers = reply.size() >= 2 && U16(reply.data()) == job.nTxCmd;
  const bool updated = answers && (job.nTxCmd == kCmdSwath || job.nTxCmd == kCmdPausePoll) &&
                       reply.size() >= kReplyUpdateAt + kParamUpdateBytes &&
                       U16(&reply[4]) == kJobPaused && U16(&reply[12]) == kParamUpdateMark;
  if (updated) std::memcpy(expected.bytes + 8, &reply[14], kParamUpdateBytes);
  FUZZ_CHECK(std::memcmp(&expected, GetPrinterParams().bytes, sizeof expected) == 0);
  FUZZ_CHECK(updated || (job.biDirOfs == before.biDirOfs && job.stepCalib == before.stepCalib &&
                         job.swathSteps == before.swathSteps));
}

void Interpret(Job& job, fuzz::Input& in, FakePlatform& platform) {
  platform.sleeps.clear();
  const Job before = job;
  const PrinterParams params = GetPrinterParams();
  const std::uint8_t length = in.U8();
  const Bytes reply = in.Bytes(length);
  const ReplyVerdict verdict = ParseReply(job, reply.data(), Low32(reply.size()));
  const std::uint16_t code = reply.size() >= 2 ? U16(reply.data()) : std::uint16_t{0};
  FUZZ_CHECK((verdict == kReplyOther) == (code != job.nTxCmd));
  if (verdict == kReplyTaken) FUZZ_CHECK(reply.size() >= 4 && U16(&reply[2]) == 1);
  FUZZ_CHECK(job.bCancelLatch >= before.bCancelLatch);  // what the operator has cancelled stays so
  FUZZ_CHECK(std::accumulate(platform.sleeps.begin(), platform.sleeps.end(), 0u) <= 5000);
  if (job.nTxCmd != kCmdConnect) {
    FUZZ_CHECK(verdict != kReplyRefused);
    CheckUpdate(job, before, params, reply);
  }
}

// A command or a swath, with everything that an exchange does around it.
void Exchange(Job& job, bool withData) {
  Bytes packet(kCommandBytes);
  PutU32(packet.data() + kPacketCodeAt, job.nTxCmd);
  const Bytes swath(withData ? kSwathBytes : 0, 0x5A);
  PutU32(packet.data() + kPacketDataSizeAt, Low32(swath.size()));
  const int delivered =
      TxExchange(job, packet.data(), kCommandBytes, swath.data(), Low32(swath.size()));
  FUZZ_CHECK(delivered == 0 || delivered == 1);
  if (delivered == 0 && job.nTxCmd != kCmdConnect) FUZZ_CHECK(job.nErrCode == 17);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input in(data, size);
  FakePlatform platform;
  const std::uint8_t what = in.U8() % 5, command = in.U8(), state = in.U8(), writes = in.U8();
  Job& job = FreshJob(what == 3 ? std::uint8_t{kCmdSwath} : command, state);
  platform.failWriteAfter = writes != 0 ? writes : UINT32_MAX;
  if ((state & kChinese) != 0) platform.localeId = 0x0804;
  if ((state & kReplugged) != 0) platform.paths = {"vid_5e3c&pid_a71d"};
  if (what == 4) Join(job, in, platform);
  while (what == 0 && !in.Empty()) {
    Interpret(job, in, platform);
    CheckJob(job);
  }
  while (!in.Empty()) platform.replies.push_back(TakePacket(in));
  const std::size_t packets = platform.replies.size();
  if (what == 1) {
    TxWaitFwBuffer(job, kSwathBytes);
    FUZZ_CHECK(platform.written.size() <= packets - platform.replies.size() + 1);
  }
  if (what == 2 || what == 3) Exchange(job, what == 3);
  CheckJob(job);
  sim::WireReceiver wire;
  std::vector<sim::WireMessage> messages;
  for (const Bytes& write : platform.written) wire.Take(write.data(), write.size(), &messages);
  FUZZ_CHECK(wire.Violation() == "");
  FreeJobMem(job);
  return 0;
}
