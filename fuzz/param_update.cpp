// Firmware parameter updates, as pause replies bring them: what may change, changes to what the
// section says, and nothing else does. The steps are compared with a division of 128 bits.
//
// Input: u8 resolution, u16 lines a pass, u16 lines an inch, u32 step base, then updates:
//   u8 how it comes: as a section, as one behind the head of a reply, as a whole reply; u8 bytes,
//   then these
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "fuzz/single_parts.h"
#include "params/printer_params.h"
#include "platform/bytes.h"
#include "protocol/reply.h"
#include "raster/swath_builder.h"
#include "support/fake_platform.h"

using namespace qrn;

namespace {

constexpr std::size_t kSectionBytes = 70, kSectionAt = 8;
constexpr std::size_t kStepBaseAt = 128;
// Within the section.
constexpr std::size_t kSelectAt = 0, kBiDirAt = 33, kCalibLowAt = 64, kCalibHighAt = 69;

std::uint16_t StepsOf(std::uint16_t lines, std::uint32_t base, std::uint16_t calibration,
                      std::uint16_t linesPerInch) {
  __extension__ using Wide = unsigned __int128;
  const auto factor = static_cast<std::uint64_t>(std::ldexp(253.99999187200024, 45));
  const Wide product = Wide{lines} * base * factor;
  return Low16(static_cast<std::uint64_t>(product / (Wide{calibration} * linesPerInch) >> 45));
}

std::uint16_t CalibrationOf(const std::vector<std::uint8_t>& section) {
  if (section[kSelectAt] > 4) return 0;
  return Low16(section[kCalibLowAt + section[kSelectAt]] + 256u * section[kCalibHighAt]);
}

// A reverse pass of the machine as it is now set must start where the correction says.
void CheckReversePass(Job& job) {
  std::uint8_t out[320] = {}, data[320] = {};
  job.PrintOutBuf = out;
  job.printOutBufSize = job.passDataSize = sizeof out;
  Swath forward{}, reverse{};
  forward.pSwathData = reverse.pSwathData = data;
  job.passDir = 0;
  CreateSwath(job, forward);
  job.passDir = 1;
  CreateSwath(job, reverse);
  FUZZ_CHECK(reverse.header.endPos == forward.header.startPos);
  FUZZ_CHECK(reverse.header.startPos == Low16(forward.header.endPos + 65536u + job.biDirOfs - 32u));
  FUZZ_CHECK(reverse.header.feedSteps == job.swathSteps);
  job.PrintOutBuf = nullptr;
}

// Hands one update over and returns the section that the library may take, or less when there is
// none.
std::vector<std::uint8_t> HandOver(Job& job, fuzz::Input& in) {
  const std::uint8_t how = in.U8() % 3, length = in.U8();
  std::vector<std::uint8_t> bytes = in.Bytes(length);
  if (how == 0) {
    UpdateFwPara(job, bytes.data(), Low32(bytes.size()));
    return bytes;
  }
  if (how == 1) {
    std::vector<std::uint8_t> reply(kReplyUpdateAt);
    PutU16(&reply[kReplyPauseWordBAt], kParamUpdateMark);
    reply.insert(reply.end(), bytes.begin(), bytes.end());
    reply.shrink_to_fit();
    bytes.swap(reply);
  }
  TakeParamUpdate(bytes.data(), Low32(bytes.size()));
  if (bytes.size() < 14 || U16(&bytes[12]) != 0x1122) return {};
  return {bytes.begin() + 14, bytes.end()};
}

void OneUpdate(Job& job, fuzz::Input& in) {
  const PrinterParams before = GetPrinterParams();
  const std::uint16_t stepsBefore = job.swathSteps, calibBefore = job.stepCalib;
  const std::uint16_t biDirBefore = job.biDirOfs;
  const std::vector<std::uint8_t> section = HandOver(job, in);

  PrinterParams expected = before;
  if (section.size() < kSectionBytes) {
    FUZZ_CHECK(job.biDirOfs == biDirBefore && job.stepCalib == calibBefore);
    FUZZ_CHECK(job.swathSteps == stepsBefore);
  } else {
    std::memcpy(expected.bytes + kSectionAt, section.data(), kSectionBytes);
    FUZZ_CHECK(job.biDirOfs == section[kBiDirAt + job.resIdx]);
    FUZZ_CHECK(job.stepCalib == CalibrationOf(section));
    const bool changed = job.biDirOfs != biDirBefore || job.stepCalib != calibBefore;
    const bool usable = job.stepCalib != 0 && job.nResY != 0;
    FUZZ_CHECK(job.swathSteps == (changed && usable
                                      ? StepsOf(job.passStep, U32(before.bytes + kStepBaseAt),
                                                job.stepCalib, job.nResY)
                                      : stepsBefore));
  }
  FUZZ_CHECK(std::memcmp(&expected, &GetPrinterParams(), sizeof expected) == 0);
  CheckReversePass(job);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input in(data, size);
  const FakePlatform platform;
  Job& job = fuzz::FreshJob();
  job.resIdx = in.U8() & 3;
  job.passStep = in.U16();
  job.nResY = in.U16();
  PutU32(GetPrinterParams().bytes + kStepBaseAt, in.U32());
  job.nBitsPerPixel = 2;
  job.passRightByte = 3000;
  job.marginDots = 3628;
  job.resFactor = 4.8F;
  while (!in.Empty()) OneUpdate(job, in);
  return 0;
}
