#include "raster/job_memory.h"

#include <algorithm>
#include <new>

#include "diag/driver_error.h"
#include "diag/job_log.h"
#include "platform/bytes.h"
#include "platform/shared.h"
#include "raster/column_modes.h"
#include "raster/feather_runs.h"
#include "raster/pass_rows.h"
#include "raster/print_out.h"

namespace qrn {
namespace {

constexpr std::uint64_t kSizeMax = 0xFFFFFFFF;

struct Sizes {
  std::uint64_t passBuffer;
  std::uint64_t printOut;
};

// What one-head workers write at most: the columns of the widest pass, the row stagger and 128
// more.
std::uint64_t SingleOutBytes(const Job& job) {
  const std::uint64_t lineBytes = job.nLineBits / 8;
  const std::uint64_t columns = 4 * DivUp<std::uint64_t>(lineBytes, 3) + job.rowOffset[0] + 128;
  return DivUp<std::uint64_t>(columns * kColumnBytes, kSwathUnitBytes) * kSwathUnitBytes;
}

// PrintOutBuf: the pass's image columns at most, 320 mm of dots for the head distance and the row
// stagger, in columns of 720 bytes. One head has twice the passes, but not fewer columns.
// Requires: a derived geometry. In 64 bits nothing can wrap: all factors together have fewer
// than 60.
Sizes SizesOf(const Job& job) {
  const std::uint64_t stride = job.lineStride;
  const std::uint64_t dots640Mm = job.nResX * 6400u / 254u;
  const std::uint64_t printOut = (dots640Mm + 8 * stride) * 360 / job.passCount;
  return {job.nResY * stride * kPassBufferHeights,
          job.dualHead == 1 ? printOut : std::max(printOut, SingleOutBytes(job))};
}

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
  job.Mem.passBufBytes = 0;
}

void ReleaseOutBuffers(Job& job) {
  for (Swath& slot : job.swathQueue) Release(&slot.pSwathData);
  Release(&job.PrintOutBuf);
  job.printOutBufSize = 0;
}

// The log keeps the size that the lines as such have; ends of runs and marks come on top.
bool ObtainPassBuffers(Job& job, std::uint64_t loggedBytes) {
  const std::uint64_t bytes = PassBufferBytes(job.Mem.layout);
  for (std::uint32_t plane = 0; plane < kPlanes; ++plane) {
    if (!Obtain(&job.Mem.pPassBuffer[plane], bytes)) {
      LogPrint("mem: malloc pJob->Mem.pPassBuffer fail %d-%d!", static_cast<int>(plane),
               static_cast<int>(Low32(loggedBytes)));
      return false;
    }
  }
  job.Mem.passBufBytes = Low32(bytes);
  job.Mem.firstRow = 0;
  ClearRows(job, 0, job.Mem.layout.rows);
  return true;
}

// Without feathering there is nothing to obtain.
bool ObtainFeatherRuns(Job& job) {
  Release(&job.Mem.pFeatherRuns);
  const std::size_t bytes = FeatherRunsBytes(job);
  if (bytes == 0) return true;
  if (!Obtain(&job.Mem.pFeatherRuns, bytes)) return false;
  BuildFeatherRuns(job, job.Mem.pFeatherRuns);
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

void ResetQueue(Job& job) {
  for (Swath& slot : job.swathQueue) {
    slot.header = SwathHeader{};
    slot.header.speed = Low16(job.carriageSpeed * 600u);
    StoreShared(slot.state, kSwathFree);
  }
  StoreShared(job.queueRd, 0);
  StoreShared(job.queueWr, 0);
  StoreShared(job.queueUsed, 0);
}

}  // namespace

void AllocJobMem(Job& job) {
  const Sizes sizes = SizesOf(job);
  // A repeated connect may come with another geometry: what fits is used again.
  job.Mem.layout = LayoutOf(job);
  if (job.Mem.passBufBytes != PassBufferBytes(job.Mem.layout)) ReleasePassBuffers(job);
  if (job.printOutBufSize != sizes.printOut) ReleaseOutBuffers(job);
  bool obtained = ObtainPassBuffers(job, sizes.passBuffer) && ObtainFeatherRuns(job);
  if (obtained) {
    LogPrint("mem: malloc %d, %d-%d", static_cast<int>(kPlanes),
             static_cast<int>(Low32(sizes.passBuffer)), static_cast<int>(Low32(sizes.printOut)));
    obtained = ObtainOutBuffers(job, sizes.printOut);
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
