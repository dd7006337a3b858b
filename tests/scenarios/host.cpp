#include "scenarios/host.h"

#include <algorithm>
#include <random>
#include <string>

#include "platform/platform.h"

namespace scenarios {
namespace {

constexpr std::uint32_t kColors = 8, kPixelsPerByte = 4, kBandLines = 50;
constexpr std::uint8_t kSlack = 0xA5;  // after the bytes of a line

// Drop levels of all kinds; here and there a color, or a band of lines in one, stays blank.
void DrawRandom(std::uint64_t seed, Page& page) {
  std::mt19937_64 random(seed);
  const std::uint64_t blankColor = random() % (kColors + 1);
  for (std::uint32_t color = 0; color < kColors; ++color) {
    std::uint64_t keep = 0;  // of three bytes
    for (std::uint32_t line = 0; line < page.Lines(); ++line) {
      if (line % kBandLines == 0) keep = random() % 3;
      for (std::uint32_t i = 0; i < page.LineBytes(); ++i) {
        const std::uint64_t bits = random();
        if (color != blankColor && (bits >> 8) % 3 < keep)
          page.Edit(color, line)[i] = static_cast<std::uint8_t>(bits);
      }
    }
  }
}

}  // namespace

Page::Page(const Job& job)
    : lines_(job.height),
      lineBytes_(job.width / kPixelsPerByte),
      bytes_(std::size_t{kColors} * lines_ * lineBytes_) {}

Page Page::Drawn(const Job& job) {
  Page page(job);
  if (job.image.random) DrawRandom(job.image.seed, page);
  for (std::uint32_t color = 0; color < kColors; ++color) {
    if ((job.image.colors >> color & 1u) == 0) continue;
    for (const LineRange& range : job.image.lines) {
      for (std::uint32_t line = range.first; line <= range.last && line < job.height; ++line)
        std::fill_n(page.Edit(color, line), page.lineBytes_, std::uint8_t{0xFF});
    }
  }
  return page;
}

const std::uint8_t* Page::Line(int color, std::uint32_t line) const {
  return bytes_.data() + (static_cast<std::size_t>(color) * lines_ + line) * lineBytes_;
}

std::uint8_t* Page::Edit(std::uint32_t color, std::uint32_t line) {
  return bytes_.data() + (std::size_t{color} * lines_ + line) * lineBytes_;
}

Page Host::Print(const Job& job, Page drawn) {
  job_ = job;
  drawn_ = std::move(drawn);
  taken_ = Page(job);
  linesGiven_ = linesTaken_ = 0;
  for (const HostStep& step : job.host) {
    if (step.what != HostStep::kCall && step.what != HostStep::kWrite) SayRefused();
    Take(step);
  }
  SayRefused();
  return taken_;
}

void Host::SayRefused() {
  if (refused_ != 0)
    say_(std::to_string(refused_) + " of " + std::to_string(calls_) + " lines refused");
  calls_ = refused_ = 0;
}

void Host::Take(const HostStep& step) {
  switch (step.what) {
    case HostStep::kStart:
      return Start();
    case HostStep::kLines:
      return GiveLines(step);
    case HostStep::kCall:
      return Send(step.count, step);
    case HostStep::kWrite:
      for (std::uint32_t i = 0; i < step.count; ++i) Write(step);
      return;
    case HostStep::kRest:
      return qrn::ThePlatform().SleepMs(step.count);
    case HostStep::kEnd:
      if ((job_.lineFamily ? PP_Uninit() : EndRipData()) != 1) say_("end: not 1");
      return;
    case HostStep::kAsk:
      return Ask();
  }
}

void Host::Start() {
  const HostJobDesc* desc = job_.desc ? &*job_.desc : nullptr;
  taken_ = Page(job_);
  linesGiven_ = linesTaken_ = 0;
  if (!job_.lineFamily) slot_ = 0;
  const std::int32_t result = job_.lineFamily ? PP_Init(desc) : StartPrint(desc, 0);
  if (result != 1) say_("start: " + std::to_string(result));
}

void Host::Ask() {
  char error[17] = "################";
  std::string text = "asked: InitPrinter " + std::to_string(InitPrinter(5)) + ", AbortPrint " +
                     std::to_string(AbortPrint()) + ", ExitPrinter " +
                     std::to_string(ExitPrinter()) + ", PP_GetErrorMsg " +
                     std::to_string(PP_GetErrorMsg(nullptr)) + " " +
                     std::to_string(PP_GetErrorMsg(error)) + " '" + error + "', resolutions";
  for (const std::uint32_t index : {0u, 1u, 2u, 3u, 4u, 0x102u})
    text += " " + std::to_string(PP_GetResolutionX(index));
  say_(text + " x " + std::to_string(PP_GetResolutionY(99)));
}

void Host::GiveLines(const HostStep& step) {
  const std::uint32_t left = job_.height - linesGiven_;
  for (std::uint32_t line = 0; line < std::min(step.count, left); ++line) {
    for (std::uint32_t color = 0; color < kColors; ++color) {
      if (job_.lineFamily) {
        Send(color, step);
      } else {
        Write(step);
      }
    }
    ++linesGiven_;
    if (step.restMs != 0) qrn::ThePlatform().SleepMs(step.restMs);
  }
}

void Host::Send(std::uint32_t color, const HostStep& step) {
  const std::vector<std::uint8_t> line = LineOf(color, step);
  const std::uint32_t bytes = step.bytes.value_or(drawn_.LineBytes());
  ++calls_;
  if (PP_SendALineAColorData(color, bytes, step.null ? nullptr : line.data(), 0) != 1) ++refused_;
  TakeIn(color, line, step);
}

void Host::Write(const HostStep& step) {
  const std::vector<std::uint8_t> line = LineOf(slot_, step);
  const std::uint32_t bytes = step.bytes.value_or(drawn_.LineBytes());
  ++calls_;
  if (WriteRipData(step.null ? nullptr : line.data(), bytes) != bytes) ++refused_;
  TakeIn(slot_, line, step);
  slot_ = (slot_ + 1) % kColors;
}

// After its bytes, and after the last line of a page, comes something else.
std::vector<std::uint8_t> Host::LineOf(std::uint32_t color, const HostStep& step) const {
  const std::uint32_t bytes = drawn_.LineBytes();
  std::vector<std::uint8_t> line(std::max(step.bytes.value_or(bytes), bytes) + 1, kSlack);
  if (color < kColors && linesTaken_ < drawn_.Lines())
    std::copy_n(drawn_.Line(static_cast<int>(color), linesTaken_), bytes, line.begin());
  return line;
}

void Host::TakeIn(std::uint32_t color, const std::vector<std::uint8_t>& line,
                  const HostStep& step) {
  if (linesTaken_ >= taken_.Lines() || color >= kColors || step.null) return;
  const std::uint32_t bytes = taken_.LineBytes();
  std::copy_n(line.begin(), std::min(step.bytes.value_or(bytes), bytes),
              taken_.Edit(color, linesTaken_));
  if (color + 1 == kColors) ++linesTaken_;
}

}  // namespace scenarios
