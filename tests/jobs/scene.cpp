#include "jobs/scene.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <sstream>

#include "diag/error_texts.h"
#include "jobs/job_runner.h"
#include "support/job_record.h"
#include "support/log_text.h"
#include "support/test_seed.h"

namespace {

constexpr std::uint32_t kWidth = 48, kResolution = 1440;

// Line 0 and perhaps another of the inks of PHA, or of all, at the highest level: each prints in
// four passes.
class FullLines : public qrn::sim::RasterSource {
 public:
  FullLines(bool allPlanes, std::uint32_t farLine) : allPlanes_(allPlanes), farLine_(farLine) {}
  std::uint32_t Lines() const override { return std::max(farLine_ + 1, 2u); }
  std::uint32_t LineBytes() const override { return static_cast<std::uint32_t>(full_.size()); }
  const std::uint8_t* Line(int plane, std::uint32_t line) const override {
    const bool pha = plane == 0 || plane == 3 || plane == 4 || plane == 7;
    return (line == 0 || line == farLine_) && (allPlanes_ || pha) ? full_.data() : nullptr;
  }

 private:
  bool allPlanes_;
  std::uint32_t farLine_;
  std::vector<std::uint8_t> full_ = std::vector<std::uint8_t>(kWidth / 4, 0xFF);
};

// Calls that hand a page over.
std::uint32_t CallsFor(const FullLines& image) { return image.Lines() * 8; }

// How many calls of the line family gave 1; those of the stream tell nothing.
std::uint32_t HandOver(const Scene& scene, const FullLines& image) {
  const std::vector<std::uint8_t> blank(image.LineBytes());
  std::uint32_t good = 0;
  for (std::uint32_t i = 0; i < CallsFor(image); ++i) {
    const std::uint8_t* line = image.Line(static_cast<int>(i % 8), i / 8);
    if (line == nullptr) line = blank.data();
    if (scene.lineApi) {
      good += PP_SendALineAColorData(i % 8, image.LineBytes(), line, 0) == 1 ? 1 : 0;
    } else {
      WriteRipData(line, image.LineBytes());
    }
  }
  return good;
}

void RunHost(const Scene& scene, const FullLines& image, qrn::Platform& platform,
             Outcome* outcome) {
  HostJobDesc desc{};
  desc.resX = kResolution;
  desc.resY = 360;
  desc.height = image.Lines();
  desc.width = kWidth;
  desc.colors = 8;
  desc.bitsPerPixel = 2;
  if (scene.describe != nullptr) scene.describe(desc);
  outcome->started = (scene.lineApi ? PP_Init(&desc) : StartPrint(&desc, 0)) == 1;
  outcome->goodLineCalls = HandOver(scene, image);
  if (const qrn::Job* job = JobRecord()) outcome->linesReceived = job->linesReceived;
  platform.SleepMs(scene.hostNapMs);
  if (scene.skipEndCall) {
    desc.resX = 0;  // a job that the printer does not get to see beyond its connect
    PP_Init(&desc);
  }
  EXPECT_EQ(1, scene.lineApi ? PP_Uninit() : EndRipData());
}

void ExpectNothingLeft(const qrn::sim::SimPlatform& platform) {
  EXPECT_EQ(0u, platform.LiveThreads());
  EXPECT_EQ(0u, platform.OpenDevices());
  const qrn::Job* job = JobRecord();
  if (job == nullptr) return;
  EXPECT_EQ(0u, job->hDevice);
  EXPECT_EQ(nullptr, job->PrintOutBuf);
  EXPECT_EQ(nullptr, job->Mem.pPassBuffer[0]);
  EXPECT_EQ(nullptr, job->swathQueue[0].pSwathData);
}

// How a good job is set up and cut into passes.
bool IsPlain(const std::string& line) {
  static const char* const kPlain[] = {
      "Lanternfly", "V2.07",     "2024.",        "====",       "主板:",     "小车:",
      "速度:",      "水平:",     "2pheads:",     "喷头:",      "羽化",      "图像96x",
      "最大",       "PHA:",      "PHB:",         "纵轴(",      "mem: ",     "WAVE:",
      "Jobinfo",    "Rip last ", "Create Swath", "EmptySteps", "Link Start"};
  if (line.starts_with("mem: malloc ") && line.find(" fail") != std::string::npos) return false;
  if (line.starts_with("swath") && line.ends_with(" empty")) return true;
  return std::any_of(std::begin(kPlain), std::end(kPlain),
                     [&line](const char* start) { return line.starts_with(start); });
}

std::string Utf8TextOf(int error, bool chinese) {
  char slot[qrn::kErrorSlotBytes];
  qrn::CopyErrorText(static_cast<std::uint32_t>(error), chinese, slot);
  return CodePageToUtf8(slot);
}

// One entry a line: a text of several lines becomes several.
std::vector<Expected> Expand(const std::vector<Expected>& expected, bool chinese) {
  std::vector<Expected> lines;
  for (const Expected& entry : expected) {
    if (!entry.text.starts_with("Error: ")) {
      lines.push_back(entry);
      continue;
    }
    std::istringstream text("Error: " + Utf8TextOf(std::atoi(entry.text.c_str() + 7), chinese));
    for (std::string line; std::getline(text, line);) {
      std::erase(line, '\r');
      if (!line.empty()) lines.push_back({entry.ms, line});
    }
  }
  return lines;
}

bool Matches(const std::string& text, const std::string& wanted) {
  if (!wanted.ends_with('*')) return text == wanted;
  return text.starts_with(wanted.substr(0, wanted.size() - 1));
}

}  // namespace

Outcome Play(const Scene& scene) {
  static const std::uint64_t seed = TestSeed();
  static std::uint32_t scenes = 0;
  const LogFolder folder;
  const FullLines image(scene.allPlanes, scene.farLine);
  qrn::sim::VirtualPrinter printer(scene.machine);
  ScriptedPort port(printer, scene.script);
  port.bus = scene.bus;
  Outcome outcome;
  qrn::sim::SimOptions options;
  options.seed = seed;
  options.localeId = scene.localeId;
  options.boxOpenMs = scene.boxOpenMs;
  options.failThreadStart = scene.failThreadStart;
  // The period of pause polls outlives a job: each scene is far from the one before.
  options.startTickMs = ++scenes * 10'000'019u;
  options.onBox = [&outcome](const std::string& text) {
    outcome.boxes.push_back(CodePageToUtf8(text));
  };
  {
    TimedPlatform platform(port, options);
    qrn::UsePlatform(&platform);
    RunHost(scene, image, platform, &outcome);
    outcome.log = platform.Lines();
    ExpectNothingLeft(platform.Inner());
    qrn::UsePlatform(nullptr);
  }
  outcome.violation = printer.Violation();
  outcome.swathsTaken = printer.Stats().swaths;
  // Where neither the calls nor a record tell, what prints does.
  const bool printed = scene.lineApi || outcome.swathsTaken != 0;
  outcome.linesTaken = (!scene.lineApi || outcome.goodLineCalls == CallsFor(image)) &&
                       (outcome.linesReceived ? *outcome.linesReceived == image.Lines() : printed);
  if (printer.ResolutionX() != 0) {
    outcome.printedWhole =
        qrn::sim::Compare(image, printer.CurrentPaper(), scene.machine, kResolution)
            .differingCells == 0;
  }
  return outcome;
}

testing::AssertionResult Tells(const std::vector<LogLine>& log,
                               const std::vector<Expected>& expected, bool chinese) {
  const std::vector<Expected> wanted = Expand(expected, chinese);
  std::size_t matched = 0;
  std::uint32_t startMs = 0;
  std::ostringstream seen;
  for (const LogLine& line : log) {
    if (IsPlain(line.text)) continue;
    if (matched == 0 && !Matches(line.text, wanted[0].text)) continue;
    if (matched == 0) startMs = line.ms;
    const std::uint32_t ms = line.ms - startMs;
    seen << "  " << ms << " " << line.text << "\n";
    const Expected& next = wanted[matched];
    if (!Matches(line.text, next.text) || (next.ms != kAnyTime && next.ms != ms)) {
      return testing::AssertionFailure() << "not \"" << next.text << "\" at " << next.ms << " but\n"
                                         << seen.str();
    }
    if (++matched == wanted.size()) return testing::AssertionSuccess();
  }
  return testing::AssertionFailure() << "no \"" << wanted[matched].text << "\" in\n" << seen.str();
}

std::vector<std::string> BoxesOf(const std::vector<int>& errors, bool chinese) {
  std::vector<std::string> boxes;
  for (const int error : errors) boxes.push_back(Utf8TextOf(error, chinese));
  return boxes;
}
