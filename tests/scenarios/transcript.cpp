// What of a run stands in its transcript.
#include <cstdint>
#include <string>
#include <vector>

#include "scenarios/difference.h"
#include "scenarios/play.h"

namespace scenarios {
namespace {

constexpr std::size_t kLineChars = 100;
constexpr std::size_t kZerosMax = 8;

// The log of a run, with what is to be left out.
struct Log {
  explicit Log(const Run& run) {
    std::uint32_t beforeMs = 0;
    for (const Entry& entry : run) {
      if (entry.kind != Entry::kLog) continue;
      texts.push_back(entry.text);
      waits.push_back(entry.ms - beforeMs);
      beforeMs = entry.ms;
    }
  }

  std::vector<std::string> texts;
  std::vector<std::uint32_t> waits;  // since the line before
};

// For each line of the run's log, whether it stands in the good run's, too, and as long after the
// line before.
std::vector<bool> PlainLines(const Run& run, const Run& good) {
  const Log log(run), goodLog(good);
  std::vector<bool> plain(log.texts.size());
  for (const auto& [at, goodAt] : CommonLines(log.texts, goodLog.texts))
    plain[at] = log.waits[at] == goodLog.waits[goodAt];
  return plain;
}

std::string Timed(const Entry& entry) { return "+" + std::to_string(entry.ms) + " " + entry.text; }

// "name 0", or "name 0/0/0".
bool IsZero(const std::string& field) {
  return field.find_first_not_of("0/", field.find(' ') + 1) == std::string::npos;
}

class Transcript {
 public:
  Transcript(const Run& run, const Run* good) : run_(run), good_(good) {
    if (good != nullptr) plain_ = PlainLines(run, *good);
  }

  std::vector<std::string> Lines() {
    for (const Entry& entry : run_) Take(entry);
    EndRecord();
    return std::move(lines_);
  }

 private:
  void Take(const Entry& entry) {
    if (entry.kind == Entry::kRecord) {
      TakeRecord(entry);
      return;
    }
    EndRecord();
    if (entry.kind == Entry::kLog) {
      TakeLog(entry);
    } else {
      lines_.push_back(entry.kind == Entry::kSaid ? Timed(entry) : entry.text);
    }
  }

  // A line that is left out is shown all the same in front of one that is not: there the run left
  // the good one's path.
  void TakeLog(const Entry& entry) {
    const std::size_t at = logAt_++;
    if (good_ != nullptr && plain_[at]) {
      before_ = &entry;
      return;
    }
    if (before_ != nullptr) lines_.push_back(Timed(*before_));
    before_ = nullptr;
    lines_.push_back(Timed(entry));
  }

  void TakeRecord(const Entry& entry) {
    if (good_ != nullptr && NextOfGood(entry.text)) return;
    (IsZero(entry.text) ? zeros_ : others_).push_back(entry.text);
  }

  // The records of both runs have the same fields, job by job.
  bool NextOfGood(const std::string& text) {
    while (goodAt_ < good_->size() && (*good_)[goodAt_].kind != Entry::kRecord) ++goodAt_;
    return goodAt_ < good_->size() && (*good_)[goodAt_++].text == text;
  }

  // Of a job that never was, little but zeros is left.
  void EndRecord() {
    if (good_ != nullptr && zeros_.size() > kZerosMax)
      zeros_ = {std::to_string(zeros_.size()) + " others 0"};
    others_.insert(others_.end(), zeros_.begin(), zeros_.end());
    std::string line;
    for (const std::string& field : others_) {
      if (!line.empty() && line.size() + field.size() + 2 > kLineChars) {
        lines_.push_back(line);
        line.clear();
      }
      line += (line.empty() ? "record  " : ", ") + field;
    }
    if (!line.empty()) lines_.push_back(line);
    others_.clear();
    zeros_.clear();
  }

  const Run& run_;
  const Run* good_;
  std::vector<bool> plain_;
  std::size_t logAt_ = 0, goodAt_ = 0;
  const Entry* before_ = nullptr;
  std::vector<std::string> others_, zeros_;  // fields of the record
  std::vector<std::string> lines_;
};

}  // namespace

std::vector<std::string> TranscriptOf(const Run& run, const Run* good) {
  return Transcript(run, good).Lines();
}

}  // namespace scenarios
