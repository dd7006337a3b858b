#include "raster/job_memory.h"

#include <cstring>
#include <new>

#include "base/bytes.h"
#include "diag/driver_error.h"
#include "diag/job_log.h"
#include "raster/feather_runs.h"
#include "raster/pass_rows.h"
#include "raster/pass_size.h"
#include "raster/swath_queue.h"
#include "raster/tile_walk.h"

namespace qrn {
namespace {

constexpr std::uint64_t kSizeMax = 0xFFFFFFFF;

void Release(std::uint8_t** buffer) {
  delete[] * buffer;
  *buffer = nullptr;
}

// A buffer that is present has the right size. What does not fit 32 bits cannot be obtained.
bool Obtain(std::uint8_t** buffer, std::uint64_t bytes) {
  if (*buffer == nullptr && bytes <= kSizeMax)
    *buffer = new (std::nothrow) std::uint8_t[static_cast<std::size_t>(bytes)];
  return *buffer != nullptr;
}

void ReleasePassBuffers(Job& job) {
  for (std::uint8_t*& buffer : job.Mem.pPassBuffer) Release(&buffer);
  Release(&job.Mem.pFeatherRuns);
  Release(&job.Mem.pConvertScratch);
  job.Mem.passBufBytes = 0;
}

void ReleaseOutBuffers(Job& job) {
  for (Swath& slot : job.swathQueue) Release(&slot.pSwathData);
  Release(&job.PrintOutBuf);
  job.printOutBufSize = 0;
}

// The logged size is that of the lines alone, without the padding of runs and the occupancy.
bool ObtainPassBuffers(Job& job, std::uint64_t linesBytes) {
  const std::uint64_t bytes = PassBufferBytes(job.Mem.layout);
  for (std::uint32_t color = 0; color < kColors; ++color) {
    if (!Obtain(&job.Mem.pPassBuffer[color], bytes)) {
      LogPrint("mem: malloc pJob->Mem.pPassBuffer fail %d-%d!", static_cast<int>(color),
               static_cast<int>(Low32(linesBytes)));
      return false;
    }
  }
  job.Mem.passBufBytes = Low32(bytes);
  job.Mem.ringStart = 0;
  ClearRows(job, 0, job.Mem.layout.rows);
  return true;
}

// Without feathering there is nothing to obtain.
bool ObtainFeatherRuns(Job& job) {
  Release(&job.Mem.pFeatherRuns);
  const std::size_t bytes = FeatherRunsBytes(job);
  if (bytes == 0) return true;
  if (!Obtain(&job.Mem.pFeatherRuns, bytes)) {
    LogPrint("mem: malloc pJob->Mem.pFeatherRuns fail %d-%d!", job.featherRows,
             static_cast<int>(bytes));
    return false;
  }
  BuildFeatherRuns(job, job.Mem.pFeatherRuns);
  return true;
}

// Scratch that is present is as the last pass left it, and the next pass can start from that.
bool ObtainConvertScratch(Job& job) {
  if (job.Mem.pConvertScratch != nullptr) return true;
  if (!Obtain(&job.Mem.pConvertScratch, kConvertScratchBytes)) {
    LogPrint("mem: malloc pJob->Mem.pConvertScratch fail %d!",
             static_cast<int>(kConvertScratchBytes));
    return false;
  }
  std::memset(job.Mem.pConvertScratch, 0, kConvertScratchBytes);
  return true;
}

bool ObtainOutBuffers(Job& job, std::uint64_t bytes) {
  for (std::uint32_t i = 0; i <= kSwathSlots; ++i) {
    std::uint8_t** buffer = i < kSwathSlots ? &job.swathQueue[i].pSwathData : &job.PrintOutBuf;
    if (!Obtain(buffer, bytes)) {
      LogPrint("mem: malloc PrintOutBuf fail! %d-%d", static_cast<int>(i),
               static_cast<int>(Low32(bytes)));
      return false;
    }
  }
  job.printOutBufSize = Low32(bytes);
  return true;
}

}  // namespace

void AllocJobMem(Job& job) {
  const std::uint64_t linesBytes = job.nResY * std::uint64_t{job.lineStride} * kPassBufferHeights;
  const std::uint64_t printOutBytes = PrintOutBytes(job);
  // A repeated connect may come with another geometry: what fits is used again.
  job.Mem.layout = LayoutOf(job);
  if (job.Mem.passBufBytes != PassBufferBytes(job.Mem.layout)) ReleasePassBuffers(job);
  if (job.printOutBufSize != printOutBytes) ReleaseOutBuffers(job);
  bool obtained =
      ObtainPassBuffers(job, linesBytes) && ObtainFeatherRuns(job) && ObtainConvertScratch(job);
  if (obtained) {
    LogPrint("mem: malloc %d, %d-%d", static_cast<int>(kColors),
             static_cast<int>(Low32(linesBytes)), static_cast<int>(Low32(printOutBytes)));
    obtained = ObtainOutBuffers(job, printOutBytes);
  }
  if (!obtained) {
    ReleasePassBuffers(job);
    ReleaseOutBuffers(job);
    RaiseError(kErrorNoMemory);
    return;
  }
  ResetQueue(job);
}

void FreeJobMem(Job& job) {
  ReleasePassBuffers(job);
  ReleaseOutBuffers(job);
  LogPrint("mem: free --");
}

}  // namespace qrn
