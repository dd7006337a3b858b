// Plays scenarios. A run is all that comes of one, in order; the transcript is what people read of
// it.
#ifndef QRN_TESTS_SCENARIOS_PLAY_H_
#define QRN_TESTS_SCENARIOS_PLAY_H_

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "scenarios/scenario.h"

namespace scenarios {

struct Entry {
  enum Kind : char {
    kLogBegins = 'B',  // the log of a start; which job's, counted from 0
    kLog = 'L',        // a line of it
    kSaid = 'S',       // a box, or what the host says
    kRecord = 'R',     // "name value" of the record
    kResult = 'T',     // what came of the job
  };
  Kind kind = kResult;
  std::uint32_t ms = 0;  // since the start of the scenario; of the first three
  std::string text;
};
using Run = std::vector<Entry>;

// Plays it in this process, with the library as the job before has left it. A run that takes too
// much virtual time is broken off, and the library cannot be used after that.
Run Play(const Scenario& scenario);

// Plays it with a library that is just loaded: what outlives a job matters only where a scenario
// has several. A run that ends its process says so.
Run PlayApart(const Scenario& scenario);

// What comes of it in a process of its own; one that ends early says so. Not on Windows.
Run InChild(const std::function<Run()>& play);

// Names and values of what is in the record now, always the same names in the same order; none
// where the library under test is a file of its own, which shows no record.
std::vector<std::pair<std::string, std::string>> RecordFields();

// What the good runs of its jobs, one each, give too is left out of log and record; without them,
// nothing.
std::vector<std::string> TranscriptOf(const Run& run, const std::vector<const Run*>& good);

// Both as one: after a "-" lines that only the first has, after a "+" those of the second.
std::string Difference(const std::vector<std::string>& wanted,
                       const std::vector<std::string>& found);

}  // namespace scenarios

#endif  // QRN_TESTS_SCENARIOS_PLAY_H_
