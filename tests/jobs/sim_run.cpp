#include "jobs/sim_run.h"

#include <algorithm>
#include <memory>

#include "jobs/job_runner.h"
#include "sim/sim_platform.h"
#include "support/log_text.h"

namespace {

std::string WithoutReturns(std::string text) {
  text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
  return text;
}

// All but the paper.
void TakeDown(SimWorld& world, const LogFolder& folder, std::size_t logsBefore, SimJobRun* run) {
  run->job = qrn::GetJob();
  run->stats = world.Printer().Stats();
  run->violation = world.Printer().Violation();
  run->swathFault = world.SwathFault();
  run->swaths = world.Swaths();
  run->boxes = world.Boxes();
  run->elapsedMs = world.ElapsedMs();
  run->latencyMs = world.LatencyMs();
  run->liveThreads = world.LiveThreads();
  run->openDevices = world.OpenDevices();
  run->patienceLost = world.PatienceLost();
  run->heap = TheLibraryHeap();
  Digest digest;
  digest.Add(world.LineDigest());
  digest.Add(run->elapsedMs);
  const std::vector<std::string> logs = folder.Logs();
  for (std::size_t i = logsBefore; i < logs.size(); ++i) {
    digest.Add(logs[i].data(), logs[i].size());
    run->logs.push_back(WithoutReturns(CodePageToUtf8(logs[i])));
  }
  run->digest = digest.Value();
}

template <class Host>
void PlayWithin(const char* job, SimRun* run, Host host) {
  try {
    host();
  } catch (const qrn::sim::TimeLimitPassed& passed) {
    run->overTime = true;
    run->overTimeJob = job;
    run->overTimeText = passed.what();
  }
}

}  // namespace

bool SimJobRun::Logged(const std::string& text) const {
  return !logs.empty() && logs[0].find(text) != std::string::npos;
}

SimRun RunPlan(const SimPlan& plan) {
  const LogFolder folder;
  SimRun run;
  const Page image = DrawPage(plan);
  Page page(image.Lines(), image.LineBytes());
  SimWorld world(plan, plan.Script(), plan.seed);
  PlayWithin("planned", &run, [&] {
    run.planned.host = SimHost(plan, world, plan.lineApi).PrintAsPlanned(image, &page);
  });
  TakeDown(world, folder, 0, &run.planned);
  if (run.overTime) return run;

  SimPlan clean = plan;
  clean.noThread = false;
  clean.quirks.clear();
  SimWorld cleanWorld(clean, {}, plan.seed ^ 0xC1EA);
  PlayWithin("next", &run, [&] {
    run.next.host = SimHost(clean, cleanWorld, plan.nextLineApi).PrintClean(page);
  });
  TakeDown(cleanWorld, folder, run.planned.logs.size(), &run.next);
  if (run.overTime) return run;

  if (cleanWorld.Printer().ResolutionX() != 0) {
    run.next.comparison =
        Compare(page, cleanWorld.Printer().CurrentPaper(), plan.machine, plan.resolution);
  }
  if (world.Printer().ResolutionX() != 0) {
    run.planned.comparison = CompareCalibrated(page, world.Printer().CurrentPaper(), plan.machine,
                                               plan.resolution, run.next.comparison);
  }
  return run;
}
