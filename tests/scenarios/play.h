// Plays a scenario and makes the transcript of it.
#ifndef QRN_TESTS_SCENARIOS_PLAY_H_
#define QRN_TESTS_SCENARIOS_PLAY_H_

#include <string>
#include <vector>

#include "scenarios/scenario.h"

namespace scenarios {

// All that a run gives, in order.
struct Entry {
  enum Kind : char {
    kLog = 'L',     // a line of the log
    kSaid = 'S',    // a box, or what the host says
    kRecord = 'R',  // "name value" of the record
    kResult = 'T',  // what came of a job
  };
  Kind kind = kResult;
  std::uint32_t ms = 0;  // since the start of the scenario; of the first two
  std::string text;
};
using Run = std::vector<Entry>;

// Plays the jobs in this process, with the library as it was left by those before. Throws
// TimeLimitPassed.
Run Play(const Scenario& scenario);

// The transcript: what the good run of the same jobs gives, too, is left out of the log and the
// record. Where nothing is to be left out, `good` is null.
std::vector<std::string> TranscriptOf(const Run& run, const Run* good);

}  // namespace scenarios

#endif  // QRN_TESTS_SCENARIOS_PLAY_H_
