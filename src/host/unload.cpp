// What the DLL does when it is unloaded: the transmit thread executes code that is about to go.
#include <cstdint>

#include "host/job_lifecycle.h"
#include "job/job.h"
#include "qrn_driver.h"

// Called by the system at loading and unloading and at the start and end of threads, while it holds
// its loader lock.
extern "C" int32_t QRN_STDCALL DllMain(void* /*module*/, uint32_t reason, void* processEnd) {
  constexpr uint32_t kUnloading = 0;
  // At the end of the process no other thread is left, and the system takes back everything.
  if (reason == kUnloading && processEnd == nullptr) {
    qrn::EndSkippedJob(qrn::GetJob(), "Library unloaded without the end of this job");
  }
  return 1;
}
