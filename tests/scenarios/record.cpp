#include <array>
#include <cstdio>
#include <iterator>
#include <type_traits>

#include "job/job.h"
#include "scenarios/play.h"

namespace scenarios {
namespace {

template <class T>
std::string ValueOf(const T& value) {
  if constexpr (std::is_pointer_v<T>) {
    return value != nullptr ? "set" : "0";
  } else if constexpr (std::is_array_v<T>) {
    std::string list;
    for (const auto& entry : value) list += (list.empty() ? "" : "/") + ValueOf(entry);
    return list;
  } else if constexpr (std::is_floating_point_v<T>) {
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%.9g", static_cast<double>(value));
    return text.data();
  } else {
    return std::to_string(value);
  }
}

}  // namespace

std::vector<std::pair<std::string, std::string>> RecordFields() {
  const qrn::Job& job = qrn::GetJob();
  std::vector<std::pair<std::string, std::string>> fields;
#define ADD(name) fields.emplace_back(#name, ValueOf(job.name))
  ADD(nCmdState), ADD(bidirectional), ADD(fixedDir), ADD(singleHead), ADD(headMask);
  ADD(carriageHeads), ADD(flashOpt), ADD(waveNo), ADD(flashEvery), ADD(headGapY);
  ADD(mainBoardId), ADD(carriageBoardId), ADD(carriageBoardSn), ADD(mainBoardVer);
  ADD(carriageBoardVer), ADD(headGapX), ADD(rowGapMin), ADD(rowGapMax), ADD(carriageOpts);
  ADD(biDirOfs), ADD(stepCalib), ADD(flashParam), ADD(bJobEndRx), ADD(bTxRun), ADD(bTxEnd);
  ADD(nErrCode), ADD(queueStarted), ADD(bPrnPause), ADD(bPrnCancel), ADD(bPauseSeen);
  ADD(bCancelLatch), ADD(nTxCmd), ADD(curColor), ADD(hDevice), ADD(hTxThread), ADD(queueRd);
  ADD(queueWr), ADD(queueUsed), ADD(Mem.pPassBuffer), ADD(Mem.passBufBytes);
  ADD(Mem.pFeatherRuns), ADD(pPendingSwath), ADD(pTxSwath), ADD(resParamA), ADD(resParamB);
  fields.emplace_back("szLogFile", job.szLogFile);
  fields.emplace_back("szPid", job.szPid);
  fields.emplace_back("szVid", job.szVid);
  ADD(swathStarted), ADD(bLogOn), ADD(inkOrder), ADD(resIdx), ADD(nSpitCount), ADD(resCode);
  ADD(bLinkInfoOk), ADD(twoHeadCarriage), ADD(dualHead), ADD(headType), ADD(headMirror);
  ADD(featherPercent), ADD(featherRows), ADD(passDir), ADD(passEmpty), ADD(passIndex);
  ADD(passCount), ADD(nColors), ADD(carriageSpeed), ADD(rowBitA), ADD(rowBitB), ADD(rowOffset);
  ADD(historyRows), ADD(bandLine), ADD(maxPrintMm), ADD(marginDots), ADD(nResX), ADD(nResY);
  ADD(swathH), ADD(checkRows), ADD(passStep), ADD(passRow), ADD(passRowPad), ADD(swathSteps);
  ADD(rowColA), ADD(rowColB), ADD(swathCount), ADD(passNo), ADD(nSwathLimit), ADD(emptyPasses);
  ADD(printOutBufSize), ADD(nLineBits), ADD(nHeight), ADD(nBitsPerPixel), ADD(linesReceived);
  ADD(feedLine), ADD(lineStride), ADD(passLeftByte), ADD(passRightByte), ADD(passBits);
  ADD(passDataSize), ADD(resFactor), ADD(stepsPerLine), ADD(PrintOutBuf), ADD(bBadLineLogged);
#undef ADD
  std::string slots;
  for (const qrn::Swath& slot : job.swathQueue)
    slots += std::to_string(slot.state) + (slot.pSwathData != nullptr ? "+" : "");
  fields.emplace_back("slots", slots);
  return fields;
}

}  // namespace scenarios
