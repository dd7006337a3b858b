// Joining of received packets: what LinkRecv makes of any packets in any order is compared, over
// the whole of its buffer, with a model that keeps a list of chunks.
//
// Input: u16 capacity, then packets (single_parts.h). Behind the last one reads fail.
#include <cstdint>
#include <deque>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "fuzz/single_parts.h"
#include "link/frame.h"
#include "link/transport.h"
#include "platform/bytes.h"
#include "support/fake_platform.h"

using namespace qrn;

namespace {

constexpr std::uint32_t kCapacityMax = 4096;
constexpr std::uint8_t kUntouched = 0xEE;

struct Joined {
  int result = 0;
  std::uint32_t bytes = 0;
  std::vector<std::uint8_t> memory;
};

// Takes the packets of one reply off the queue.
Joined Model(std::deque<std::vector<std::uint8_t>>* packets, std::uint32_t capacity) {
  Joined joined;
  joined.memory.assign(capacity, kUntouched);
  std::vector<std::uint8_t> reply;  // however long
  while (!packets->empty()) {
    const std::vector<std::uint8_t> packet = packets->front();
    packets->pop_front();
    const std::uint16_t kind = U16(&packet[16]), words = U16(&packet[22]);
    const bool known = kind == 0xF001 || kind == 0xF002 || kind == 0xF004 || kind == 0xF008;
    if (!known || words > 48) return {1, 0, joined.memory};
    if (kind == 0xF001 || kind == 0xF008) reply.clear();
    const std::size_t at = reply.size();
    reply.insert(reply.end(), packet.begin() + 32, packet.begin() + 32 + 2 * words);
    if (reply.size() < capacity)
      std::copy(reply.begin() + static_cast<std::ptrdiff_t>(at), reply.end(),
                joined.memory.begin() + static_cast<std::ptrdiff_t>(at));
    if (kind == 0xF002 || kind == 0xF008) return {1, Low32(reply.size()), joined.memory};
  }
  return joined;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input in(data, size);
  FakePlatform platform;
  Job& job = fuzz::FreshJob();
  const std::uint32_t capacity = in.U16() % kCapacityMax;
  while (!in.Empty()) platform.replies.push_back(fuzz::TakePacket(in));
  std::deque<std::vector<std::uint8_t>> packets = platform.replies;
  for (bool more = true; more;) {
    std::vector<std::uint8_t> reply(capacity, kUntouched);
    std::uint32_t bytes = 0xFFFFFFFF;
    const int result = LinkRecv(job, reply.data(), capacity, &bytes);
    const Joined expected = Model(&packets, capacity);
    FUZZ_CHECK(result == expected.result);
    FUZZ_CHECK(bytes == expected.bytes);
    FUZZ_CHECK(reply == expected.memory);
    FUZZ_CHECK(platform.replies.size() == packets.size());
    more = result == 1;
  }
  return 0;
}
