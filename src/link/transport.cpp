#include "link/transport.h"

#include <algorithm>
#include <cstring>

#include "base/bytes.h"
#include "diag/job_log.h"
#include "link/frame.h"

namespace qrn {
namespace {

constexpr std::uint32_t kHoldLogMs = 100;
constexpr int kUnknownPacketLogged = 4;

std::uint8_t g_staging[kGroupSlots * kSlotBytes];
std::uint8_t g_received[kPacketBytes];

// Number of the next message. It outlives jobs and counts the messages that went out completely.
std::uint16_t g_sequence = 1;

std::uint32_t IoHoldBegin() { return ThePlatform().TickMs(); }

void IoHoldEnd(std::uint32_t begin) {
  const std::uint32_t elapsed = ThePlatform().TickMs() - begin;
  if (elapsed > kHoldLogMs) LogPrint("hold:%d\r\n", static_cast<int>(elapsed));
}

bool UsbReadPacket(DeviceHandle device) {
  const std::uint32_t begin = IoHoldBegin();
  const bool done = ThePlatform().BulkRead(device, g_received, kPacketBytes);
  const std::uint32_t error = done ? 0 : ThePlatform().LastError();
  IoHoldEnd(begin);
  if (!done) LogPrint("Rx error:%d\n", static_cast<int>(error));
  return done;
}

// Builds one slot and returns the number of its bytes before the zero tail.
std::uint32_t BuildSlot(std::uint8_t* slot, const FrameHeader& header, const std::uint8_t* data,
                        std::uint32_t words) {
  EncodeFrame(header, slot);
  std::memcpy(slot + kFrameBytes, data, 2 * std::size_t{words});
  const std::uint32_t used = kFrameBytes + 2 * words;
  std::memset(slot + used, 0, kSlotTailBytes);
  return used;
}

}  // namespace

bool UsbWritePipe(DeviceHandle device, const std::uint8_t* data, std::uint32_t words) {
  const std::uint32_t begin = IoHoldBegin();
  const bool done = ThePlatform().BulkWrite(device, data, 2 * words);
  const std::uint32_t error = done ? 0 : ThePlatform().LastError();
  IoHoldEnd(begin);
  if (!done) LogPrint("Tx error:%d\n", static_cast<int>(error));
  return done;
}

int UsbSendCmm(DeviceHandle device, const std::uint8_t* message, std::uint32_t words) {
  FrameHeader header = MessageHeader(kFrameTypeCmm, g_sequence, words, kPacketChunkWords);
  header.chunkWords = kPacketChunkWords;
  for (std::uint32_t remaining = words; remaining > 0; ++header.index) {
    const std::uint32_t chunk = std::min(remaining, kPacketChunkWords);
    header.kind = ChunkKindOf(header.index, header.chunkCount, remaining, kPacketChunkWords);
    EncodeFrame(header, g_staging);
    std::memset(g_staging + kFrameBytes, 0, 2 * kPacketChunkWords);
    std::memcpy(g_staging + kFrameBytes, message + 2 * std::size_t{words - remaining},
                2 * std::size_t{chunk});
    PutU16(g_staging + kPacketCheckAt, WordSum16(g_staging, kPacketCheckAt / 2));
    if (!UsbWritePipe(device, g_staging, kPacketBytes / 2)) return 0;
    remaining -= chunk;
  }
  ++g_sequence;
  return 1;
}

int UsbSendData(DeviceHandle device, const std::uint8_t* message, std::uint32_t words) {
  FrameHeader header = MessageHeader(kFrameTypeData, g_sequence, words, kSlotChunkWords);
  std::uint32_t built = 0, lastUsed = 0;
  for (std::uint32_t remaining = words; remaining > 0;) {
    const std::uint32_t chunk = std::min(remaining, kSlotChunkWords);
    header.kind = ChunkKindOf(built, header.chunkCount, remaining, kSlotChunkWords);
    header.index = Low16(built);
    header.chunkWords = Low16(chunk - 1);
    lastUsed = BuildSlot(g_staging + built % kGroupSlots * std::size_t{kSlotBytes}, header,
                         message + 2 * std::size_t{words - remaining}, chunk);
    ++built;
    remaining -= chunk;
    if (built % kGroupSlots == 0 && !UsbWritePipe(device, g_staging, sizeof g_staging / 2)) {
      LogPrint("数据发送异常:%d/%d\n", static_cast<int>(built), header.chunkCount);
      return 0;
    }
  }
  const std::uint32_t left = built % kGroupSlots;
  if (left != 0 && !UsbWritePipe(device, g_staging, ((left - 1) * kSlotBytes + lastUsed) / 2)) {
    LogPrint("Last数据发送异常:%d/%d\n", static_cast<int>(built), header.chunkCount);
    return 0;
  }
  ++g_sequence;
  return 1;
}

int LinkSend(DeviceHandle device, const std::uint8_t* message, std::uint32_t bytes, int type) {
  switch (type) {
    case kTypeCmm:
      return UsbSendCmm(device, message, bytes / 2);
    case kTypeData:
      return UsbSendData(device, message, bytes / 2);
    default:
      LogPrint("Tx未定义数据类型:%d\r\n", type);
      return 1;
  }
}

int LinkRecv(Job& job, std::uint8_t* reply, std::uint32_t capacity, std::uint32_t* replyBytes) {
  *replyBytes = 0;
  std::uint32_t fill = 0;
  for (;;) {
    if (!UsbReadPacket(job.hDevice)) return 0;
    const std::uint16_t kind = U16(g_received + offsetof(FrameHeader, kind));
    const std::uint32_t words = U16(g_received + offsetof(FrameHeader, chunkWords));
    const bool starts = kind == CHUNK_FIRST || kind == CHUNK_ONLY;
    const bool ends = kind == CHUNK_LAST || kind == CHUNK_ONLY;
    if ((!starts && !ends && kind != CHUNK_MIDDLE) || words > kPacketRoomWords) {
      LogPrint("usb接收到不可识别数据包:%X\n", static_cast<unsigned>(kUnknownPacketLogged));
      return 1;
    }
    if (starts) fill = 0;
    const std::uint32_t payload = 2 * words;
    if (fill < capacity && payload < capacity - fill) {
      std::memcpy(reply + fill, g_received + kFrameBytes, payload);
    } else {
      LogPrint("REC溢出\r\n");
    }
    // The length of an endless reply must not wrap.
    fill = fill + payload < fill ? UINT32_MAX : fill + payload;
    if (ends) {
      *replyBytes = fill;
      return 1;
    }
  }
}

}  // namespace qrn
