// The transmit thread's part of a job, without the printer's answers: every ready swath goes out,
// its command before its data, each framed. And what is needed to compare two such streams.
#ifndef QRN_BENCH_SENDING_H_
#define QRN_BENCH_SENDING_H_

#include <cstdint>

#include "bench/bench_job.h"
#include "job/job.h"

namespace qrn::bench {

// A swath, its command before its data.
void SendSwath(const std::uint8_t* header, const std::uint8_t* data, std::uint32_t bytes);

// Sends all that is ready, as one turn of the transmit thread after the other would. Returns how
// many swaths carried data.
std::uint32_t SendReady(Job& job);

// Numbers the next message 0. It counts all messages of a process, so that two streams are alike
// only when they start at the same number. Sends one packet.
void ResetSequence(IdlePlatform& system);

// A hash of all bytes that go out while it lives, and how they are cut into writes.
class StreamHash {
 public:
  explicit StreamHash(IdlePlatform& system);
  ~StreamHash();
  StreamHash(const StreamHash&) = delete;
  StreamHash& operator=(const StreamHash&) = delete;

  std::uint64_t Value() const { return hash_; }
  // Processor time that hashing took.
  double Seconds() const { return seconds_; }

 private:
  void Take(const std::uint8_t* data, std::uint32_t bytes);

  IdlePlatform& system_;
  std::uint64_t hash_ = 0;
  double seconds_ = 0;
};

}  // namespace qrn::bench

#endif  // QRN_BENCH_SENDING_H_
