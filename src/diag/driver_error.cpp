#include "diag/driver_error.h"

#include "diag/error_texts.h"
#include "diag/job_log.h"
#include "host/job.h"
#include "host/stop_request.h"
#include "platform/bytes.h"
#include "platform/platform.h"
#include "platform/shared.h"

namespace qrn {
namespace {

static_assert(kErrorLinkGivenUp == kErrorLinkLost);

constexpr std::uint32_t kPrimaryLanguageChinese = 4;

}  // namespace

void RaiseError(std::uint32_t code) {
  Job& job = GetJob();
  // Both threads may raise at once: a lost link must win whichever comes second.
  std::uint8_t recorded = LoadShared(job.nErrCode);
  while (recorded != kErrorLinkGivenUp && !ExchangeShared(job.nErrCode, recorded, Low8(code))) {
    recorded = LoadShared(job.nErrCode);
  }
  ShowError(code);
}

void ShowError(std::uint32_t code) {
  char text[kErrorSlotBytes];
  CopyErrorText(Low16(code), IsChineseSystem(), text);
  LogPrint("Error: %s", text);
  ThePlatform().ShowBox(text, "Tip");
}

bool IsChineseSystem() { return Low8(ThePlatform().SystemLocaleId()) == kPrimaryLanguageChinese; }

}  // namespace qrn
