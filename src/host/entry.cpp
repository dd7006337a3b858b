#include "host/entry.h"

#include <cstdint>

#include "base/shared.h"
#include "diag/job_log.h"
#include "job/job.h"

namespace qrn {
namespace {

std::uint8_t g_inside = 0;   // shared; 1 = an export is running
std::uint8_t g_refused = 0;  // shared; 1 = a call was refused that is not logged yet

}  // namespace

Entry::Entry() : admitted_(ExchangeShared(g_inside, 0, 1)) {
  if (!admitted_) StoreShared(g_refused, 1);
}

Entry::~Entry() {
  if (!admitted_) return;
  LogRefusedCalls(GetJob());
  StoreShared(g_inside, 0);
}

void LogRefusedCalls(Job& job) {
  if (!ExchangeShared(g_refused, 1, 0) || job.bRefusalLogged == 1) return;
  job.bRefusalLogged = 1;
  LogPrint("Call refused: another one is running");
}

}  // namespace qrn
