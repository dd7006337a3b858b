// One slot of the swath queue: the data and the header of one carriage pass with the paper feed
// that follows it. Plain data; raster/swath_queue.h acts on it.
#ifndef QRN_JOB_SWATH_H_
#define QRN_JOB_SWATH_H_

#include <cstddef>
#include <cstdint>

namespace qrn {

// Travels in bytes 28..63 of the swath command packet, little-endian.
struct SwathHeader {
  std::uint8_t reserved0;
  std::uint8_t reserved1;
  std::uint8_t dir;  // 2  direction of the pass, 0 or 1
  std::uint8_t reserved3;
  std::uint8_t dir2;       // 4  the same again
  std::uint8_t spitMode;   // 5  heads that flash after the pass; SpitPlan, just before sending
  std::uint16_t speed;     // 6  carriageSpeed x 600
  std::uint16_t startPos;  // 8  1/150 inch
  std::uint16_t endPos;    // 10 1/150 inch
  std::uint16_t reserved12;
  std::uint16_t spitAmount;  // 14 SpitPlan
  std::uint16_t stepLines;   // 16 lines fed after the pass
  std::uint16_t reserved18;
  std::uint32_t swathNo;  // 20 serial number in the job, from 1
  std::uint16_t reserved24;
  std::uint16_t reserved26;
  std::uint32_t feedSteps;  // 28 paper-feed motor steps after the pass
  std::uint32_t feedLine;   // 32 image line reached after the pass
};
constexpr std::size_t kSwathHeaderBytes = 36;
static_assert(sizeof(SwathHeader) == kSwathHeaderBytes);
static_assert(offsetof(SwathHeader, speed) == 6 && offsetof(SwathHeader, spitAmount) == 14);
static_assert(offsetof(SwathHeader, swathNo) == 20 && offsetof(SwathHeader, feedLine) == 32);

enum SwathState : std::uint8_t {
  kSwathFree = 0,
  kSwathFilling = 1,  // taken by the host's thread
  kSwathReady = 2,
  kSwathSending = 3,  // taken by the transmit thread
};

struct Swath {
  // shared: both write and read. SwathState: host filling, ready; transmit thread sending, free
  std::uint8_t state;
  SwathHeader header;        // owned by whoever the state names, like what follows
  std::uint32_t dataSize;    // bytes of pSwathData that travel; 0 = feed only
  std::uint8_t* pSwathData;  // printOutBufSize bytes
};

constexpr std::uint8_t kSwathSlots = 6;
constexpr std::uint32_t kSwathUnitBytes = 320;  // swath data come in multiples of this

}  // namespace qrn

#endif  // QRN_JOB_SWATH_H_
