#include "jobs/sim_invariants.h"

#include <algorithm>
#include <array>

#include "jobs/sim_log_checks.h"

namespace {

using qrn::Job;

constexpr std::size_t kSpitModeAt = 5, kFeedLineAt = 32, kStartPosAt = 8;  // of a swath header
constexpr std::uint64_t kPollMs = 100, kFailedStartMs = 1000 + kPollMs;
constexpr std::uint64_t kForcedEndMs = 1000 + 202 * kPollMs;  // a second of grace, then 202 polls

bool Printed(const SimJobRun& run) {
  return run.host.endCalls != 0 && run.Logged("\nJob start\n") && run.job.nErrCode == 0 &&
         run.job.bCancelLatch == 0 && run.job.bJobEndRx == 1;
}

bool AltersPage(const SimPlan& plan) {
  const auto script = plan.Script();
  return std::any_of(script.begin(), script.end(),
                     [&](const auto& quirk) { return EffectOf(quirk, plan).altersPage; });
}

// Nothing of the plan can do more than delay the job.
bool IsHarmless(const SimPlan& plan) {
  if (plan.noThread || plan.Makes(kNoEnd) || plan.Makes(kBadJob)) return false;
  int pulls = 0;
  for (const auto& quirk : plan.Script()) {
    const QuirkEffect effect = EffectOf(quirk, plan);
    if (effect.mayEndJob) return false;
    pulls += effect.pullsLink ? 1 : 0;
  }
  return pulls <= 1;
}

// What keeps the transmit thread for longer than a stop waits for it: a box that stays open; or, in
// a job that is cancelled in the middle of a message, the printer that does not answer this one.
bool MayHoldThread(const SimPlan& plan, const SimJobRun& run, bool cancels, bool pulls) {
  constexpr std::uint64_t kHeldMs = kForcedEndMs - kFailedStartMs;  // its last second apart
  std::uint64_t silentMs = 0;
  for (const auto& quirk : plan.Script()) silentMs += EffectOf(quirk, plan).costMs;
  return run.boxes.size() * std::uint64_t{plan.boxOpenMs} >= kHeldMs ||
         (cancels && (pulls || silentMs >= kHeldMs));
}

// A job that cannot be printed: how it ends.
Outcome OutcomeOf(BadJob job) {
  const bool silently = job == BadJob::kNull || job == BadJob::kResolution;
  return silently ? Outcome::kRefused : Outcome::kError;
}

// Whether something of the plan leads to a job that ended like this, without having printed all.
bool IsAllowed(const SimPlan& plan, const SimJobRun& run, Outcome outcome) {
  constexpr std::uint8_t kNoDevice = 31;
  bool cancels = false, losesLink = run.patienceLost, refuses = false, spoils = false, away = false;
  int pulls = 0;
  for (const auto& quirk : plan.Script()) {
    using Kind = qrn::sim::Quirk::Kind;
    const QuirkEffect effect = EffectOf(quirk, plan);
    cancels |= quirk.kind == Kind::kCancel;
    refuses |= quirk.kind == Kind::kRefuse && effect.mayEndJob;
    spoils |= quirk.kind == Kind::kBlock;
    away |= IsAwayAtStart(quirk);
    pulls += effect.pullsLink ? 1 : 0;
    losesLink |= (effect.pullsLink && effect.mayEndJob) || pulls > 1;
  }
  const bool badJob = plan.Makes(kBadJob) && OutcomeOf(plan.badJob) == outcome;
  switch (outcome) {
    case Outcome::kCancelled:
      return cancels;
    case Outcome::kLinkGivenUp:
      return losesLink;
    case Outcome::kRefused:
      return refuses || badJob;
    case Outcome::kError:
      return run.job.nErrCode == kNoDevice ? away : spoils || badJob;
    case Outcome::kNoThread:
      return plan.noThread;
    case Outcome::kSkipped:
      return plan.Makes(kNoEnd);
    case Outcome::kForced:
      return plan.Makes(kNoEnd) || MayHoldThread(plan, run, cancels, pulls != 0);
    case Outcome::kPrinted:
    case Outcome::kCount:
      break;
  }
  return false;
}

// The swath's header without what other jobs or a mistaken host may change in it.
std::array<std::uint8_t, 36> Comparable(const SimPlan& plan, const SentSwath& swath) {
  auto header = swath.header;
  header[kSpitModeAt] = 0;  // whose turn it is goes on from job to job
  // A line count that the host got wrong moves where bands end, and with that only this word.
  if (plan.mistakes != 0) std::fill_n(header.begin() + kFeedLineAt, 4, std::uint8_t{0});
  return header;
}

class Checker {
 public:
  Checker(const SimPlan& plan, const SimRun& run) : plan_(plan), run_(run) {}

  std::vector<std::string> Run() {
    if (run_.overTime) {
      Complain(run_.overTimeJob, run_.overTimeText);
      return faults_;
    }
    CheckJob("planned", plan_, run_.planned);
    CheckPlanned();
    CheckTime();
    CheckSwaths();
    CheckPaper();
    SimPlan clean = plan_;
    clean.quirks.clear();
    clean.mistakes = 0;
    CheckJob("next", clean, run_.next);
    CheckNext();
    return faults_;
  }

 private:
  void Complain(const char* job, const std::string& what) {
    faults_.push_back(std::string(job) + " job: " + what);
  }
  void Expect(bool right, const char* job, const std::string& what) {
    if (!right) Complain(job, what);
  }

  void CheckJob(const char* name, const SimPlan& plan, const SimJobRun& run) {
    const auto complain = [this, name](const std::string& what) { Complain(name, what); };
    Expect(run.host.fault.empty(), name, run.host.fault);
    Expect(run.violation.empty(), name, "violation: " + run.violation);
    Expect(run.swathFault.empty(), name, run.swathFault);
    Expect(run.stats.swaths <= run.swaths.size(), name,
           std::to_string(run.stats.swaths) + " swaths accepted, " +
               std::to_string(run.swaths.size()) + " sent");
    CheckLeftBehind(name, run);
    CheckLogLines(plan, run, Printed(run), complain);
    CheckErrors(plan, run, complain);
  }

  void CheckLeftBehind(const char* name, const SimJobRun& run) {
    Expect(run.liveThreads == 0, name, "a thread is left");
    Expect(run.openDevices == 0, name, "a device is left open");
    Expect(run.heap.taken == run.heap.givenBack, name,
           std::to_string(run.heap.taken) + " blocks taken, " + std::to_string(run.heap.givenBack) +
               " given back");
    Expect(run.heap.takenOutsideStart == 0, name, "took memory between connect and end");
    const Job& job = run.job;
    bool freed =
        job.PrintOutBuf == nullptr && job.Mem.passBufBytes == 0 && job.printOutBufSize == 0;
    for (const std::uint8_t* buffer : job.Mem.pPassBuffer) freed &= buffer == nullptr;
    for (const qrn::Swath& slot : job.swathQueue) freed &= slot.pSwathData == nullptr;
    Expect(freed, name, "a buffer is left");
    Expect(job.hDevice == 0 && job.hTxThread == 0, name, "a handle is left in the record");
    Expect(job.bTxRun == 0 && job.bTxEnd == 1, name,
           "run flags " + std::to_string(job.bTxRun) + "-" + std::to_string(job.bTxEnd));
    Expect(job.nCmdState == 0 || run.Logged("强行退出TX线程"), name,
           "mailbox state " + std::to_string(job.nCmdState));
    Expect(job.nSwathLimit == 0xFFFFFFFF && job.bLogOn == 1, name, "swath limit or log flag");
    Expect(job.bPrnCancel <= job.bCancelLatch, name, "a cancel without the latch");
    if (!Printed(run)) return;
    Expect(run.heap.taken > 0, name, "no memory was counted");
    Expect(job.queueUsed == 0, name, std::to_string(job.queueUsed) + " slots are left in use");
    Expect(job.swathCount == run.stats.swaths, name,
           std::to_string(job.swathCount) + " swaths made, " + std::to_string(run.stats.swaths) +
               " accepted");
    Expect(job.feedLine <= job.nHeight, name, "fed past the image");
    Expect(run.stats.jobsEnded >= 1, name, "the printer knows of no end");
  }

  void CheckPlanned() {
    const SimJobRun& run = run_.planned;
    if (Printed(run)) {
      Expect(run.job.linesReceived == run.host.linesTaken, "planned",
             std::to_string(run.job.linesReceived) + " lines received, " +
                 std::to_string(run.host.linesTaken) + " handed over");
    } else {
      const Outcome outcome = OutcomeOf(plan_, run);
      Expect(IsAllowed(plan_, run, outcome), "planned",
             std::string(NameOf(outcome)) + ", which nothing of the plan leads to");
    }
    if (!IsHarmless(plan_)) return;
    Expect(Printed(run), "planned", "not printed, though nothing should have kept it");
    Expect(run.boxes.empty(), "planned", "a box, though nothing was wrong");
  }

  // The clean job makes the same swaths: but for what befalls it the planned one takes no longer.
  void CheckTime() {
    const SimJobRun& run = run_.planned;
    if (AltersPage(plan_)) return;  // perhaps in more passes
    // A poll each for the three commands, for the stop and for the swaths that are left.
    std::uint64_t bound = run_.next.elapsedMs + 5 * kPollMs;
    for (const auto& quirk : plan_.Script()) bound += EffectOf(quirk, plan_).costMs;
    if (plan_.restEveryLines != 0)
      bound += std::uint64_t{plan_.linesHanded / plan_.restEveryLines} * plan_.restMs;
    if (plan_.Makes(kNoEnd) && plan_.restEveryLines != 0) bound += plan_.restMs;
    bound += run.latencyMs + run.boxes.size() * std::uint64_t{plan_.boxOpenMs};
    if (run.patienceLost) bound += ReconnectMs(plan_);
    // The next start does not get beyond its connect; its thread then ends within a second.
    if (plan_.Makes(kNoEnd)) bound += kFailedStartMs;
    if (run.Logged("强行退出TX线程")) bound += kForcedEndMs;
    Expect(run.elapsedMs <= bound, "planned",
           std::to_string(run.elapsedMs) + " ms, at most " + std::to_string(bound) +
               " as a clean job takes " + std::to_string(run_.next.elapsedMs));
  }

  // Whether line intake ended with a flush: the stream always does, lines do with the last one.
  bool Flushed() const { return !plan_.lineApi || run_.planned.host.linesTaken == plan_.lines; }

  // In the line family each call behind the last line flushes again. What a machine that cannot
  // print this page right has left in its buffers may come out then.
  bool MayPrintLeftovers() const {
    return plan_.lineApi && run_.planned.host.linesBehind != 0 &&
           run_.next.comparison.unreachedCells != 0;
  }

  // Both jobs make the same page, so what the printer accepted is how the clean job begins.
  void CheckSwaths() {
    const auto& planned = run_.planned;
    const auto& next = run_.next;
    if (AltersPage(plan_)) return;
    if (plan_.Makes(kBadJob)) {
      Expect(planned.stats.swaths == 0, "planned", "swaths of a job that no printer takes");
      return;
    }
    Expect(planned.stats.swaths <= next.swaths.size() || MayPrintLeftovers(), "planned",
           std::to_string(planned.stats.swaths) + " swaths, " + std::to_string(next.swaths.size()) +
               " in a clean job");
    const std::size_t both = std::min<std::size_t>(planned.stats.swaths, next.swaths.size());
    for (std::size_t i = 0; i < std::min(both, planned.swaths.size()); ++i) {
      const SentSwath &a = planned.swaths[i], &b = next.swaths[i];
      if (Comparable(plan_, a) == Comparable(plan_, b) && a.dataBytes == b.dataBytes &&
          a.dataDigest == b.dataDigest) {
        continue;
      }
      Complain("planned", "swath " + std::to_string(i + 1) + " is not that of a clean job");
      return;
    }
    if (Printed(planned) && Flushed() && !MayPrintLeftovers()) {
      Expect(
          planned.stats.swaths == next.stats.swaths, "planned",
          std::to_string(planned.stats.swaths) + " swaths of " + std::to_string(next.stats.swaths));
    }
  }

  // A machine that cannot print this page right is known by the clean job's comparison.
  void CheckPaper() {
    const auto& next = run_.next.comparison;
    Expect(next.differingCells == 0 || next.incomparable, "next", next.firstDifference);
    if (next.incomparable || AltersPage(plan_)) return;
    const auto& planned = run_.planned.comparison;
    Expect(planned.overInkedCells == 0, "planned",
           "too much ink in " + std::to_string(planned.overInkedCells) + " cells, first " +
               planned.firstDifference);
    if (Printed(run_.planned) && Flushed())
      Expect(planned.differingCells == 0, "planned", planned.firstDifference);
  }

  void CheckNext() {
    const SimJobRun& run = run_.next;
    Expect(run.host.startResult == 1 && Printed(run), "next", "not printed");
    Expect(run.boxes.empty(), "next", "a box");
    Expect(run.stats.jobsCreated == 1 && run.stats.jobsEnded == 1, "next", "jobs at the printer");
    Expect(run.job.linesReceived == plan_.lines, "next", "lines received");
    Expect(run.stats.swaths == run.swaths.size(), "next", "swaths refused");
  }

  const SimPlan& plan_;
  const SimRun& run_;
  std::vector<std::string> faults_;
};

}  // namespace

Outcome OutcomeOf(const SimPlan& plan, const SimJobRun& run) {
  if (run.Logged("强行退出TX线程")) return Outcome::kForced;
  if (plan.Makes(kNoEnd)) return Outcome::kSkipped;
  if (run.job.nErrCode == 17) return Outcome::kLinkGivenUp;
  if (run.job.nErrCode != 0) return Outcome::kError;
  if (run.job.bCancelLatch != 0) return Outcome::kCancelled;
  if (run.Logged("Create Tx thread fail!!!")) return Outcome::kNoThread;
  if (run.Logged("FW错误 REPLY FAIL")) return Outcome::kRefused;
  return Outcome::kPrinted;
}

const char* NameOf(Outcome outcome) {
  constexpr std::array<const char*, static_cast<std::size_t>(Outcome::kCount)> kNames = {
      "printed", "cancelled", "link given up", "refused",
      "error",   "no thread", "skipped end",   "forced end"};
  return kNames[static_cast<std::size_t>(outcome)];
}

std::vector<std::string> CheckRun(const SimPlan& plan, const SimRun& run) {
  return Checker(plan, run).Run();
}
