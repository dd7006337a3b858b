#include "jobs/sim_host.h"

#include <algorithm>
#include <cstring>

#include "host/job.h"
#include "jobs/heap_watch.h"
#include "platform/shared.h"
#include "qrn_driver.h"

namespace {

constexpr std::uint32_t kGroupBytes = 12, kPlanes = 8;
constexpr std::uint32_t kSlack = 64;  // bytes that a long line may have too many

// Bytes of a line that are printed in every mode: whole groups.
std::uint32_t InkBytes(const SimPlan& plan) {
  return plan.widthPixels * 2 / 8 / kGroupBytes * kGroupBytes;
}

void FillRandom(std::uint8_t* bytes, std::uint32_t count, std::uint32_t keepOf3,
                SeedStream& random) {
  for (std::uint32_t i = 0; i < count; i += 4) {
    const std::uint64_t bits = random.Next();
    for (std::uint32_t k = 0; k < 4 && i + k < count; ++k) {
      if ((bits >> (32 + 8 * k) & 0xFF) % 3 < keepOf3)
        bytes[i + k] = static_cast<std::uint8_t>(bits >> (8 * k));
    }
  }
}

// Lines first..end-1 of some planes.
void DrawBlock(Page& page, std::uint32_t inkBytes, std::uint32_t first, std::uint32_t end,
               bool solid, SeedStream& random) {
  const std::uint64_t planes = random.Next() | (random.Percent(60) ? 0xFF : 1u);
  for (std::uint32_t plane = 0; plane < kPlanes; ++plane) {
    if (((planes >> plane) & 1u) == 0) continue;
    const std::uint32_t keep = random.Between(1, 3);
    for (std::uint32_t line = first; line < std::min(end, page.Lines()); ++line) {
      if (solid) {
        std::memset(page.Edit(plane, line), 0xFF, inkBytes);
      } else {
        FillRandom(page.Edit(plane, line), inkBytes, keep, random);
      }
    }
  }
}

HostJobDesc DescOf(const SimPlan& plan) {
  HostJobDesc desc{};
  desc.resX = plan.resolution;
  desc.resY = 360;
  desc.height = plan.lines;
  desc.width = plan.widthPixels;
  desc.colors = kPlanes;
  desc.bitsPerPixel = 2;
  return desc;
}

void Spoil(HostJobDesc* desc, BadJob how) {
  switch (how) {
    case BadJob::kResolution:
      desc->resX = 1200;
      break;
    case BadJob::kColors:
      desc->colors = 7;
      break;
    case BadJob::kBits:
      desc->bitsPerPixel = 1;
      break;
    case BadJob::kLinesAnInch:
      desc->resY = 180;
      break;
    case BadJob::kTooWide:
      desc->width = 1'000'000;
      break;
    case BadJob::kNull:
    case BadJob::kCount:
      break;
  }
}

}  // namespace

const std::uint8_t* Page::Line(int plane, std::uint32_t line) const {
  const auto& bytes = planes_[static_cast<std::size_t>(plane)];
  return bytes.empty() ? nullptr : bytes.data() + std::size_t{line} * lineBytes_;
}

std::uint8_t* Page::Edit(std::uint32_t plane, std::uint32_t line) {
  if (planes_[plane].empty()) planes_[plane].resize(std::size_t{lines_} * lineBytes_);
  return planes_[plane].data() + std::size_t{line} * lineBytes_;
}

Page DrawPage(const SimPlan& plan) {
  SeedStream random(plan.seed ^ 0x1A6E);
  Page page(plan.lines, plan.LineBytes());
  const std::uint32_t inkBytes = InkBytes(plan);
  switch (plan.image) {
    case ImageKind::kRandom:
      for (std::uint32_t line = 0; line < plan.lines; line += 50) {
        if (random.Percent(80)) DrawBlock(page, inkBytes, line, line + 50, false, random);
      }
      break;
    case ImageKind::kSolid:
      DrawBlock(page, inkBytes, 0, plan.lines, true, random);
      break;
    case ImageKind::kSparse:
      for (std::uint32_t line = random.Below(20); line < plan.lines; line += random.Between(1, 700))
        DrawBlock(page, inkBytes, line, line + random.Between(1, 30), random.Percent(30), random);
      break;
    case ImageKind::kDot:
      page.Edit(random.Below(kPlanes), random.Below(plan.lines))[random.Below(inkBytes)] =
          static_cast<std::uint8_t>(1u << 2 * random.Below(4));
      break;
    case ImageKind::kBlank:
      break;
  }
  return page;
}

SimHost::SimHost(const SimPlan& plan, SimWorld& world, bool lineApi)
    : plan_(plan),
      world_(world),
      lineApi_(lineApi),
      random_(plan.seed ^ 0x4057),
      scratch_(plan.LineBytes() + kSlack),
      blank_(plan.LineBytes() + kSlack) {}

HostReport SimHost::PrintAsPlanned(const Page& image, Page* page) {
  page_ = page;
  if (plan_.Makes(kCallsBefore)) CallBefore();
  Start(plan_.Makes(kBadJob));
  GiveLines(image);
  if (plan_.Makes(kLinesBehind)) GiveBehind();
  if (plan_.Makes(kNoEnd)) {
    if (plan_.restEveryLines != 0) world_.RestMs(plan_.restMs);
    // The job must not outlive its printer: the next start ends it, and has nothing to print.
    const HostJobDesc none{};
    SetStarting(true);
    Blame(InLibrary([&] { return PP_Init(&none); }) == 0, "PP_Init of nothing");
    SetStarting(false);
    InLibrary(PP_Uninit);
    return report_;
  }
  End();
  if (plan_.Makes(kEndsTwice)) End();
  return report_;
}

HostReport SimHost::PrintClean(const Page& page) {
  Start(false);
  for (std::uint32_t line = 0; line < page.Lines(); ++line) {
    for (std::uint32_t plane = 0; plane < kPlanes; ++plane) {
      const std::uint8_t* bytes = page.Line(static_cast<int>(plane), line);
      GivePlane(plane, bytes != nullptr ? bytes : blank_.data(), page.LineBytes());
    }
  }
  End();
  return report_;
}

void SimHost::Blame(bool right, const char* call) {
  if (!right && report_.fault.empty())
    report_.fault =
        std::string(call) + " gave a wrong result, line " + std::to_string(report_.linesTaken);
}

void SimHost::CallBefore() {
  char text[16];
  InLibrary([&] {
    Blame(WriteRipData(blank_.data(), 4) == 4, "WriteRipData before the start");
    Blame(PP_SendALineAColorData(0, 4, blank_.data(), 0) == 1, "a line before the start");
    if (random_.Percent(50)) EndRipData();
    Blame(PP_Uninit() == 1 && AbortPrint() == 1 && ExitPrinter() == 1 && InitPrinter(0) == 1,
          "a call before the start");
    Blame(PP_GetErrorMsg(text) == 1, "PP_GetErrorMsg");
  });
}

void SimHost::Start(bool bad) {
  HostJobDesc desc = DescOf(plan_);
  if (bad) Spoil(&desc, plan_.badJob);
  const HostJobDesc* given = bad && plan_.badJob == BadJob::kNull ? nullptr : &desc;
  SetStarting(true);
  report_.startResult = InLibrary([&] { return lineApi_ ? PP_Init(given) : StartPrint(given, 0); });
  SetStarting(false);
  Blame(!bad || !lineApi_ || report_.startResult == 0, "PP_Init of a bad job");
}

void SimHost::End() {
  ++report_.endCalls;
  Blame(InLibrary([&] { return lineApi_ ? PP_Uninit() : EndRipData(); }) == 1, "the end call");
}

void SimHost::GiveLines(const Page& image) {
  for (std::uint32_t line = 0; line < plan_.linesHanded; ++line) {
    if (plan_.restEveryLines != 0 && line % plan_.restEveryLines == plan_.restEveryLines - 1)
      world_.RestMs(plan_.restMs);
    if (plan_.Makes(kAborts) && random_.Percent(3))
      Blame(InLibrary(AbortPrint) == 1 && InLibrary(ExitPrinter) == 1, "AbortPrint");
    GiveLine(image, line);
  }
}

// The mistakes are seldom, so that most of a page stays what it was.
void SimHost::GiveLine(const Page& image, std::uint32_t line) {
  const bool lastFirst = plan_.Makes(kWrongOrder) && random_.Percent(5);
  for (std::uint32_t i = 0; i < kPlanes; ++i) {
    const std::uint32_t plane = lastFirst ? (i + kPlanes - 1) % kPlanes : i;
    const std::uint8_t* bytes = image.Line(static_cast<int>(plane), line);
    if (bytes == nullptr) bytes = blank_.data();
    std::uint32_t count = image.LineBytes();
    if (plan_.Makes(kLongLines) && random_.Percent(10)) {
      std::memcpy(scratch_.data(), bytes, count);
      std::memset(scratch_.data() + count, 0xA5, kSlack);
      bytes = scratch_.data();
      count += random_.Between(1, kSlack);
    } else if (plan_.Makes(kShortLines) && random_.Percent(10)) {
      count -= random_.Between(0, count);
    }
    if (plan_.Makes(kBadColors) && random_.Percent(2))
      Send(random_.Percent(50) ? kPlanes : 0xFFFFFFFFu - random_.Below(300), bytes, count);
    if (plan_.Makes(kRepeatsColors) && random_.Percent(5)) {
      const std::uint8_t* other = image.Line(static_cast<int>(plane), random_.Below(plan_.lines));
      GivePlane(plane, other != nullptr ? other : blank_.data(), image.LineBytes());
    }
    GivePlane(plane, plan_.Makes(kNullLines) && random_.Percent(2) ? nullptr : bytes, count);
  }
}

void SimHost::GiveBehind() {
  const std::uint32_t calls = lineApi_ ? 2 : 2 * kPlanes + 1;
  std::memset(scratch_.data(), 0xFF, scratch_.size());
  // A job that was handed too few lines takes these in.
  for (std::uint32_t i = 0; i < calls; ++i)
    GivePlane(i % kPlanes, scratch_.data(), InkBytes(plan_));
}

void SimHost::GivePlane(std::uint32_t plane, const std::uint8_t* bytes, std::uint32_t count) {
  if (lineApi_) {
    Send(plane, bytes, count);
    return;
  }
  Blame(InLibrary([&] { return WriteRipData(bytes, count); }) == count, "WriteRipData");
  Take(slot_, bytes, count);
  slot_ = (slot_ + 1) % kPlanes;
}

void SimHost::Send(std::uint32_t color, const std::uint8_t* bytes, std::uint32_t count) {
  qrn::Job& job = qrn::GetJob();
  const bool stopped = qrn::LoadShared(job.bPrnCancel) == 1 || qrn::LoadShared(job.nErrCode) != 0 ||
                       qrn::LoadShared(job.bTxEnd) == 1;
  const bool behind = job.linesReceived >= job.nHeight;
  const bool usable = color < kPlanes && bytes != nullptr && job.PrintOutBuf != nullptr;
  const int result = InLibrary([&] { return PP_SendALineAColorData(color, count, bytes, 0); });
  Blame(result == (!stopped && (behind || usable) ? 1 : 0), "PP_SendALineAColorData");
  Take(color, bytes, count);
}

// What a job that goes on makes of a line.
void SimHost::Take(std::uint32_t plane, const std::uint8_t* bytes, std::uint32_t count) {
  if (page_ == nullptr) return;
  if (report_.linesTaken >= plan_.lines) {
    ++report_.linesBehind;
    return;
  }
  if (plane >= kPlanes || bytes == nullptr) {
    ++report_.badLines;
    return;
  }
  std::memcpy(page_->Edit(plane, report_.linesTaken), bytes, std::min(count, plan_.LineBytes()));
  if (plane + 1 == kPlanes) ++report_.linesTaken;
}
