#include "diag/driver_error.h"

#include "base/bytes.h"
#include "base/shared.h"
#include "diag/error_texts.h"
#include "diag/job_log.h"
#include "job/job.h"
#include "platform/platform.h"

namespace qrn {
namespace {

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
