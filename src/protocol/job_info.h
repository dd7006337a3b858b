// The body of the job-create command: how the coming job will be printed. Host's thread.
#ifndef QRN_PROTOCOL_JOB_INFO_H_
#define QRN_PROTOCOL_JOB_INFO_H_

#include <cstddef>
#include <cstdint>

#include "job/job.h"

namespace qrn {

// Offsets in the 32-byte body, little-endian; what is not named is 0.
constexpr std::size_t kJobInfoMarkAt = 2;        // u8  0xCF
constexpr std::size_t kJobInfoResCodeAt = 3;     // u8
constexpr std::size_t kJobInfoPassCountAt = 4;   // u8  passes per band
constexpr std::size_t kJobInfoSpeedAt = 5;       // u8  carriage speed code
constexpr std::size_t kJobInfoConstant25At = 6;  // u8  25
constexpr std::size_t kJobInfoConstant1At = 7;   // u8  1
constexpr std::size_t kJobInfoResIdxAt = 8;      // u8
constexpr std::size_t kJobInfoCarriageAt = 10;   // u16 1800 for a two-head carriage, else 1200
constexpr std::size_t kJobInfoResXAt = 12;       // u16 dpi
constexpr std::size_t kJobInfoResYAt = 14;       // u16 dpi
constexpr std::size_t kJobInfoWidthMmAt = 16;    // u32 image width, of which 16 bits are used
constexpr std::size_t kJobInfoHeightAt = 20;     // u32 lines
constexpr std::size_t kJobInfoResParamAAt = 24;  // u8
constexpr std::size_t kJobInfoResParamBAt = 25;  // u8
constexpr std::size_t kJobInfoTimeAt = 28;       // u16 local time, hour x 256 + minute
constexpr std::size_t kJobInfoSignatureAt = 30;  // u16 0x2015

// Fills a cleared body from the job and writes the job's summary into the log. The job must be
// configured.
void BuildJobInfo(const Job& job, std::uint8_t* body);

}  // namespace qrn

#endif  // QRN_PROTOCOL_JOB_INFO_H_
