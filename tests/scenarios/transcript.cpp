// What people read of a run.
#include <algorithm>
#include <cctype>
#include <cstdlib>

#include "scenarios/play.h"

namespace scenarios {
namespace {

constexpr std::size_t kLineChars = 100, kZerosMax = 8;
constexpr std::size_t kFewLines = 20, kAlikeMax = 3;

using Text = std::vector<std::string>;
using Places = std::vector<std::pair<std::size_t, std::size_t>>;

// Places of the lines that both have, in order: as many as can be.
Places CommonLines(const Text& a, const Text& b) {
  // How many lines the tails from there on have in common.
  std::vector<std::vector<std::size_t>> common(a.size() + 1,
                                               std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = a.size(); i-- > 0;) {
    for (std::size_t j = b.size(); j-- > 0;) {
      common[i][j] =
          a[i] == b[j] ? common[i + 1][j + 1] + 1 : std::max(common[i + 1][j], common[i][j + 1]);
    }
  }
  Places places;
  for (std::size_t i = 0, j = 0; i < a.size() && j < b.size();) {
    if (a[i] == b[j]) {
      places.emplace_back(i++, j++);
    } else if (common[i + 1][j] >= common[i][j + 1]) {
      ++i;
    } else {
      ++j;
    }
  }
  return places;
}

// The lines of the log that begins there, and how long after the line before each was written.
struct Log {
  Log(const Run& run, std::size_t begin) {
    std::uint32_t beforeMs = begin < run.size() ? run[begin].ms : 0;
    for (std::size_t i = begin + 1; i < run.size() && run[i].kind != Entry::kLogBegins; ++i) {
      if (run[i].kind != Entry::kLog) continue;
      texts.push_back(WithoutClock(run[i].text));
      waits.push_back(run[i].ms - beforeMs);
      beforeMs = run[i].ms;
    }
  }

  // Two lines give the time of day, which differs wherever something has cost time.
  static std::string WithoutClock(const std::string& line) {
    const std::string last = line.substr(line.rfind(' ') + 1);
    const bool isClock = std::count(last.begin(), last.end(), ':') == 2 &&
                         last.find_first_not_of("0123456789:") == std::string::npos;
    return line.substr(0, line.size() - (isClock ? last.size() : 0));
  }

  Text texts;
  std::vector<std::uint32_t> waits;
};

// Which lines of a log are shown: those that the good run's log lacks or that come earlier or later
// after the line before than there. Before them the line is shown where the run left the good one's
// path; and of all that follows where it has come back to it, the first and the last.
std::vector<bool> ShownLines(const Log& log, const Log& good) {
  const std::size_t count = log.texts.size();
  const Places common = CommonLines(log.texts, good.texts);
  std::vector<bool> odd(count, true), shown(count, false);
  for (const auto& [at, goodAt] : common) odd[at] = log.waits[at] != good.waits[goodAt];
  std::size_t back = count, goodBack = good.texts.size();
  for (auto place = common.rbegin(); place != common.rend(); ++place) {
    if (*place != std::make_pair(back - 1, goodBack - 1)) break;
    --back, --goodBack;
  }
  bool isBack = false;
  for (std::size_t i = 0; i < count; ++i) {
    if (!odd[i]) continue;
    if (isBack || (i > back && back != 0)) {
      shown[count - 1] = true;
      break;
    }
    shown[i] = true;
    if (i > 0) shown[i - 1] = true;
    isBack = i >= back;
  }
  return shown;
}

struct Shown {
  std::string text;
  std::string shape;  // of a line of a log: the text without its numbers
};

// A line such as one of the few before it.
bool IsAlike(const std::vector<Shown>& lines, std::size_t at) {
  const auto line = lines.begin() + static_cast<std::ptrdiff_t>(at);
  const auto few = static_cast<std::ptrdiff_t>(std::min(at, kFewLines));
  return !line->shape.empty() && std::any_of(line - few, line, [&line](const Shown& before) {
    return before.shape == line->shape;
  });
}

// Where a log goes on and on like that, its last line and a count replace it.
Text Shortened(const std::vector<Shown>& lines) {
  Text text;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    std::size_t end = i;
    while (end < lines.size() && IsAlike(lines, end)) ++end;
    if (end - i > kAlikeMax) {
      text.push_back("... " + std::to_string(end - i - 1) + " more like these");
      i = end - 1;
    }
    text.push_back(lines[i].text);
  }
  return text;
}

// The next record from there on.
Text RecordOf(const Run& run, std::size_t begin) {
  Text fields;
  for (std::size_t i = begin; i < run.size(); ++i) {
    if (run[i].kind == Entry::kRecord) {
      fields.push_back(run[i].text);
    } else if (!fields.empty()) {
      break;
    }
  }
  return fields;
}

class Transcript {
 public:
  Transcript(const Run& run, const std::vector<const Run*>& good) : run_(run), good_(good) {}

  Text Lines() {
    for (std::size_t i = 0; i < run_.size(); ++i) {
      const Entry& entry = run_[i];
      switch (entry.kind) {
        case Entry::kLogBegins:
          BeginLog(i);
          break;
        case Entry::kLog:
          TakeLog(entry);
          break;
        case Entry::kSaid:
          lines_.push_back({Timed(entry), ""});
          break;
        case Entry::kRecord:
          if (i == 0 || run_[i - 1].kind != Entry::kRecord) TakeRecord(RecordOf(run_, i));
          break;
        case Entry::kResult:
          lines_.push_back({entry.text, ""});
          break;
      }
    }
    return Shortened(lines_);
  }

 private:
  static std::string Timed(const Entry& entry) {
    return "+" + std::to_string(entry.ms) + " " + entry.text;
  }

  void BeginLog(std::size_t begin) {
    const Log log(run_, begin);
    at_ = 0;
    shown_.assign(log.texts.size(), true);
    if (good_.empty()) return;
    const auto job = static_cast<std::size_t>(std::atoi(run_[begin].text.c_str()));
    shown_ = ShownLines(log, Log(*good_[job], 0));
  }

  void TakeLog(const Entry& entry) {
    if (!shown_[at_++]) return;
    std::string shape = entry.text;
    std::erase_if(shape, [](unsigned char c) { return std::isdigit(c) != 0; });
    lines_.push_back({Timed(entry), shape});
  }

  // A job that never began leaves little except zeros.
  void TakeRecord(Text fields) {
    if (!good_.empty()) {
      const Text good = RecordOf(*good_[records_++], 0);
      std::erase_if(fields, [&good](const std::string& field) {
        return std::find(good.begin(), good.end(), field) != good.end();
      });
      const auto zeros = std::stable_partition(fields.begin(), fields.end(), IsNotZero);
      const auto count = static_cast<std::size_t>(fields.end() - zeros);
      if (count > kZerosMax) {
        fields.erase(zeros, fields.end());
        fields.push_back(std::to_string(count) + " others 0");
      }
    }
    std::string line;
    for (const std::string& field : fields) {
      if (line.size() + field.size() + 2 > kLineChars)
        lines_.push_back({std::exchange(line, ""), ""});
      line += (line.empty() ? "record  " : ", ") + field;
    }
    if (!line.empty()) lines_.push_back({line, ""});
  }

  // "name 0" and "name 0/0/0" are.
  static bool IsNotZero(const std::string& field) {
    return field.find_first_not_of("0/", field.find(' ') + 1) != std::string::npos;
  }

  const Run& run_;
  const std::vector<const Run*>& good_;
  std::vector<bool> shown_;  // of the lines of the log in hand
  std::size_t at_ = 0, records_ = 0;
  std::vector<Shown> lines_;
};

}  // namespace

Text TranscriptOf(const Run& run, const std::vector<const Run*>& good) {
  return Transcript(run, good).Lines();
}

std::string Difference(const Text& wanted, const Text& found) {
  std::string text;
  std::size_t i = 0, j = 0;
  const auto tellUpTo = [&](std::size_t wantedEnd, std::size_t foundEnd) {
    while (i < wantedEnd) text += "- " + wanted[i++] + "\n";
    while (j < foundEnd) text += "+ " + found[j++] + "\n";
  };
  for (const auto& [wantedAt, foundAt] : CommonLines(wanted, found)) {
    tellUpTo(wantedAt, foundAt);
    text += "  " + wanted[i++] + "\n";
    ++j;
  }
  tellUpTo(wanted.size(), found.size());
  return text;
}

}  // namespace scenarios
