#include "scenarios/play.h"

#include <fstream>
#include <iterator>
#include <map>

#include "platform/platform.h"
#include "scenarios/digest.h"
#include "scenarios/host.h"
#include "scenarios/log_folder.h"
#include "scenarios/record.h"
#include "scenarios/witness.h"
#include "sim/virtual_printer.h"

namespace scenarios {
namespace {

using qrn::sim::Comparison;
using qrn::sim::PrinterStats;

std::string Count(std::uint64_t count, const char* what) {
  return std::to_string(count) + " " + what;
}

const char* NameOf(std::uint32_t code) {
  static const std::map<std::uint32_t, const char*> names = {
      {2, "connect"}, {3, "create"}, {4, "swath"},  {5, "end"},
      {9, "cancel"},  {10, "poll"},  {12, "query"},
  };
  const auto name = names.find(code);
  return name != names.end() ? name->second : "unknown";
}

std::string TellTraffic(const Traffic& traffic) {
  std::string text;
  for (const auto& [code, count] : traffic.messages)
    text += (text.empty() ? "" : ", ") + (count != 1 ? Count(count, NameOf(code)) : NameOf(code));
  if (text.empty()) return "wire    nothing";
  return "wire    " + text + ": " + Count(traffic.writes, "writes, ") +
         Count(traffic.bytes, "bytes ") + traffic.digest.Text();
}

// What the printer did in this job: it counts over all jobs.
std::string TellPrinted(const PrinterStats& now, const PrinterStats& before) {
  const std::uint32_t feedOnly = now.feedOnlySwaths - before.feedOnlySwaths;
  std::string text = "printed " + Count(now.swaths - before.swaths, "swaths");
  if (feedOnly != 0) text += ", " + Count(feedOnly, "of them feed only");
  return text + ", ink " + std::to_string(now.inkLaid - before.inkLaid) + ", " +
         Count(now.jobsEnded - before.jobsEnded, "of ") +
         Count(now.jobsCreated - before.jobsCreated, "jobs ended");
}

std::string TellPaper(const Comparison& found) {
  std::string text =
      "paper   " + Count(found.cells, "cells, ") + Count(found.differingCells, "differ");
  if (found.unreachedCells != 0) text += ", " + Count(found.unreachedCells, "out of reach");
  if (found.displacedCells != 0) text += ", " + Count(found.displacedCells, "a line higher");
  if (!found.firstDifference.empty()) text += "; " + found.firstDifference;
  if (!found.reason.empty()) text += "; " + found.reason;
  return text;
}

// The digest holds names, bytes and, of all that has happened, the times.
std::string TellLogs(Digest times) {
  std::uint64_t bytes = 0;
  const std::vector<std::filesystem::path> files = LogFolder::Files();
  for (const std::filesystem::path& path : files) {
    std::ifstream file(path, std::ios::binary);
    const std::string log{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    const std::string name = path.filename().string();
    bytes += log.size();
    times.Add(name.data(), name.size());
    times.Add(log.data(), log.size());
  }
  return "log     " + Count(files.size(), "files, ") + Count(bytes, "bytes ") + times.Text();
}

// The stage for one scenario.
class Stage {
 public:
  explicit Stage(const Scenario& scenario)
      : folder_(scenario.logFolder),
        machine_(scenario.machine),
        printer_(scenario.machine, scenario.quirks),
        witness_(printer_, scenario.system),
        host_(witness_) {
    qrn::UsePlatform(&witness_);
  }
  ~Stage() { qrn::UsePlatform(nullptr); }
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  void Print(const Job& job) {
    const Page page = host_.Print(job);
    TakeEvents();
    Tell(TellTraffic(witness_.TakeTraffic()));
    Tell(TellPrinted(printer_.Stats(), before_));
    if (printer_.Stats().jobsCreated != before_.jobsCreated) {
      Tell(TellPaper(
          qrn::sim::Compare(page, printer_.CurrentPaper(), machine_, printer_.ResolutionX())));
    }
    before_ = printer_.Stats();
    for (const auto& [name, value] : RecordFields())
      run_.push_back({Entry::kRecord, 0, name + " " + value});
  }

  Run Finish() {
    TakeEvents();
    Tell(TellLogs(times_));
    if (!printer_.Violation().empty()) Tell("VIOLATION " + printer_.Violation());
    if (witness_.Time().LiveThreads() != 0) Tell("LEFT    a thread");
    if (witness_.Time().OpenDevices() != 0) Tell("LEFT    an open device");
    return std::move(run_);
  }

 private:
  void Tell(const std::string& text) { run_.push_back({Entry::kResult, 0, text}); }

  void TakeEvents() {
    const std::vector<Event>& events = witness_.Events();
    for (; eventsTaken_ < events.size(); ++eventsTaken_) {
      const Event& event = events[eventsTaken_];
      run_.push_back({event.isLog ? Entry::kLog : Entry::kSaid, event.ms, event.text});
      times_.Add(&event.ms, sizeof event.ms);
    }
  }

  LogFolder folder_;
  qrn::sim::Machine machine_;
  qrn::sim::VirtualPrinter printer_;
  Witness witness_;
  Host host_;
  Run run_;
  std::size_t eventsTaken_ = 0;
  Digest times_;
  PrinterStats before_;
};

}  // namespace

Run Play(const Scenario& scenario) {
  Stage stage(scenario);
  for (const Job& job : scenario.jobs) stage.Print(job);
  return stage.Finish();
}

}  // namespace scenarios
