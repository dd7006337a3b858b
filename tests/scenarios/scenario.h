// A scenario: whole jobs written as text, what goes wrong in them, and the transcript that they
// lead to. docs/testing.md explains the language.
#ifndef QRN_TESTS_SCENARIOS_SCENARIO_H_
#define QRN_TESTS_SCENARIOS_SCENARIO_H_

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "qrn_driver.h"
#include "sim/machine/machine.h"
#include "sim/quirks/quirks.h"
#include "sim/time/sim_platform.h"

namespace scenarios {

// One thing that the host does.
struct HostStep {
  enum What {
    kStart,
    kLines,  // hands over the next `count` lines
    kCall,   // PP_SendALineAColorData for colour `count`
    kWrite,  // WriteRipData, `count` times
    kRest,   // sleeps for `count` ms
    kEnd,
    kAsk,  // the exports that do nothing and those that only answer
  };
  What what = kStart;
  std::uint32_t count = 0;
  std::optional<std::uint32_t> bytes = {};  // in place of the length of a line
  bool null = false;                        // no line at all
  std::uint32_t restMs = 0;                 // after each line
};

struct LineRange {
  std::uint32_t first, last;
};

// What is on the page: pixels at the highest level, or at random ones.
struct Image {
  std::uint32_t colors = 0xFF;  // of the ink on `lines`, a bit each
  std::vector<LineRange> lines = {};
  bool random = false;
  std::uint64_t seed = 1;
};

struct Job {
  bool lineFamily = true;
  std::uint32_t width = 0, height = 0;  // of the page, in pixels and lines
  Image image;
  std::optional<HostJobDesc> desc;  // none: the host gives no description
  bool misdescribed = false;        // it is not the page's
  std::vector<HostStep> host;
  std::vector<std::string> like;  // the words of the good job, where none is named: this one's
};

struct Scenario {
  Scenario() { system.limitMs = 2 * 3600 * 1000; }

  std::string title;                // what it shows
  std::vector<std::string> lines;   // below the title, as they are
  std::vector<std::string> wanted;  // the transcript

  std::vector<Job> jobs;
  qrn::sim::Machine machine;
  qrn::sim::QuirkScript quirks;
  qrn::sim::SimOptions system;
  bool logFolder = true;

  // Nothing but one good job: it is held against no other.
  bool IsGood() const { return lines.size() == 1 && !jobs[0].misdescribed; }
};

// Reads `lines`. False, with a reason, where they make no scenario.
bool Understand(Scenario* scenario, std::string* error);

// The good job that a job's transcript is held against.
Scenario GoodOf(const Job& job);

struct File {
  std::filesystem::path path;
  std::vector<std::string> preamble;  // before the first title
  std::vector<Scenario> scenarios;
};

// False, with a reason, when it cannot be read or holds something else.
bool Load(const std::filesystem::path& path, File* file, std::string* error);
// Writes it anew, with the transcripts that the scenarios have now.
bool Save(const File& file);

}  // namespace scenarios

#endif  // QRN_TESTS_SCENARIOS_SCENARIO_H_
