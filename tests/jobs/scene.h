// A scene: one small job in which something goes wrong, and what it must lead to: each line of the
// log with its virtual time, the boxes in the language of the system, what becomes of the lines.
#ifndef QRN_TESTS_JOBS_SCENE_H_
#define QRN_TESTS_JOBS_SCENE_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "jobs/scripted_port.h"
#include "jobs/timed_log.h"
#include "qrn_driver.h"
#include "sim/machine.h"

struct Scene {
  std::vector<Spoiled> script = {};
  qrn::sim::Machine machine = {};
  bool lineApi = true;
  bool allPlanes = false;     // eight swaths in two fours instead of the four of one head's inks
  std::uint32_t farLine = 0;  // has ink like line 0; the paper between them is fed without data
  ScriptedPort::Bus bus = ScriptedPort::Bus::kPlain;
  std::uint32_t localeId = 0x0409;
  std::uint32_t boxOpenMs = 500;
  bool failThreadStart = false;
  void (*describe)(HostJobDesc& desc) = nullptr;  // what the host asks for instead
  std::uint32_t hostNapMs = 0;                    // in front of the end call
  bool skipEndCall = false;                       // a second start ends the job
};

struct Outcome {
  bool started = false;
  std::uint32_t goodLineCalls = 0;  // calls of the line family behind the start that gave 1
  // Of the record, in front of the end call; none where the library shows no record.
  std::optional<std::uint32_t> linesReceived;
  bool linesTaken = false;  // every line handed over, as far as anything of these tells
  bool printedWhole = false;
  std::string violation;
  std::vector<std::string> boxes;  // UTF-8
  std::vector<LogLine> log;
  std::uint32_t swathsTaken = 0;
};

// Plays the scene on virtual time. Whatever happened: no thread, no device and no buffer is left.
Outcome Play(const Scene& scene);

// A line that a log must hold. Its time counts from the first expected one; kAnyTime where it hangs
// on the scheduling.
constexpr std::uint32_t kAnyTime = UINT32_MAX;
struct Expected {
  std::uint32_t ms;
  std::string text;  // "*" at its end stands for any rest; "Error: N" for the text of error N
};

// The log from the first expected line to the last holds these lines and no other, but for those
// that tell how a good job is set up and cut into passes.
testing::AssertionResult Tells(const std::vector<LogLine>& log,
                               const std::vector<Expected>& expected, bool chinese = false);

// The texts of these errors, as boxes show them.
std::vector<std::string> BoxesOf(const std::vector<int>& errors, bool chinese = false);

#endif  // QRN_TESTS_JOBS_SCENE_H_
