// Whole jobs from seeds. Each runs in a process of its own, so that a seed is the same job alone
// and in a row, and a crash is the failure of its seed.
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <string>

#include "jobs/sim_invariants.h"
#include "jobs/sim_plan.h"
#include "jobs/sim_run.h"

namespace {

constexpr std::uint64_t kReplayEvery = 10;  // seeds; these run twice

// A seed takes a fraction of a second, some ten times that under a sanitizer. One that hangs in
// real time is ended by a signal, so that its plan is told.
constexpr unsigned kSeedSecondsMax = 300;

// What a seed's process tells.
struct Verdict {
  std::uint64_t digest = 0;
  std::uint64_t elapsedMs = 0;
  Outcome outcome = Outcome::kCount;
  std::string faults;  // lines; "" = none
};

void WriteAll(int file, const void* bytes, std::size_t count) {
  const auto* from = static_cast<const char*>(bytes);
  while (count > 0) {
    const ssize_t written = write(file, from, count);
    if (written <= 0) std::_Exit(2);
    from += written;
    count -= static_cast<std::size_t>(written);
  }
}

Verdict Judge(const SimPlan& plan) {
  const SimRun run = RunPlan(plan);
  Verdict verdict;
  verdict.digest = run.planned.digest ^ run.next.digest * 31;
  verdict.elapsedMs = run.planned.elapsedMs;
  verdict.outcome = OutcomeOf(plan, run.planned);
  for (const std::string& fault : CheckRun(plan, run)) verdict.faults += "  " + fault + "\n";
  return verdict;
}

[[noreturn]] void RunChild(const SimPlan& plan, int file) {
  const Verdict verdict = Judge(plan);
  WriteAll(file, &verdict.digest, sizeof verdict.digest);
  WriteAll(file, &verdict.elapsedMs, sizeof verdict.elapsedMs);
  WriteAll(file, &verdict.outcome, sizeof verdict.outcome);
  WriteAll(file, verdict.faults.data(), verdict.faults.size());
  close(file);
  std::exit(0);
}

Verdict RunSeed(const SimPlan& plan) {
  int ends[2];
  if (pipe(ends) != 0) std::exit(2);
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    close(ends[0]);
    alarm(kSeedSecondsMax);
    RunChild(plan, ends[1]);
  }
  close(ends[1]);
  std::string told;
  std::array<char, 4096> buffer;
  for (ssize_t count = 0; (count = read(ends[0], buffer.data(), buffer.size())) > 0;)
    told.append(buffer.data(), static_cast<std::size_t>(count));
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  Verdict verdict;
  constexpr std::size_t kHead = 2 * sizeof(std::uint64_t) + sizeof(Outcome);
  if (told.size() >= kHead) {
    std::memcpy(&verdict.digest, told.data(), 8);
    std::memcpy(&verdict.elapsedMs, told.data() + 8, 8);
    std::memcpy(&verdict.outcome, told.data() + 16, sizeof verdict.outcome);
    verdict.faults = told.substr(kHead);
  }
  if (WIFSIGNALED(status)) {
    verdict.faults += "  died of signal " + std::to_string(WTERMSIG(status));
    if (WTERMSIG(status) == SIGALRM)
      verdict.faults += ": it hung for " + std::to_string(kSeedSecondsMax) + " s";
    verdict.faults += "\n";
  } else if (WEXITSTATUS(status) != 0 || told.size() < kHead) {
    verdict.faults += "  ended with exit code " + std::to_string(WEXITSTATUS(status)) + "\n";
  }
  return verdict;
}

struct Statistics {
  std::uint64_t schedules = 0, failed = 0, replayed = 0, virtualMs = 0;
  std::map<std::string, std::uint64_t> outcomes, quirks, mistakes;
};

void Print(const char* what, const std::map<std::string, std::uint64_t>& counts) {
  std::printf("%s:", what);
  const char* comma = "";
  for (const auto& [name, count] : counts) {
    std::printf("%s %s %llu", comma, name.c_str(), static_cast<unsigned long long>(count));
    comma = ",";
  }
  std::printf("\n");
}

void Print(const Statistics& statistics, double seconds) {
  std::printf(
      "%llu schedules in %.1f s, %llu of them twice, %.1f hours of virtual time; %llu failed\n",
      static_cast<unsigned long long>(statistics.schedules), seconds,
      static_cast<unsigned long long>(statistics.replayed),
      static_cast<double>(statistics.virtualMs) / 3.6e6,
      static_cast<unsigned long long>(statistics.failed));
  Print("outcomes", statistics.outcomes);
  Print("quirks drawn", statistics.quirks);
  Print("mistakes of the host", statistics.mistakes);
}

void TakeSeed(const char* program, std::uint64_t seed, Statistics* statistics) {
  const SimPlan plan = SimPlan::Draw(seed);
  Verdict verdict = RunSeed(plan);
  if (seed % kReplayEvery == 0) {
    ++statistics->replayed;
    if (RunSeed(plan).digest != verdict.digest)
      verdict.faults += "  the same seed gave other bytes or another log\n";
  }
  ++statistics->schedules;
  statistics->virtualMs += verdict.elapsedMs;
  for (const std::string& quirk : plan.quirks)
    ++statistics->quirks[quirk.substr(0, quirk.find(':'))];
  for (const std::string& mistake : plan.MistakeNames()) ++statistics->mistakes[mistake];
  if (verdict.outcome != Outcome::kCount) ++statistics->outcomes[NameOf(verdict.outcome)];
  if (verdict.faults.empty()) return;
  ++statistics->failed;
  std::printf("FAILED %s\n%s  again: %s\n", plan.Text().c_str(), verdict.faults.c_str(),
              plan.RerunLine(program).c_str());
}

// One seed in this process, for a debugger and with its log.
int RunAlone(std::uint64_t seed) {
  const SimPlan plan = SimPlan::Draw(seed);
  std::printf("%s\n", plan.Text().c_str());
  std::fflush(stdout);
  const SimRun run = RunPlan(plan);
  for (const std::string& log : run.planned.logs) std::printf("---- log\n%s", log.c_str());
  const std::vector<std::string> faults = CheckRun(plan, run);
  std::printf("---- %s after %.1f s of virtual time, at most %.1f s\n",
              NameOf(OutcomeOf(plan, run.planned)),
              static_cast<double>(run.planned.elapsedMs) / 1e3,
              static_cast<double>(plan.BoundMs()) / 1e3);
  for (const std::string& fault : faults) std::printf("FAILED %s\n", fault.c_str());
  return faults.empty() ? 0 : 1;
}

// Holds the seeds of a file, one "SEED DIGEST" a line, against what they give now: all bytes on the
// line, all logs and all times of both jobs.
int CompareDigests(const char* name) {
  std::ifstream file(name);
  unsigned long long seed = 0, digest = 0;
  int compared = 0, differing = 0;
  for (; file >> std::dec >> seed >> std::hex >> digest; ++compared) {
    const SimPlan plan = SimPlan::Draw(seed);
    if (RunSeed(plan).digest == digest) continue;
    ++differing;
    std::printf("OTHER BYTES %s\n", plan.Text().c_str());
  }
  std::printf("%d seeds compared, %d differ\n", compared, differing);
  return compared > 0 && differing == 0 ? 0 : 1;
}

void PrintDigests(std::uint64_t first, std::uint64_t last) {
  for (std::uint64_t seed = first; seed <= last; ++seed) {
    std::printf("%llu %016llx\n", static_cast<unsigned long long>(seed),
                static_cast<unsigned long long>(RunSeed(SimPlan::Draw(seed)).digest));
  }
}

int Usage() {
  std::fprintf(stderr,
               "usage: job_sim_test --seeds A..B | --seed=N | --print-digests A..B | "
               "--compare-digests FILE\n");
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  unsigned long long first = 1, last = 2000;
  if (argc == 2 && std::sscanf(argv[1], "--seed=%llu", &first) == 1) return RunAlone(first);
  if (argc == 3 && std::strcmp(argv[1], "--compare-digests") == 0) return CompareDigests(argv[2]);
  const bool ranged =
      argc == 3 && std::sscanf(argv[2], "%llu..%llu", &first, &last) == 2 && first <= last;
  if (ranged && std::strcmp(argv[1], "--print-digests") == 0) {
    PrintDigests(first, last);
    return 0;
  }
  if (argc != 1 && (!ranged || std::strcmp(argv[1], "--seeds") != 0)) return Usage();
  const auto begin = std::chrono::steady_clock::now();
  Statistics statistics;
  for (std::uint64_t seed = first; seed <= last; ++seed) TakeSeed(argv[0], seed, &statistics);
  const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
  Print(statistics, took.count());
  return statistics.failed == 0 ? 0 : 1;
}
