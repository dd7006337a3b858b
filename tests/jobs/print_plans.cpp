// Prints a list of jobs, good and bad ones, and writes down all that leaves the library: each bulk
// write by its length and hash, each message box, each byte of the log. Builds of the library for
// different systems must write the same file.
//
//   print_plans FILE
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "jobs/job_runner.h"

namespace {

using qrn::sim::Heads;

struct NamedPlan {
  std::string name;
  JobPlan plan;
};

JobPlan Plain(std::uint32_t resolution, bool lineApi) {
  JobPlan plan;
  plan.resolution = resolution;
  plan.lineApi = lineApi;
  plan.widthPixels = 960;
  plan.lines = 430;
  plan.seed = resolution;
  plan.limitMs = 600'000;
  return plan;
}

// Every mode and head set-up, every way that positions and feathering are reckoned.
std::vector<NamedPlan> GoodPlans() {
  std::vector<NamedPlan> plans;
  for (const std::uint32_t resolution : {1080u, 1440u, 1620u, 2160u}) {
    for (const bool lineApi : {false, true}) {
      const std::string name =
          std::to_string(resolution) + (lineApi ? " dpi, line" : " dpi, stream");
      JobPlan plan = Plain(resolution, lineApi);
      plans.push_back({name + ", two heads", plan});
      plan.machine.featherPercent = lineApi ? 10 : 50;
      plan.machine.bidirectional = !lineApi;
      plan.machine.fixedDir = 1;
      plan.machine.mirroredHeads = true;
      plan.machine.headGapX.fill(41);
      plan.machine.headGapY.fill(7);
      plan.machine.biDirShift.fill(29);
      plan.machine.feedCalib = 2557;
      plan.machine.margin = 300;
      plans.push_back({name + ", feathered, with gaps", plan});
      plan = Plain(resolution, lineApi);
      plan.machine.heads = lineApi ? Heads::kPha : Heads::kPhb;
      plan.machine.inkOrder.fill({7, 6, 5, 4, 3, 2, 1, 0});
      plan.machine.flashEvery = 3;
      plans.push_back({name + ", one head", plan});
    }
  }
  return plans;
}

qrn::sim::QuirkScript Script(const char* text) {
  qrn::sim::QuirkScript script(1);
  std::string error;
  if (!qrn::sim::ParseQuirk(text, script.data(), &error)) {
    std::fprintf(stderr, "%s: %s\n", text, error.c_str());
    std::exit(2);
  }
  return script;
}

// A printer that never answers again is left by force, when the next job starts. All swaths of the
// page find room in the queue.
JobPlan SilentPlan() {
  JobPlan plan = Plain(1080, true);
  plan.machine.heads = Heads::kPha;
  plan.machine.inkOrder.fill({7, 6, 5, 4, 3, 2, 1, 0});
  plan.widthPixels = 48;
  plan.lines = 2;
  plan.solid = {{0, 2}};
  plan.quirks = Script("silence:at=1");
  plan.skipEndCall = true;
  plan.napMs = 1000;
  return plan;
}

std::vector<NamedPlan> BadPlans() {
  std::vector<NamedPlan> plans;
  for (const char* quirk : {"refuse:on=connect,count=2,status=0x54",
                            "refuse:on=connect,status=0x21",
                            "buffer-full:at=2,count=12",
                            "refuse:on=swath,status=2,at=2",
                            "refuse:on=create,status=1",
                            "refuse:on=swath,status=7,at=2,count=2",
                            "pause:at=3,ms=9000",
                            "pause:at=2,ms=4000,on=query,update=db",
                            "cancel:at=3",
                            "cancel:at=2,on=query",
                            "unplug:msg=3,ms=5500",
                            "unplug:msg=3",
                            "unplug:msg=2,ms=5500,back=other",
                            "second-printer:first=1,held=1",
                            "path:case=upper",
                            "write-fails:write=9,count=2",
                            "read-fails:read=7",
                            "garbage:form=kind,at=2",
                            "garbage:form=overlong,at=2",
                            "block:defect=signature",
                            "block:defect=ink"}) {
    JobPlan plan = Plain(1440, true);
    plan.widthPixels = 192;
    plan.quirks = Script(quirk);
    plans.push_back({quirk, plan});
  }
  plans.push_back({"silence", SilentPlan()});
  return plans;
}

// FNV-1a.
std::uint64_t HashOf(const std::vector<std::uint8_t>& bytes) {
  std::uint64_t hash = 0xCBF29CE484222325u;
  for (const std::uint8_t byte : bytes) hash = (hash ^ byte) * 0x100000001B3u;
  return hash;
}

struct Totals {
  std::size_t transfers = 0, logBytes = 0;
  std::uint64_t wireBytes = 0;
};

bool Print(const NamedPlan& named, std::ofstream& out, Totals& totals) {
  const LogFolder folder;
  const JobOutcome outcome = RunJob(named.plan);
  out << "== " << named.name << "\nstarted " << outcome.started << ", " << outcome.elapsedMs
      << " ms, " << outcome.stats.swaths << " swaths, " << outcome.comparison.differingCells
      << " cells differ\n";
  for (const std::vector<std::uint8_t>& transfer : outcome.transfers) {
    char line[40];
    std::snprintf(line, sizeof line, "%u %016llx\n", static_cast<unsigned>(transfer.size()),
                  static_cast<unsigned long long>(HashOf(transfer)));
    out << line;
    totals.wireBytes += transfer.size();
  }
  totals.transfers += outcome.transfers.size();
  for (const std::string& box : outcome.boxes) out << "box: " << box << "\n";
  for (const std::string& log : LogFolder::Logs()) {
    out << "-- log\n" << log;
    totals.logBytes += log.size();
  }
  if (outcome.violation.empty()) return true;
  std::fprintf(stderr, "%s: %s\n", named.name.c_str(), outcome.violation.c_str());
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: print_plans FILE\n");
    return 2;
  }
  std::vector<NamedPlan> plans = GoodPlans();
  for (NamedPlan& plan : BadPlans()) plans.push_back(std::move(plan));
  std::ofstream out(argv[1], std::ios::binary);
  Totals totals;
  bool good = true;
  for (const NamedPlan& plan : plans) good = Print(plan, out, totals) && good;
  out.close();
  std::printf("%zu jobs: %zu bulk writes of %llu bytes, %zu bytes of logs\n", plans.size(),
              totals.transfers, static_cast<unsigned long long>(totals.wireBytes), totals.logBytes);
  const bool callsRight = !testing::UnitTest::GetInstance()->Failed();  // expected on the way
  return good && callsRight && out ? 0 : 1;
}
