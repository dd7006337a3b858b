// Runs a plan: the planned job, and behind it a clean one of the same page on a printer without
// quirks, which must print perfectly.
#ifndef QRN_TESTS_JOBS_SIM_RUN_H_
#define QRN_TESTS_JOBS_SIM_RUN_H_

#include <string>
#include <vector>

#include "host/job.h"
#include "jobs/heap_watch.h"
#include "jobs/sim_host.h"
#include "jobs/sim_plan.h"
#include "jobs/sim_world.h"
#include "sim/compare.h"

struct SimJobRun {
  HostReport host;
  qrn::Job job;  // as the end call left it
  qrn::sim::PrinterStats stats;
  std::string violation;
  std::string swathFault;
  std::vector<SentSwath> swaths;   // sent whole; the first stats.swaths of them were accepted
  std::vector<std::string> boxes;  // in the code page
  std::vector<std::string> logs;   // UTF-8, without carriage returns
  std::uint64_t elapsedMs = 0;     // virtual
  std::uint64_t latencyMs = 0;     // of its transfers, together
  std::uint32_t liveThreads = 0, openDevices = 0;
  bool patienceLost = false;
  LibraryHeap heap;
  qrn::sim::Comparison comparison;  // of its paper with the page
  std::uint64_t digest = 0;         // of the line and the logs

  bool Logged(const std::string& text) const;
};

struct SimRun {
  bool overTime = false;  // a job did not end within its bound: which, and what the clock said
  const char* overTimeJob = "";
  std::string overTimeText;
  SimJobRun planned, next;
};

SimRun RunPlan(const SimPlan& plan);

#endif  // QRN_TESTS_JOBS_SIM_RUN_H_
