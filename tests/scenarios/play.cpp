#include "scenarios/play.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>

#include "scenarios/stage.h"
#include "sim/proof/compare.h"

namespace scenarios {
namespace {

using qrn::sim::Comparison;
using qrn::sim::PrinterStats;

std::string Count(const std::string& what, std::uint64_t count) {
  return what + " " + std::to_string(count);
}

std::string TellTraffic(const Traffic& traffic) {
  static const std::map<std::uint32_t, std::string> names = {
      {0, "test"}, {2, "connect"}, {3, "create"}, {4, "swath"},
      {5, "end"},  {9, "cancel"},  {10, "poll"},  {12, "query"},
  };
  std::string text;
  for (const auto& [code, count] : traffic.messages) {
    const auto known = names.find(code);
    text += (text.empty() ? "" : ", ") + (count != 1 ? std::to_string(count) + " " : "") +
            (known != names.end() ? known->second : "command " + std::to_string(code));
  }
  if (text.empty()) return "wire    nothing";
  return "wire    " + text + Count(": writes", traffic.writes) + Count(", bytes", traffic.bytes) +
         ", " + traffic.digest.Text();
}

// What the printer did in this job: it counts over all jobs.
std::string TellPrinted(const PrinterStats& now, const PrinterStats& before) {
  const std::uint32_t feedOnly = now.feedOnlySwaths - before.feedOnlySwaths;
  return Count("printed swaths", now.swaths - before.swaths) +
         (feedOnly != 0 ? Count(", feed only", feedOnly) : "") +
         Count(", ink", now.inkLaid - before.inkLaid) +
         Count("; jobs created", now.jobsCreated - before.jobsCreated) +
         Count(", ended", now.jobsEnded - before.jobsEnded);
}

std::string TellPaper(const Comparison& found) {
  std::string text = Count("; cells", found.cells) + Count(", differ", found.differingCells);
  if (found.unreachedCells != 0) text += Count(", out of reach", found.unreachedCells);
  if (found.displacedCells != 0) text += Count(", a line higher", found.displacedCells);
  if (!found.firstDifference.empty()) text += "; " + found.firstDifference;
  if (!found.reason.empty()) text += "; " + found.reason;
  return text;
}

// The digest holds names and bytes and, of all that has happened, the times.
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
  return Count("; logs", files.size()) + Count(", bytes", bytes) + ", " + times.Text();
}

class Teller {
 public:
  explicit Teller(const Scenario& scenario) : stage_(scenario), machine_(scenario.machine) {}

  void Print(const Job& job) {
    const Page page = stage_.host.Print(job);
    TakeEvents();
    const PrinterStats stats = stage_.printer.Stats();
    for (const auto& [name, value] : RecordFields())
      run_.push_back({Entry::kRecord, 0, std::string(name).append(" ").append(value)});
    if (stats.jobsCreated != before_.jobsCreated) {
      Tell(TellPrinted(stats, before_) +
           TellPaper(Compare(page, stage_.printer.CurrentPaper(), machine_,
                             stage_.printer.ResolutionX())));
    }
    Tell(TellTraffic(stage_.witness.TakeTraffic()));
    before_ = stats;
    ++jobs_;
  }

  Run BreakOff(const std::string& why) {
    TakeEvents();
    Tell("BROKEN  " + why);
    return std::move(run_);
  }

  Run Finish() {
    TakeEvents();
    run_.back().text += TellLogs(times_);
    for (const std::string& quirk : stage_.printer.UnusedQuirks()) Tell("NEVER   acted " + quirk);
    if (!stage_.printer.Violation().empty()) Tell("VIOLATION " + stage_.printer.Violation());
    if (stage_.witness.Time().LiveThreads() != 0) Tell("LEFT    a thread");
    if (stage_.witness.Time().OpenDevices() != 0) Tell("LEFT    an open device");
    if (testing::UnitTest::GetInstance()->Failed()) Tell("FAILED  as is said above");
    return std::move(run_);
  }

 private:
  void Tell(const std::string& text) { run_.push_back({Entry::kResult, 0, text}); }

  void TakeEvents() {
    for (const Event& event : stage_.witness.TakeEvents()) {
      times_.Add(&event.ms, sizeof event.ms);
      if (event.kind == Event::kLogBegins) {
        run_.push_back({Entry::kLogBegins, event.ms, std::to_string(jobs_)});
      } else {
        run_.push_back(
            {event.kind == Event::kLog ? Entry::kLog : Entry::kSaid, event.ms, event.text});
      }
    }
  }

  Stage stage_;
  const qrn::sim::Machine& machine_;
  Run run_;
  Digest times_;
  PrinterStats before_;
  int jobs_ = 0;
};

}  // namespace

Run Play(const Scenario& scenario) {
  Teller teller(scenario);
  try {
    for (const Job& job : scenario.jobs) teller.Print(job);
  } catch (const qrn::sim::TimeLimitPassed& passed) {
    return teller.BreakOff(passed.what());
  }
  return teller.Finish();
}

}  // namespace scenarios
