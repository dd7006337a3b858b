// What the printer demands of each command packet: its length, its constant bytes, its zero bytes
// and its place in the job. Strict, so that a driver that sends more or less than agreed is caught.
#ifndef QRN_SIM_FIRMWARE_PROTOCOL_CHECK_H_
#define QRN_SIM_FIRMWARE_PROTOCOL_CHECK_H_

#include <cstdint>
#include <string>
#include <vector>

namespace qrn::sim {

// Why this packet breaks the rules of its code; "" when it does not. Looks at the packet alone.
std::string CheckCommandPacket(const std::vector<std::uint8_t>& packet);
// True for the packet that tests, after a reconnection, whether the printer answers: code 10 and
// nothing else.
bool IsAnswerTest(const std::vector<std::uint8_t>& packet);

}  // namespace qrn::sim

#endif  // QRN_SIM_FIRMWARE_PROTOCOL_CHECK_H_
