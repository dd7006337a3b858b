#include "scenarios/host.h"

#include <algorithm>
#include <string>

#include "qrn_driver.h"

namespace scenarios {
namespace {

constexpr std::uint8_t kSlack = 0xA5;  // behind the bytes of a line

}  // namespace

Page Host::Print(const Job& job) {
  const Page drawn = Page::Drawn(job);
  Intake intake(job);
  drawn_ = &drawn;
  intake_ = &intake;
  for (const HostStep& step : job.host) {
    if (step.what != HostStep::kCall && step.what != HostStep::kWrite) SayRefused();
    Take(step, job);
  }
  SayRefused();
  return intake.Taken();
}

void Host::Take(const HostStep& step, const Job& job) {
  switch (step.what) {
    case HostStep::kStart:
      return Start(job);
    case HostStep::kLines:
      return GiveLines(step, job);
    case HostStep::kCall:
      return Send(step.count, step);
    case HostStep::kWrite:
      for (std::uint32_t i = 0; i < step.count; ++i) Write(step);
      return;
    case HostStep::kRest:
      return witness_.SleepMs(step.count);
    case HostStep::kEnd:
      return End(job);
    case HostStep::kAsk:
      return Ask();
  }
}

void Host::Start(const Job& job) {
  const HostJobDesc* desc = job.desc ? &*job.desc : nullptr;
  *intake_ = Intake(job);
  next_ = 0;
  if (!job.lineFamily) slot_ = 0;
  const std::int32_t result = job.lineFamily ? PP_Init(desc) : StartPrint(desc, 0);
  if (result != 1) witness_.Say("start: " + std::to_string(result));
}

void Host::End(const Job& job) {
  const std::int32_t result = job.lineFamily ? PP_Uninit() : EndRipData();
  if (result != 1) witness_.Say("end: " + std::to_string(result));
}

void Host::Ask() {
  char error[17] = "################";
  std::string answers = "InitPrinter " + std::to_string(InitPrinter(5)) + ", AbortPrint " +
                        std::to_string(AbortPrint()) + ", ExitPrinter " +
                        std::to_string(ExitPrinter()) + ", PP_GetErrorMsg " +
                        std::to_string(PP_GetErrorMsg(nullptr)) +
                        std::to_string(PP_GetErrorMsg(error)) + " '" + error + "', resolutions";
  for (const std::uint32_t index : {0u, 1u, 2u, 3u, 4u, 0x102u})
    answers += " " + std::to_string(PP_GetResolutionX(index));
  witness_.Say(answers + " x " + std::to_string(PP_GetResolutionY(99)));
}

void Host::GiveLines(const HostStep& step, const Job& job) {
  const std::uint32_t end = next_ + std::min(step.count, job.height - next_);
  for (; next_ < end; ++next_) {
    for (std::uint32_t plane = 0; plane < kPlanes; ++plane) {
      if (job.lineFamily) {
        Send(plane, step);
      } else {
        Write(step);
      }
    }
    if (step.restMs != 0) witness_.SleepMs(step.restMs);
  }
}

void Host::Send(std::uint32_t color, const HostStep& step) {
  const Line line = LineOf(color, step);
  ++calls_;
  if (PP_SendALineAColorData(color, line.count, line.bytes, 0) != 1) ++refused_;
  intake_->Take(color, line.bytes, line.count);
}

void Host::Write(const HostStep& step) {
  const Line line = LineOf(slot_, step);
  ++calls_;
  if (WriteRipData(line.bytes, line.count) != line.count) ++refused_;
  intake_->Take(slot_, line.bytes, line.count);
  slot_ = (slot_ + 1) % kPlanes;
}

// Behind its last line a page goes on with ink.
Host::Line Host::LineOf(std::uint32_t plane, const HostStep& step) {
  const std::uint32_t count = step.bytes.value_or(drawn_->LineBytes());
  if (step.null) return {nullptr, count};
  const std::uint32_t at = intake_->LinesTaken();
  scratch_.assign(std::max(count, drawn_->LineBytes()), kSlack);
  if (plane < kPlanes && at < drawn_->Lines())
    std::copy_n(drawn_->Line(static_cast<int>(plane), at), drawn_->LineBytes(), scratch_.begin());
  return {scratch_.data(), count};
}

void Host::SayRefused() {
  if (refused_ != 0)
    witness_.Say(std::to_string(refused_) + " of " + std::to_string(calls_) + " lines refused");
  calls_ = refused_ = 0;
}

}  // namespace scenarios
