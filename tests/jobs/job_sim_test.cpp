// Whole jobs from seeds. Each is drawn as a scenario and played on virtual time, and after it a
// good job of the same page on the same machine: what must hold for any job, whatever happened to
// it. A seed has a process of its own, so that it is the same job alone and in a row.
//
//   job_sim_test [--seeds A..B]   says which seeds fail, by default of 1..2000
//   job_sim_test --seed=N         one of them, with its scenario and its log
#include <cstdio>
#include <cstring>
#include <string>

#include "job/job.h"
#include "jobs/library_memory.h"
#include "jobs/plan.h"
#include "scenarios/play.h"
#include "scenarios/stage.h"
#include "sim/proof/compare.h"

namespace {

using namespace scenarios;
using qrn::sim::Comparison;

// A poll each for the three commands, for the stop and for the swaths that are left.
constexpr std::uint64_t kPollsMs = 5 * 100;
// A start that gets no further than its connect; its thread ends within a second.
constexpr std::uint64_t kFailedStartMs = 1100;
// 202 polls of 100 ms after the second that a thread has to end.
constexpr std::uint64_t kForcedEndMs = 1000 + 202 * 100;
constexpr std::uint8_t kLinkGivenUp = 17;

// The printer that is printed on.
const qrn::sim::VirtualPrinter* g_printer = nullptr;

// All jobs of a scenario, played out, and what is left of them.
struct Played {
  Played(const Scenario& scenario, const Page& drawn) : stage(scenario), page(drawn) {
    g_printer = &stage.printer;
    page = stage.host.Print(scenario.jobs[0], drawn);
    // The stream and a whole page are flushed.
    isWhole = !scenario.jobs[0].lineFamily || stage.host.LinesTaken() == page.Lines();
    for (std::size_t i = 1; i < scenario.jobs.size(); ++i) stage.host.Print(scenario.jobs[i]);
    elapsedMs = stage.witness.TickMs() - scenario.system.startTickMs;
    for (const Event& event : stage.witness.TakeEvents()) {
      boxes += event.text.starts_with("box ") ? 1 : 0;
      isForced |= event.text.starts_with("强行退出TX线程");
    }
    const qrn::Job& job = qrn::GetJob();
    error = job.nErrCode;
    isCancelled = job.bCancelLatch != 0;
    isPrinted = scenario.jobs.size() == 1 && error == 0 && !isCancelled && job.bJobEndRx == 1 &&
                stage.printer.Stats().jobsEnded != 0;
  }

  Stage stage;
  Page page;  // that the first job should have printed
  bool isWhole = false, isPrinted = false, isCancelled = false, isForced = false;
  std::uint32_t boxes = 0;
  std::uint8_t error = 0;
  std::uint32_t elapsedMs = 0;
};

class Judge {
 public:
  explicit Judge(const Scenario& plan) : plan_(plan), fate_(FateOf(plan)) {}

  // A line for each thing that is wrong.
  Run Faults() {
    const Played planned(plan_, Page::Drawn(plan_.jobs[0]));
    CheckLeft("planned", planned);
    CheckEnd(planned);
    Scenario good = GoodOf(plan_.jobs[0]);
    good.machine = plan_.machine;
    const Played clean(good, planned.page);
    CheckLeft("good", clean);
    Expect(clean.isPrinted && clean.boxes == 0, "the good job: not printed");
    CheckTime(planned, clean);
    CheckPaper(planned, clean);
    return std::move(faults_);
  }

 private:
  void Expect(bool holds, const std::string& what) {
    if (!holds) faults_.push_back({Entry::kResult, 0, what});
  }

  void CheckLeft(const std::string& which, const Played& played) {
    const std::string job = "the " + which + " job: ";
    const Stage& stage = played.stage;
    Expect(stage.printer.Violation().empty(), job + stage.printer.Violation());
    Expect(stage.witness.Time().LiveThreads() == 0, job + "a thread is left");
    Expect(stage.witness.Time().OpenDevices() == 0, job + "a device is left open");
    const LibraryMemory memory = TheLibraryMemory();
    Expect(memory.held == 0, job + std::to_string(memory.held) + " blocks of memory are left");
    Expect(memory.inJobs == 0, job + "took memory after the connect");
    Expect(!played.isPrinted || memory.obtained != 0, job + "no memory is counted");
  }

  void CheckEnd(const Played& planned) {
    // What keeps the transmit thread for longer than a stop waits for it.
    const std::uint64_t heldMs =
        planned.boxes * std::uint64_t{plan_.system.boxOpenMs} + fate_.costMs;
    Expect(!planned.isForced || heldMs >= kForcedEndMs - kFailedStartMs || plan_.jobs.size() > 1,
           "the thread is ended by force, and nothing held it");
    Expect(planned.isPrinted || fate_.mayFail || fate_.mayCancel || fate_.mayLose,
           "not printed, and nothing kept it");
    Expect(!planned.isCancelled || fate_.mayCancel, "cancelled by nobody");
    Expect(planned.error != kLinkGivenUp || fate_.mayLose, "the link is given up without a reason");
    Expect(!planned.isPrinted || planned.boxes == 0, "printed, with a box");
  }

  void CheckTime(const Played& planned, const Played& clean) {
    if (fate_.altersPage) return;  // perhaps in more passes
    const std::uint64_t mostMs = clean.elapsedMs + fate_.costMs + kPollsMs +
                                 planned.boxes * std::uint64_t{plan_.system.boxOpenMs} +
                                 (plan_.jobs.size() > 1 ? kFailedStartMs : 0) +
                                 (planned.isForced ? kForcedEndMs : 0);
    Expect(planned.elapsedMs <= mostMs, std::to_string(planned.elapsedMs) + " ms, at most " +
                                            std::to_string(mostMs) + " as a good job takes " +
                                            std::to_string(clean.elapsedMs));
  }

  // A machine that cannot print this page right is known by the good job's paper.
  void CheckPaper(const Played& planned, const Played& clean) {
    const std::uint32_t resolution = clean.stage.printer.ResolutionX();
    const Comparison right =
        Compare(planned.page, clean.stage.printer.CurrentPaper(), plan_.machine, resolution);
    if (right.incomparable) return;
    Expect(right.differingCells == 0, "the good job: " + right.firstDifference);
    if (fate_.altersPage || planned.stage.printer.ResolutionX() == 0) return;
    const Comparison found = CompareCalibrated(planned.page, planned.stage.printer.CurrentPaper(),
                                               plan_.machine, resolution, right);
    const bool isDone = planned.isPrinted && planned.isWhole;
    Expect((isDone ? found.differingCells : found.overInkedCells) == 0, found.firstDifference);
  }

  const Scenario& plan_;
  const Fate fate_;
  Run faults_;
};

// True when nothing is wrong.
bool TakeSeed(const char* program, unsigned long long seed) {
  const Scenario plan = DrawPlan("plan", seed);
  const Run faults = InChild([&plan] { return Judge(plan).Faults(); });
  if (faults.empty()) return true;
  std::printf("FAILED %s", TextOf(plan).c_str());
  for (const Entry& fault : faults) std::printf("  %s\n", fault.text.c_str());
  std::printf("  again: %s --seed=%llu\n", program, seed);
  return false;
}

void Show(const Scenario& plan) {
  std::printf("%s", TextOf(plan).c_str());
  for (const Entry& entry : PlayApart(plan)) {
    if (entry.kind == Entry::kLog || entry.kind == Entry::kSaid)
      std::printf("  +%u %s\n", static_cast<unsigned>(entry.ms), entry.text.c_str());
    if (entry.kind == Entry::kResult) std::printf("  %s\n", entry.text.c_str());
  }
}

}  // namespace

bool JobRuns() {
  return g_printer != nullptr && g_printer->Stats().jobsCreated > g_printer->Stats().jobsEnded;
}

int main(int argc, char** argv) {
  unsigned long long first = 1, last = 2000;
  const bool isOne = argc == 2 && std::sscanf(argv[1], "--seed=%llu", &first) == 1;
  const bool isRange = argc == 3 && std::strcmp(argv[1], "--seeds") == 0 &&
                       std::sscanf(argv[2], "%llu..%llu", &first, &last) == 2 && first <= last;
  if (argc != 1 && !isOne && !isRange) {
    std::fprintf(stderr, "usage: job_sim_test [--seeds A..B | --seed=N]\n");
    return 2;
  }
  if (isOne) {
    last = first;
    Show(DrawPlan("plan", first));
  }
  unsigned long long failed = 0;
  for (unsigned long long seed = first; seed <= last; ++seed)
    failed += TakeSeed(argv[0], seed) ? 0 : 1;
  std::printf("%llu seeds, %llu failed\n", last - first + 1, failed);
  return failed == 0 ? 0 : 1;
}
