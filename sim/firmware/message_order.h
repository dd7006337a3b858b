// The order in which a host may send its commands: connect, job create, swaths, each with data only
// once there is room for it, pause polls while the job is paused, cancels once it is cancelled, job
// end. A host acts on the replies that it has read, so those are what counts here.
#ifndef QRN_SIM_FIRMWARE_MESSAGE_ORDER_H_
#define QRN_SIM_FIRMWARE_MESSAGE_ORDER_H_

#include <cstdint>
#include <string>
#include <vector>

namespace qrn::sim {

class MessageOrder {
 public:
  using Bytes = std::vector<std::uint8_t>;

  // A command has come: why it may not come now; "" when it may.
  std::string Check(const Bytes& packet);
  // The printer has taken the command that came last.
  void Taken();
  // The host has read this reply, whole.
  void ReplyRead(const Bytes& reply);
  // A transfer failed: the host may have asked for room in vain.
  void TransferFailed() { roomUnknown_ = true; }
  void Reopened();

 private:
  enum class Stage { kNone, kConnected, kJob, kEnded };

  std::string CheckInJob(const Bytes& packet);
  std::string CheckSwath(const Bytes& packet);
  void TakeState(std::uint16_t state);

  Stage stage_ = Stage::kNone;
  bool reopened_ = false;         // and no packet has come since
  bool answerTest_ = false;       // the last packet was one; replies to it say nothing
  std::uint32_t command_ = 0;     // the last one apart from answer tests
  std::uint32_t swathNo_ = 0;     // in it
  std::uint32_t askedBytes_ = 0;  // in the last buffer query

  // What the host has read in replies.
  bool taken_ = false;  // the last command
  bool paused_ = false, cancelled_ = false;
  std::uint32_t takenSwathNo_ = 0;
  std::uint32_t roomForBytes_ = 0;
  bool roomUnknown_ = false;
};

}  // namespace qrn::sim

#endif  // QRN_SIM_FIRMWARE_MESSAGE_ORDER_H_
