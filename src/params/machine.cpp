#include "params/machine.h"

#include "base/bytes.h"
#include "base/shared.h"
#include "diag/job_log.h"
#include "params/head_geometry.h"
#include "params/param_block.h"
#include "params/resolution.h"

namespace qrn {
namespace {

constexpr std::uint8_t kFixedDirBit = 0x20;
constexpr std::int32_t kCarriageClock = 33120;
constexpr std::uint8_t kBoardsInBytesAbove = 110, kBoardsInBytesBelow = 210;

void TakeHeads(Job& job, const PrinterParams& params) {
  const std::uint8_t carriage = params.bytes[kParamCarriageAt];
  job.headMask = params.bytes[kParamHeadMaskAt] & 0xF0;
  job.carriageHeads = carriage & 0x0F;
  job.headType = carriage >> 4;
  job.headMirror = job.headType == 1;
  job.twoHeadCarriage = job.carriageHeads == 1;
  job.dualHead = job.headMask == kHeadsBoth;
  job.singleHead = kSingleUnknown;
  if (job.dualHead == 1) return;
  if ((job.headMask & kHeadPha) != 0) {
    job.singleHead = kSinglePha;
  } else if ((job.headMask & kHeadPhb) != 0) {
    job.singleHead = kSinglePhb;
  }
}

void TakeOptions(Job& job, const PrinterParams& params) {
  job.bidirectional = params.bytes[kParamBidirectionalAt];
  job.carriageOpts = params.Word(kParamOptionsAt);
  job.waveNo = params.bytes[kParamWaveNoAt];
  job.fixedDir = (params.bytes[kParamFixedDirAt] & kFixedDirBit) != 0;
}

// Requires: the base pass count of nResX.
void CalcCarriageSpeed(Job& job, const PrinterParams& params) {
  const std::int32_t base = kCarriageClock / (2 * job.nResX / job.passCount);
  const std::int32_t setting = params.bytes[kParamSpeedAt];
  job.carriageSpeed = Low8(static_cast<std::uint32_t>(10 + (base - 10) * setting / 10));
}

// The vertical head offset is kept by base pass count: 3, 4, 6, 8 have the indexes 1..4.
std::size_t PassIndexOf(std::uint8_t passCount) {
  switch (passCount) {
    case 3:
      return 1;
    case 4:
      return 2;
    case 6:
      return 3;
    case 8:
      return 4;
    default:
      return 0;
  }
}

void TakeAlignment(Job& job, const PrinterParams& params) {
  job.resFactor = static_cast<float>(job.nResX) * 0.0033333334f;
  StoreShared(job.biDirOfs, params.bytes[kParamBiDirAt + job.resIdx]);
  job.headGapY = params.bytes[kParamHeadGapYAt + PassIndexOf(job.passCount)];
  job.flashParam = params.Word(kParamFlashParamAt);
  job.flashEvery = params.bytes[kParamFlashEveryAt];
  job.featherPercent = params.bytes[kParamFeatherAt];
}

// Main boards with an id within the limits report both boards in bytes, the others in words.
void TakeBoards(Job& job, const PrinterParams& params) {
  job.mainBoardId = params.bytes[kParamMainBoardIdAt];
  job.carriageBoardSn = params.Word(kParamCarriageBoardSnAt);
  if (job.mainBoardId > kBoardsInBytesAbove && job.mainBoardId < kBoardsInBytesBelow) {
    job.mainBoardVer = params.bytes[kParamMainBoardVer8At];
    job.carriageBoardId = params.bytes[kParamCarriageBoardId8At];
    job.carriageBoardVer = params.bytes[kParamCarriageBoardVer8At];
  } else {
    job.carriageBoardId = params.bytes[kParamCarriageBoardIdAt];
    job.carriageBoardVer = params.Word(kParamCarriageBoardVerAt);
    job.mainBoardVer = params.Word(kParamMainBoardVerAt);
  }
}

void LogMachine(Job& job, const PrinterParams& params) {
  LogPrint("===============\r\n主板:%03d/%X,  编号:%4d", job.mainBoardId,
           static_cast<unsigned>(job.mainBoardVer), params.Word(kParamSerialAt));
  LogPrint("小车:%03d/%X,  编号:%4d", job.carriageBoardId,
           static_cast<unsigned>(job.carriageBoardVer), job.carriageBoardSn);
  LogPrint("速度: %d-%d", params.bytes[kParamSpeedAt], job.carriageSpeed);
  LogPrint("水平: MinW-%04d, MaxW-%d, Db-%d", job.rowGapMin, job.rowGapMax,
           LoadShared(job.biDirOfs));
  if (job.carriageHeads == 1) {
    LogPrint("2pheads:   PHAB,hori-%d(%d),Veri-%d", job.headGapX,
             params.bytes[kParamHeadGapXAt + job.resIdx], job.headGapY);
  }
  LogPrint("喷头: %d-%d, 0x%02X", job.carriageHeads, job.headType,
           static_cast<unsigned>(job.headMask));
}

}  // namespace

bool TakeMachine(Job& job) {
  const PrinterParams& params = GetPrinterParams();
  TakeHeads(job, params);
  TakeOptions(job, params);
  if (!CheckResolutionX(job)) return false;
  CalcCarriageSpeed(job, params);
  CalcHeadGeometry(job);
  TakeAlignment(job, params);
  TakeBoards(job, params);
  LogMachine(job, params);
  return true;
}

}  // namespace qrn
