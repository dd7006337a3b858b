#include "jobs/job_runner.h"

#include <algorithm>
#include <random>
#include <sstream>

#include "platform/bytes.h"
#include "qrn_driver.h"
#include "sim/session.h"

using qrn::sim::RasterSource;
using qrn::sim::Session;
using qrn::sim::SessionOptions;
using qrn::sim::VirtualPrinter;

namespace {

constexpr std::uint32_t kBitsPerPixel = 2;

HostJobDesc DescOf(const JobPlan& plan) {
  HostJobDesc desc{};
  desc.resX = plan.resolution;
  desc.resY = 360;
  desc.height = plan.lines;
  desc.width = plan.widthPixels;
  desc.colors = 8;
  desc.bitsPerPixel = kBitsPerPixel;
  return desc;
}

constexpr std::size_t kSlotBytes = 8192, kPacketBytes = 128, kFrameBytes = 32;
constexpr std::size_t kSequenceAt = 18, kHeaderCheckAt = 30, kPacketCheckAt = 126;

void HandOver(const JobPlan& plan, const RasterSource& image) {
  const std::vector<std::uint8_t> blank(image.LineBytes());
  const std::uint32_t lines = std::min(image.Lines(), plan.linesHanded);
  for (std::uint32_t line = 0; line < lines; ++line) {
    for (int plane = 0; plane < 8; ++plane) {
      const std::uint8_t* bytes = image.Line(plane, line);
      if (bytes == nullptr) bytes = blank.data();
      if (plan.lineApi) {
        PP_SendALineAColorData(static_cast<std::uint32_t>(plane), image.LineBytes(), bytes, 0);
      } else {
        WriteRipData(bytes, image.LineBytes());
      }
    }
  }
}

}  // namespace

RandomImage::RandomImage(std::uint32_t widthPixels, std::uint32_t lines, std::uint64_t seed)
    : lines_(lines), lineBytes_(widthPixels * kBitsPerPixel / 8) {
  std::mt19937_64 random(seed);
  const std::uint64_t blankPlane = random() % 9;  // 8: none
  for (std::size_t plane = 0; plane < planes_.size(); ++plane) {
    if (plane == blankPlane) continue;
    planes_[plane].resize(std::size_t{lines} * lineBytes_);
    for (std::uint32_t first = 0; first < lines; first += 50) {
      const std::uint64_t keep = random() % 3;  // of three bytes; 0 leaves fifty lines blank
      const std::size_t end = std::size_t{std::min(first + 50, lines)} * lineBytes_;
      for (std::size_t i = std::size_t{first} * lineBytes_; i < end; ++i) {
        const std::uint64_t bits = random();
        if ((bits >> 8) % 3 < keep) planes_[plane][i] = static_cast<std::uint8_t>(bits);
      }
    }
  }
}

const std::uint8_t* RandomImage::Line(int plane, std::uint32_t line) const {
  const auto& bytes = planes_[static_cast<std::size_t>(plane)];
  return bytes.empty() ? nullptr : bytes.data() + std::size_t{line} * lineBytes_;
}

SolidImage::SolidImage(std::uint32_t widthPixels, std::uint32_t lines, std::vector<LineRange> solid)
    : lines_(lines), full_(widthPixels * kBitsPerPixel / 8, 0xFF), solid_(std::move(solid)) {}

const std::uint8_t* SolidImage::Line(int, std::uint32_t line) const {
  for (const LineRange& range : solid_) {
    if (line >= range.first && line < range.end) return full_.data();
  }
  return nullptr;
}

std::vector<std::vector<std::uint8_t>> Unnumbered(
    std::vector<std::vector<std::uint8_t>> transfers) {
  for (std::vector<std::uint8_t>& transfer : transfers) {
    for (std::size_t at = 0; at + kFrameBytes <= transfer.size(); at += kSlotBytes) {
      qrn::PutU16(&transfer[at + kSequenceAt], 0);
      qrn::PutU16(&transfer[at + kHeaderCheckAt], 0);
    }
    if (transfer.size() == kPacketBytes) qrn::PutU16(&transfer[kPacketCheckAt], 0);
  }
  return transfers;
}

std::vector<std::uint32_t> FeedOnlySteps(const JobOutcome& outcome) {
  std::vector<std::uint32_t> steps;
  for (const std::vector<std::uint8_t>& transfer : outcome.transfers) {
    if (transfer.size() != kPacketBytes) continue;
    const std::uint8_t* command = &transfer[kFrameBytes];
    if (qrn::U32(command) == 4 && qrn::U32(command + 8) == 0)
      steps.push_back(qrn::U32(command + 56));
  }
  return steps;
}

std::string Describe(const JobPlan& plan) {
  std::ostringstream text;
  text << plan.resolution << " dpi, " << (plan.lineApi ? "line" : "stream") << ", "
       << plan.widthPixels << "x" << plan.lines << ", bidirectional " << plan.machine.bidirectional
       << ", fixed " << int{plan.machine.fixedDir} << ", mirrored " << plan.machine.mirroredHeads
       << ", feather " << int{plan.machine.featherPercent} << ", gaps "
       << int{plan.machine.headGapX[0]} << "/" << int{plan.machine.headGapY[0]} << ", "
       << (plan.solid.empty() ? "random" : "solid") << ", seed " << plan.seed;
  return text.str();
}

JobOutcome RunJob(const JobPlan& plan) {
  const RandomImage random(plan.widthPixels, plan.lines, plan.seed);
  const SolidImage solid(plan.widthPixels, plan.lines, plan.solid);
  const RasterSource& image = plan.solid.empty() ? static_cast<const RasterSource&>(random) : solid;
  VirtualPrinter printer(plan.machine, plan.quirks);
  printer.KeepTransfers(true);
  JobOutcome outcome;
  SessionOptions options;
  options.virtualTime = !plan.realTime;
  options.seed = plan.seed;
  options.limitMs = plan.limitMs;
  options.onBox = [&outcome](const std::string& text) { outcome.boxes.push_back(text); };
  {
    const Session session(printer, options);
    if (plan.watched != nullptr) qrn::UsePlatform(plan.watched);
    const std::uint32_t startMs = session.TickMs();
    const HostJobDesc desc = DescOf(plan);
    outcome.started = (plan.lineApi ? PP_Init(&desc) : StartPrint(&desc, 0)) == 1;
    HandOver(plan, image);
    if (plan.napMs != 0) qrn::ThePlatform().SleepMs(plan.napMs);
    if (!plan.skipEndCall) {
      if (plan.lineApi) {
        PP_Uninit();
      } else {
        EndRipData();
      }
    } else {
      // The job must not outlive its printer: the next start ends it, and has nothing to print.
      const HostJobDesc none{};
      PP_Init(&none);
      PP_Uninit();
    }
    outcome.elapsedMs = session.TickMs() - startMs;
  }
  outcome.stats = printer.Stats();
  outcome.violation = printer.Violation();
  outcome.transfers = printer.Transfers();
  if (printer.ResolutionX() != 0) {
    outcome.comparison =
        Compare(image, printer.CurrentPaper(), plan.machine, printer.ResolutionX());
  }
  return outcome;
}
