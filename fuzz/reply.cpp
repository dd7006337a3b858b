// Reply interpretation: any reply to any command, alone and within an exchange.
//
// Input: u8 what to run, u8 command code, u8 state of the job, u8 writes that succeed (0 = all),
// then replies:
//   alone:       u8 bytes, then these, for each
//   in exchange: packets (single_parts.h); behind the last one reads fail
#include "protocol/reply.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "fuzz/single_parts.h"
#include "link/transmit.h"
#include "link/transport.h"
#include "link/usb_device.h"
#include "params/printer_params.h"
#include "params/resolution.h"
#include "platform/bytes.h"
#include "protocol/command.h"
#include "raster/job_memory.h"
#include "support/fake_platform.h"

using namespace qrn;

namespace {

constexpr std::uint32_t kSwathBytes = 320, kReplyBytesMax = 3000;
constexpr std::uint8_t kChinese = 0x40, kReplugged = 0x80;  // bits of the state byte

// A job of a small image, connected when its command is one that follows the connect.
void Configure(Job& job, std::uint8_t command, std::uint8_t state) {
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
}

bool IsFlag(std::uint8_t value) { return value <= 1; }

void CheckJob(const Job& job) {
  FUZZ_CHECK(IsFlag(job.bPrnPause) && IsFlag(job.bPrnCancel));
  FUZZ_CHECK(IsFlag(job.bPauseSeen) && IsFlag(job.bCancelLatch));
  // All buffers or none, and none only where an error says so.
  bool all = job.PrintOutBuf != nullptr, none = !all;
  for (const std::uint8_t* buffer : job.Mem.pPassBuffer) {
    all &= buffer != nullptr;
    none &= buffer == nullptr;
  }
  FUZZ_CHECK(all || none);
}

void OneReply(Job& job, FakePlatform& platform, fuzz::Input& in) {
  platform.sleeps.clear();
  const std::uint8_t latch = job.bCancelLatch;
  const std::uint8_t length = in.U8();
  const std::vector<std::uint8_t> reply = in.Bytes(length);
  const ReplyVerdict verdict = ParseReply(job, reply.data(), Low32(reply.size()));
  const std::uint16_t code = reply.size() >= 2 ? U16(reply.data()) : std::uint16_t{0};
  FUZZ_CHECK((verdict == kReplyOther) == (code != job.nTxCmd));
  if (job.nTxCmd != kCmdConnect) FUZZ_CHECK(verdict != kReplyRefused);
  if (verdict == kReplyTaken) FUZZ_CHECK(reply.size() >= 4 && U16(&reply[2]) == 1);
  FUZZ_CHECK(job.bCancelLatch >= latch);  // what the operator has cancelled stays so
  std::uint32_t sleptMs = 0;
  for (const std::uint32_t ms : platform.sleeps) sleptMs += ms;
  FUZZ_CHECK(sleptMs <= 5000);
  CheckJob(job);
}

// Queries that the wait for room sends: one for each reply that holds a code, up to the one that
// says cancelled or room. What lies behind its end, of the reply before or of one broken off, is 0.
std::size_t QueriesExpected(Job& job, FakePlatform& platform) {
  const std::deque<std::vector<std::uint8_t>> packets = platform.replies;
  std::size_t queries = 1;
  for (;;) {
    std::vector<std::uint8_t> reply(kReplyBytesMax);
    std::uint32_t bytes = 0;
    if (LinkRecv(job, reply.data(), kReplyBytesMax, &bytes) == 0) break;
    if (bytes < 2) continue;
    reply.resize(std::min(bytes, kReplyBytesMax));
    reply.resize(12);
    if (U16(&reply[4]) == kJobCancelled || U32(&reply[8]) >= kSwathBytes / 2) break;
    ++queries;
  }
  platform.replies = packets;
  return std::min<std::size_t>(queries, platform.failWriteAfter);
}

void WaitForRoom(Job& job, fuzz::Input& in, FakePlatform& platform) {
  while (!in.Empty()) platform.replies.push_back(fuzz::TakePacket(in));
  const std::size_t queries = QueriesExpected(job, platform);
  TxWaitFwBuffer(job, kSwathBytes);
  FUZZ_CHECK(platform.written.size() == queries);
  CheckJob(job);
}

// Commands and swaths with everything that an exchange does around them.
void Exchange(Job& job, fuzz::Input& in, FakePlatform& platform, bool withData) {
  while (!in.Empty()) platform.replies.push_back(fuzz::TakePacket(in));
  std::vector<std::uint8_t> packet(kCommandBytes);
  PutU32(packet.data() + kPacketCodeAt, job.nTxCmd);
  const std::vector<std::uint8_t> swath(withData ? kSwathBytes : 0, 0x5A);
  PutU32(packet.data() + kPacketDataSizeAt, Low32(swath.size()));
  const int delivered =
      TxExchange(job, packet.data(), kCommandBytes, swath.data(), Low32(swath.size()));
  FUZZ_CHECK(delivered == 0 || delivered == 1);
  if (delivered == 0 && job.nTxCmd != kCmdConnect) FUZZ_CHECK(job.nErrCode == 17);
  CheckJob(job);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input in(data, size);
  FakePlatform platform;
  Job& job = fuzz::FreshJob();
  const std::uint8_t what = in.U8(), command = in.U8(), state = in.U8(), writes = in.U8();
  Configure(job, command, state);
  SetUsbIds(job);
  platform.failWriteAfter = writes != 0 ? writes : UINT32_MAX;
  if ((state & kChinese) != 0) platform.localeId = 0x0804;
  if ((state & kReplugged) != 0) platform.paths = {"vid_5e3c&pid_a71d"};
  switch (what % 4) {
    case 0:
      while (!in.Empty()) OneReply(job, platform, in);
      break;
    case 1:
      WaitForRoom(job, in, platform);
      break;
    case 2:
      Exchange(job, in, platform, false);
      break;
    default:
      job.nTxCmd = kCmdSwath;
      Exchange(job, in, platform, true);
      break;
  }
  FreeJobMem(job);
  return 0;
}
