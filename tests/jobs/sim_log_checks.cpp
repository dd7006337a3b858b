#include "jobs/sim_log_checks.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <sstream>

#include "diag/driver_error.h"
#include "diag/error_texts.h"
#include "support/log_text.h"

namespace {

constexpr std::uint8_t kLinkGivenUp = 17;
constexpr const char* kForced = "强行退出TX线程";
constexpr int kForcedDelayMs = 20'200;  // 202 polls of 100 ms

std::vector<std::string> LinesOf(const std::string& log) {
  std::vector<std::string> lines;
  std::istringstream stream(log);
  for (std::string line; std::getline(stream, line);) {
    if (!line.empty()) lines.push_back(line);
  }
  return lines;
}

std::size_t LinesLike(const std::vector<std::string>& lines, const std::string& whole) {
  return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), whole));
}

void ExpectCount(const std::string& log, const std::string& text, std::size_t least,
                 std::size_t most, const Complain& complain) {
  const std::size_t count = CountOf(log, text);
  if (count >= least && count <= most) return;
  complain("\"" + text + "\" stands " + std::to_string(count) + " times in the log, not " +
           std::to_string(least) + ".." + std::to_string(most));
}

void CheckOpening(const std::string& log, const std::vector<std::string>& lines, bool printed,
                  const Complain& complain) {
  ExpectCount(log, "Lanternfly", 1, 1, complain);
  ExpectCount(log, "V2.07 (18)", 1, 1, complain);
  ExpectCount(log, "Link Start 300-1", printed ? 1 : 0, 1, complain);
  std::size_t before = 1;
  for (const char* line : {"Connect", "Job create", "Job start"}) {
    const std::size_t count = LinesLike(lines, line);
    if (count > before) complain(std::string(line) + " stands there without the line before it");
    if (printed && count != 1) complain(std::string(line) + " does not stand there");
    before = std::min<std::size_t>(count, 1);
  }
}

// Swaths are created once each, in order, and reported as sent at most once; attempts at one swath
// are numbered upwards from 0.
void CheckSwathLines(const std::vector<std::string>& lines, const Complain& complain) {
  int created = 0;
  std::map<int, int> sent, attempts;
  for (const std::string& line : lines) {
    int number = 0, attempt = 0;
    if (std::sscanf(line.c_str(), "Create Swath%d,", &number) == 1) {
      if (number <= created) complain("log out of order: " + line);
      created = number;
    } else if (std::sscanf(line.c_str(), "Swath%d sended:", &number) == 1) {
      if (++sent[number] > 1) complain("twice in the log: " + line);
    } else if (std::sscanf(line.c_str(), "Tx Swath%d(%d)", &number, &attempt) == 2 ||
               std::sscanf(line.c_str(), "Tx empty Swath%d(%d)", &number, &attempt) == 2) {
      // One that a lost link cut off is repeated under its number.
      const int before = attempts.emplace(number, -1).first->second;
      if (attempt < before || attempt > before + 1) complain("attempts out of order: " + line);
      attempts[number] = attempt;
    }
  }
}

void CheckClosing(const SimJobRun& run, const std::string& log, bool printed,
                  const Complain& complain) {
  const std::size_t ends = run.host.endCalls;  // none: the next start has ended the job
  ExpectCount(log, "jobend: ", ends, ends, complain);
  ExpectCount(log, "All swath sended!", ends, ends, complain);
  if (ends != 0) ExpectCount(log, "mem: free --", ends, ends, complain);
  ExpectCount(log, kForced, 0, 1, complain);
  const bool forced = CountOf(log, kForced) != 0;
  const std::size_t threads = CountOf(log, "Link Start 300-1");
  ExpectCount(log, "Task end(", forced ? 0 : threads, threads, complain);
  if (printed) ExpectCount(log, "Task end(2)!", 1, 1, complain);
  if (run.job.bJobEndRx == 1 && ends != 0) ExpectCount(log, "Rx 作业结束", 1, SIZE_MAX, complain);
  int delayMs = 0;
  const std::size_t at = log.find(kForced);
  if (!forced) return;
  if (std::sscanf(log.c_str() + at + std::string(kForced).size(), ",delay:%dms", &delayMs) != 1 ||
      delayMs != kForcedDelayMs) {
    complain("ended by force after " + std::to_string(delayMs) + " ms");
  }
}

void CheckLinkLosses(const std::string& log, const Complain& complain) {
  const std::size_t losses = CountOf(log, "\n重新连接...");
  const std::size_t back = CountOf(log, "连接1成功!") + CountOf(log, "连接2成功!") +
                           CountOf(log, "连接3成功!") + CountOf(log, "连接4成功!");
  ExpectCount(log, "\n重新连接失败!", 0, 1, complain);
  const std::size_t givenUp = CountOf(log, "\n重新连接失败!");
  // A thread may be ended by force while its first box is still open.
  if (CountOf(log, "\n连接失败") != givenUp && CountOf(log, kForced) == 0)
    complain("the link was given up, but not in both places");
  const bool manyTimes = CountOf(log, "连接5成功!") != 0;
  if (!manyTimes && CountOf(log, kForced) == 0 && losses != back + givenUp) {
    complain(std::to_string(losses) + " link losses, " + std::to_string(back) + " mended, " +
             std::to_string(givenUp) + " given up");
  }
}

// The code whose text in this language it is; -1 = none.
int CodeOf(const std::string& text, bool chinese) {
  for (std::uint32_t code = 0; code < qrn::kErrorCodes; ++code) {
    char slot[qrn::kErrorSlotBytes];
    qrn::CopyErrorText(code, chinese, slot);
    if (text == slot) return static_cast<int>(code);
  }
  return -1;
}

}  // namespace

std::size_t CountOf(const std::string& log, const std::string& text) {
  std::size_t count = 0;
  for (std::size_t at = log.find(text); at != std::string::npos; at = log.find(text, at + 1))
    ++count;
  return count;
}

void CheckLogLines(const SimPlan& plan, const SimJobRun& run, bool printed,
                   const Complain& complain) {
  if (run.logs.empty()) {
    complain("no log");
    return;
  }
  const std::string& log = run.logs[0];
  const std::vector<std::string> lines = LinesOf(log);
  CheckOpening(log, lines, printed, complain);
  CheckSwathLines(lines, complain);
  CheckClosing(run, log, printed, complain);
  CheckLinkLosses(log, complain);
  const bool badLines = run.host.badLines != 0;
  ExpectCount(log, "AddLine: unusable line", printed && badLines ? 1 : 0,
              badLines || plan.Makes(kBadJob) ? 1 : 0, complain);
  ExpectCount(log, "Queue ready Error overflow", 0, 0, complain);
}

void CheckErrors(const SimPlan& plan, const SimJobRun& run, const Complain& complain) {
  std::string log;
  for (const std::string& part : run.logs) log += part;
  std::size_t at = 0;
  int recorded = 0;
  for (const std::string& box : run.boxes) {
    const int code = CodeOf(box, plan.chinese);
    if (code < 0) complain("a box in no language or the wrong one: " + CodePageToUtf8(box));
    if (recorded != kLinkGivenUp) recorded = code;
    std::string text = "Error: " + CodePageToUtf8(box);
    text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
    const std::size_t found = log.find(text, at);
    if (found == std::string::npos) complain("no log line, or out of order: " + text);
    at = found == std::string::npos ? at : found + text.size();
  }
  if (CountOf(log, "Error: ") != run.boxes.size())
    complain("errors in the log: " + std::to_string(CountOf(log, "Error: ")) +
             ", boxes: " + std::to_string(run.boxes.size()));
  if (run.host.endCalls != 0 && run.job.nErrCode != recorded) {
    complain("recorded code " + std::to_string(run.job.nErrCode) + ", shown last " +
             std::to_string(recorded));
  }
}
