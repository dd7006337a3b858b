// The twelve exports: argument checks and the order of calls into the job engine, nothing else.
#include <cstring>

#include "base/bytes.h"
#include "diag/job_log.h"
#include "host/entry.h"
#include "host/job_lifecycle.h"
#include "job/job.h"
#include "job/stop_request.h"
#include "link/usb_device.h"
#include "params/resolution.h"
#include "qrn_driver.h"
#include "raster/line_intake.h"

namespace qrn {
namespace {

constexpr const char* kLogDirectory = "c:/p2debug";
constexpr std::uint8_t kStreamSlots = 8;
constexpr char kUndefinedError[] = "Undefine error!";

// Slot of the next WriteRipData line. Outlives a job: only StartPrint sets it back. Host's thread.
std::uint8_t nStreamColor = 0;

void ClearJob(Job& job) {
  EndSkippedJob(job, "Job start without the end of this job");
  job = Job{};
  job.nSwathLimit = 0xFFFFFFFF;
  SetUsbIds(job);
  LogOpen(job, kLogDirectory);
}

// A host without a description gets a job that no printer accepts.
void CopyHostJobDesc(Job& job, const HostJobDesc* hostDesc) {
  const HostJobDesc desc = hostDesc != nullptr ? *hostDesc : HostJobDesc{};
  job.nResX = Low16(desc.resX);
  job.nResY = Low16(desc.resY);
  job.nHeight = desc.height;
  job.nLineBits = desc.width * desc.bitsPerPixel;
  job.nColors = Low8(desc.colors);
  job.nBitsPerPixel = desc.bitsPerPixel;
}
static_assert(sizeof(HostJobDesc) == 52 && offsetof(HostJobDesc, resX) == 4 &&
              offsetof(HostJobDesc, height) == 16 && offsetof(HostJobDesc, colors) == 28 &&
              offsetof(HostJobDesc, bitsPerPixel) == 32);

}  // namespace
}  // namespace qrn

using namespace qrn;

int32_t QRN_STDCALL InitPrinter(uint32_t) { return 1; }

int32_t QRN_STDCALL StartPrint(const HostJobDesc* desc, uint32_t) {
  const Entry entry;
  if (!entry.IsAdmitted()) return 1;
  Job& job = GetJob();
  ClearJob(job);
  nStreamColor = 0;
  CopyHostJobDesc(job, desc);
  (void)JobStart(job);  // a failed start shows in the log and on the screen; the lines are dropped
  return 1;
}

uint32_t QRN_STDCALL WriteRipData(const uint8_t* line, uint32_t bytes) {
  const Entry entry;
  if (!entry.IsAdmitted()) return bytes;
  Job& job = GetJob();
  if (IsStopRequested(job)) return bytes;
  (void)AddLine(job, nStreamColor, bytes, line);  // the stream has no way to report a bad line
  nStreamColor = Low8((nStreamColor + 1u) % kStreamSlots);
  return bytes;
}

int32_t QRN_CDECL EndRipData(void) {
  const Entry entry;
  if (!entry.IsAdmitted()) return 1;
  Job& job = GetJob();
  FlushLastBands(job);  // a flush that stopped early is ended like any other job
  JobEnd(job);
  return 1;
}

int32_t QRN_CDECL AbortPrint(void) { return 1; }

// One function under two names. GCC wants the second declared nothrow like the first; for clang
// that is a function other than the header's.
#ifdef __clang__
extern "C" int32_t QRN_CDECL ExitPrinter(void) __attribute__((alias("AbortPrint")));
#else
extern "C" int32_t QRN_CDECL ExitPrinter(void) __attribute__((alias("AbortPrint"), nothrow));
#endif

int32_t QRN_STDCALL PP_Init(const HostJobDesc* desc) {
  const Entry entry;
  if (!entry.IsAdmitted()) return 0;
  Job& job = GetJob();
  ClearJob(job);
  CopyHostJobDesc(job, desc);
  return JobStart(job) ? 1 : 0;
}

int32_t QRN_CDECL PP_Uninit(void) {
  const Entry entry;
  if (!entry.IsAdmitted()) return 1;
  JobEnd(GetJob());
  return 1;
}

int32_t QRN_STDCALL PP_SendALineAColorData(uint32_t color, uint32_t bytes, const uint8_t* line,
                                           uint32_t) {
  const Entry entry;
  if (!entry.IsAdmitted()) return 0;
  Job& job = GetJob();
  if (IsStopRequested(job)) return 0;
  const int taken = AddLine(job, color, bytes, line);
  if (job.linesReceived == job.nHeight) FlushLastBands(job);
  return taken;
}

int32_t QRN_STDCALL PP_GetErrorMsg(char* text) {
  if (text != nullptr) std::memcpy(text, kUndefinedError, sizeof kUndefinedError);
  return 1;
}

uint32_t QRN_STDCALL PP_GetResolutionX(uint32_t index) { return ResolutionByIndex(index); }

uint32_t QRN_STDCALL PP_GetResolutionY(uint32_t) { return kResolutionY; }
