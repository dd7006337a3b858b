// Runs whole jobs through the exports on a virtual printer in virtual time, and tells what came of
// them.
#ifndef QRN_TESTS_JOBS_JOB_RUNNER_H_
#define QRN_TESTS_JOBS_JOB_RUNNER_H_

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "jobs/log_folder.h"
#include "platform/platform.h"
#include "sim/compare.h"
#include "sim/machine.h"
#include "sim/quirks.h"
#include "sim/virtual_printer.h"

// A random image: planes and bands of lines stay blank here and there, the rest holds all drop
// levels.
class RandomImage : public qrn::sim::RasterSource {
 public:
  RandomImage(std::uint32_t widthPixels, std::uint32_t lines, std::uint64_t seed);
  std::uint32_t Lines() const override { return lines_; }
  std::uint32_t LineBytes() const override { return lineBytes_; }
  const std::uint8_t* Line(int plane, std::uint32_t line) const override;

 private:
  std::uint32_t lines_, lineBytes_;
  std::array<std::vector<std::uint8_t>, 8> planes_;
};

struct LineRange {
  std::uint32_t first, end;
};

// Every pixel of some lines at the highest level in every plane, nothing anywhere else.
class SolidImage : public qrn::sim::RasterSource {
 public:
  SolidImage(std::uint32_t widthPixels, std::uint32_t lines, std::vector<LineRange> solid);
  std::uint32_t Lines() const override { return lines_; }
  std::uint32_t LineBytes() const override { return static_cast<std::uint32_t>(full_.size()); }
  const std::uint8_t* Line(int plane, std::uint32_t line) const override;

 private:
  std::uint32_t lines_;
  std::vector<std::uint8_t> full_;
  std::vector<LineRange> solid_;
};

struct JobPlan {
  qrn::sim::Machine machine;
  std::uint32_t resolution = 1440;
  bool lineApi = false;
  std::uint32_t widthPixels = 192;
  std::uint32_t lines = 500;
  std::uint64_t seed = 1;  // of the image and of the scheduling
  qrn::sim::QuirkScript quirks;
  std::vector<LineRange> solid;            // a solid image; none: a random one
  std::uint32_t linesHanded = UINT32_MAX;  // the host stops short behind so many
  std::uint32_t napMs = 0;                 // of the host in front of the end call
  bool skipEndCall = false;
  std::uint64_t limitMs = 7ull * 24 * 3600 * 1000;  // of virtual time
  bool realTime = false;                            // real threads instead of virtual time
  qrn::Platform* watched = nullptr;                 // in front of the platform of real time
};

std::string Describe(const JobPlan& plan);

struct JobOutcome {
  bool started = false;  // PP_Init's result; StartPrint tells nothing and counts as started
  qrn::sim::Comparison comparison;
  qrn::sim::PrinterStats stats;
  std::string violation;
  std::vector<std::string> boxes;
  std::vector<std::vector<std::uint8_t>> transfers;
  std::uint32_t elapsedMs = 0;  // virtual
};

// The transfers with the words set to zero that depend on how many messages went before: number and
// check of each header, check of each packet.
std::vector<std::vector<std::uint8_t>> Unnumbered(std::vector<std::vector<std::uint8_t>> transfers);

// Motor steps of the swaths that only feed, in order.
std::vector<std::uint32_t> FeedOnlySteps(const JobOutcome& outcome);

// Hands the whole image over and ends the job (unless the plan skips that). Needs a LogFolder for
// the log.
JobOutcome RunJob(const JobPlan& plan);

#endif  // QRN_TESTS_JOBS_JOB_RUNNER_H_
