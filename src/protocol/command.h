// Command packets and the one-slot mailbox that carries them from the host's thread to the transmit
// thread.
//
// Command packet: 64 bytes, little-endian
//   0  u32       command code
//   4  32 bytes  body, by code
//   36 28 bytes  zero (a swath packet carries its header at 28..63)
#ifndef QRN_PROTOCOL_COMMAND_H_
#define QRN_PROTOCOL_COMMAND_H_

#include <cstddef>
#include <cstdint>

#include "job/job.h"

namespace qrn {

enum CommandCode : std::uint32_t {
  kCmdConnect = 2,
  kCmdJobCreate = 3,
  kCmdSwath = 4,
  kCmdJobEnd = 5,
  kCmdCancel = 9,
  kCmdPausePoll = 10,
  kCmdBufferQuery = 12,
};

constexpr std::size_t kPacketCodeAt = 0;
constexpr std::size_t kPacketBodyAt = 4;
constexpr std::size_t kPacketBodyBytes = 32;
constexpr std::size_t kPacketDataSizeAt = 8;      // swath and buffer query: u32 bytes of swath data
constexpr std::size_t kPacketSwathHeaderAt = 28;  // swath: SwathHeader

// States of the mailbox (nCmdState). A post goes idle -> building -> pending; the transmit thread
// settles it.
enum CommandState : std::uint8_t {
  kMailIdle = 0,
  kMailPending = 1,   // posted; not yet sent or not yet answered
  kMailFailed = 2,    // not sent, or refused
  kMailBuilding = 3,  // taken by a poster that is filling cmdPkt
  kMailDone = 4,      // accepted
};

enum class CommandPost { kPosted, kBusy, kUnknownCode };

// Takes the mailbox if it is idle, fills cmdPkt for codes 2, 3, 5, 9 or 10 and marks it pending.
// Either thread.
[[nodiscard]] CommandPost CmdBuild(std::uint32_t code, Job& job);

// Once per turn of the transmit thread: posts what the printer's state asks for (cancel, pause
// poll) into an idle mailbox. True when a command is pending; its code is then in nTxCmd.
[[nodiscard]] bool CmdSchedule(Job& job);

// The transmit thread's end of a command: the mailbox shows the outcome to the host's thread, or
// falls idle when the transmit thread itself had posted the command.
void CmdSettle(Job& job, bool accepted);

}  // namespace qrn

#endif  // QRN_PROTOCOL_COMMAND_H_
