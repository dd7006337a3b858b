// The one record of the job in progress: plain data in static storage, cleared at every job start
// and kept until the next. Its operations live with the owners of its fields.
//
// Fields marked "shared" are accessed by both threads, through base/shared.h alone. Those marked
// "transmit thread" and "host's thread" are that thread's alone from link start to link stop. All
// others are the transmit thread's during the connect exchange and the host's afterwards. What the
// connect has set of printer, mode and geometry, and what was set before the link start, does not
// change until the job ends, so both threads read it. docs/threads.md has the details.
#ifndef QRN_JOB_JOB_H_
#define QRN_JOB_JOB_H_

#include <cstddef>
#include <cstdint>

#include "job/heads.h"
#include "job/row_layout.h"
#include "job/swath.h"
#include "platform/platform.h"

namespace qrn {

constexpr std::uint32_t kCommandBytes = 64;       // a command packet
constexpr std::uint32_t kFeatherMaskBytes = 256;  // 1024 cells of two bits

// The period in which a thread that waits for the other one looks again.
constexpr std::uint32_t kPollMs = 100;

struct JobMem {
  std::uint8_t* pPassBuffer[kColors];  // rings of 4 x nResY rows; raster/pass_rows.h
  std::uint32_t passBufBytes;          // bytes of each; 0 = none obtained
  std::uint8_t* pFeatherRuns;          // deinterleaved feather masks; raster/feather_runs.h
  std::uint8_t* pConvertScratch;       // of the pass being converted; raster/tile_walk.h
  RowLayout layout;                    // of the rows
  std::uint32_t ringStart;             // place in the ring where the band's window begins
};

// A line of the log that is under way: it takes its place in the file, then it is written.
enum LogLineState : std::uint8_t { kLogLineNone = 0, kLogLineClaimed = 1, kLogLinePlaced = 2 };
struct LogLine {
  std::uint8_t state;   // shared: both write and read. LogLineState
  std::uint32_t place;  // shared: both write and read. Valid once placed
  std::uint32_t bytes;  // shared: both write, host reads. Likewise
};

struct Job {
  // Command mailbox. cmdPkt is sent as it is. nCmdState says whose it is: the poster's while it
  // builds, then the transmit thread's until the command is settled.
  std::uint8_t cmdPkt[kCommandBytes];
  std::uint8_t nCmdState;  // shared: both write and read. CommandState

  // Printer configuration, from the connect reply.
  std::uint8_t bidirectional;  // 1 = passes alternate their direction
  std::uint8_t fixedDir;       // direction of every pass otherwise
  std::uint8_t singleHead;     // SingleHead; unknown when both print, or neither
  std::uint8_t headMask;       // kHeadPha, kHeadPhb
  std::uint8_t carriageHeads;  // as reported; 1 = for two heads
  std::uint8_t flashOpt;       // 1 = flashes carry the option bit of their mode
  std::uint8_t waveNo;         // as reported, for the log
  std::uint8_t flashEvery;     // swaths between two flashes; 0 = none
  std::uint8_t headGapY;       // vertical offset of PHB against PHA, lines
  std::uint8_t mainBoardId, carriageBoardId;
  std::uint16_t carriageBoardSn, mainBoardVer, carriageBoardVer;
  std::uint16_t headGapX;              // PHB after PHA, pass columns
  std::uint16_t rowGapMin, rowGapMax;  // gaps between neighbouring nozzle rows, pass columns
  std::uint16_t carriageOpts;          // option word, as reported; protocol/job_info.cpp
  // shared: transmit thread writes, both read. Shift of direction 1, 1/150 inch, 32 = none
  std::uint16_t biDirOfs;
  std::uint16_t stepCalib;   // paper-feed calibration value; transmit thread
  std::uint16_t flashParam;  // amount of a flash, as reported; protocol/spit_plan.cpp

  // Run state.
  // shared: transmit thread writes, both read. The printer has answered the job end
  std::uint8_t bJobEndRx;
  // shared: both write and read. The transmit thread is to run
  std::uint8_t bTxRun;
  // shared: both write and read. The transmit thread has ended, or never started
  std::uint8_t bTxEnd;
  // shared: both write and read. Recorded DriverError
  std::uint8_t nErrCode;
  // shared: both write, transmit thread reads. The transmit thread may take swaths
  std::uint8_t queueStarted;
  // shared: transmit thread writes, both read. The printer has cancelled
  std::uint8_t bPrnCancel;
  // shared: transmit thread writes, both may read. The job is paused; it was at the latest change;
  // it was cancelled at some time
  std::uint8_t bPrnPause, bPauseSeen, bCancelLatch;
  std::uint8_t nTxCmd;  // code of the packet on the wire; transmit thread

  std::uint8_t curColor;  // colour being converted

  DeviceHandle hDevice;    // host's thread while the transmit thread does no I/O, else that thread
  ThreadHandle hTxThread;  // host's thread

  // Swath queue.
  // shared: transmit thread writes, both read, the host for the log. Slot that is sent next
  std::uint8_t queueRd;
  // shared: host writes, transmit thread too in the connect; both read, the transmit thread for the
  // log. Slot that is filled next
  std::uint8_t queueWr;
  // shared: both write, in single atomic steps, and read
  std::uint8_t queueUsed;
  Swath swathQueue[kSwathSlots];

  JobMem Mem;
  Swath* pPendingSwath;  // last printing swath, not yet marked ready
  Swath* pTxSwath;       // swath in transmission; transmit thread

  std::uint8_t resParamA, resParamB;  // codes of the resolution, for the job information

  char szLogFile[256];
  char szPid[16], szVid[16];  // what a device path must contain

  std::uint8_t swathStarted;  // a printing swath has been made
  std::uint8_t bLogOn;
  // shared: both write, in single atomic steps, and read. Length of the log as its lines have it
  std::uint32_t logBytes;
  LogLine logLines[2];  // under way, one a thread

  // Colour of each nozzle row: PHA, PHB, two further heads.
  std::uint8_t inkOrder[4][kNozzleRows];

  // Print mode.
  std::uint8_t resIdx;       // index of nResX in kResolutionX
  std::uint8_t nSpitCount;   // swaths since the last spit; transmit thread
  std::uint8_t resCode;      // resParamB as the job information has it
  std::uint8_t bLinkInfoOk;  // flag of the link information: 1 from link start on
  std::uint8_t twoHeadCarriage;
  std::uint8_t dualHead;  // both heads print
  std::uint8_t headType;
  std::uint8_t headMirror;  // nozzle rows are in the opposite order
  std::uint8_t featherPercent;
  std::uint8_t featherRows;  // feathered nozzles of a row, 0..90
  std::uint8_t passDir;      // direction of the pass being converted
  std::uint8_t passEmpty;    // it prints nothing
  std::uint8_t passIndex;    // passNo mod passCount
  std::uint8_t passCount;    // passes per band
  std::uint8_t nColors;
  std::uint8_t carriageSpeed;
  std::uint8_t rowBitA, rowBitB;  // bit of the nozzle row for a pair's first and second line

  // 16-bit geometry.
  // Horizontal offset of the nozzle rows, pass columns; row 0 has the largest.
  std::uint16_t rowOffset[kNozzleRows];
  std::uint16_t historyRows;  // window line at which a new band starts; raster/pass_rows.h
  std::uint16_t bandLine;     // lines of the current band taken in
  std::uint16_t maxPrintMm;
  std::uint16_t marginDots;  // dots at nResX before the image
  std::uint16_t nResX, nResY;
  std::uint16_t swathH;      // lines per band
  std::uint16_t checkRows;   // window lines that the blank-pass test looks at
  std::uint16_t passStep;    // lines fed between passes
  std::uint16_t passRow;     // first window line of the pass being converted
  std::uint16_t passRowPad;  // half of the row stagger, dots
  // shared: transmit thread writes, both read. Motor steps fed after a swath
  std::uint16_t swathSteps;
  std::uint16_t rowColA, rowColB;

  // 32-bit counters and sizes.
  std::uint32_t swathCount;  // swaths made, feed-only ones included
  std::uint32_t passNo;      // passes converted, blank ones included
  std::uint32_t nSwathLimit;
  std::uint32_t emptyPasses;  // blank passes since the last printing swath
  std::uint32_t printOutBufSize;
  std::uint32_t nLineBits, nHeight, nBitsPerPixel;
  std::uint32_t linesReceived;
  std::uint32_t feedLine;    // image line that the swaths have reached
  std::uint32_t lineStride;  // bytes of a stored line, whole 32-bit words
  // Of the pass being converted: the bytes of a line that it covers, their bits, the bytes of its
  // output.
  std::uint32_t passLeftByte, passRightByte, passBits;
  std::uint32_t passDataSize;

  float resFactor;      // nResX / 300
  double stepsPerLine;  // motor steps per raster line; transmit thread

  // Converter state.
  const std::uint8_t* pFeatherMask;  // featherRows masks of kFeatherMaskBytes
  std::uint8_t* PrintOutBuf;         // printOutBufSize bytes; trades places with a slot's buffer

  // Set by line intake once a job, so that a host's mistake is logged once.
  std::uint8_t bBadLineLogged;
  std::uint8_t bRefusalLogged;  // set by the exports, likewise
};
static_assert(offsetof(Job, cmdPkt) == 0, "the packet is the very start of the record");

// The colour of a nozzle row, 0 to 7; a head of 4 or more counts as 3.
inline std::uint8_t GetInkColor(const Job& job, std::uint32_t head, std::uint32_t row) {
  return job.inkOrder[head < 4 ? head : 3][row];
}

// The one instance.
Job& GetJob();

}  // namespace qrn

#endif  // QRN_JOB_JOB_H_
