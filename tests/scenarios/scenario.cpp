#include "scenarios/scenario.h"

#include <charconv>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <stdexcept>

#include "sim/machine/machine_words.h"

namespace scenarios {
namespace {

// PHA has 0, 3, 4 and 7 in the driver's own ink order.
constexpr std::uint32_t kAllColors = 0xFF, kColorsOfPha = 0x99;

using Words = std::vector<std::string>;

[[noreturn]] void Refuse(const std::string& why) { throw std::invalid_argument(why); }

Words Split(const std::string& text, char separator) {
  Words parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);) {
    if (!part.empty()) parts.push_back(part);
  }
  return parts;
}

// Decimal, or hexadecimal after "0x".
std::uint32_t NumberOf(const std::string& text) {
  const bool hexadecimal = text.starts_with("0x");
  const char* end = text.data() + text.size();
  std::uint32_t number = 0;
  const auto parsed =
      std::from_chars(text.data() + (hexadecimal ? 2 : 0), end, number, hexadecimal ? 16 : 10);
  if (parsed.ec != std::errc() || parsed.ptr != end) Refuse("'" + text + "' is no number");
  return number;
}

// "name" or "name=value".
struct Word {
  explicit Word(const std::string& text)
      : name(text.substr(0, text.find('='))),
        value(name == text ? "" : text.substr(name.size() + 1)) {}
  std::uint32_t Number() const { return NumberOf(value); }

  std::string name, value;
};

template <class Target>
using Meanings = std::map<std::string, std::function<void(const Word& word, Target& target)>>;

template <class Target>
void Apply(const Meanings<Target>& meanings, const Word& word, Target& target) {
  const auto meaning = meanings.find(word.name);
  if (meaning == meanings.end()) Refuse("'" + word.name + "' has no meaning here");
  meaning->second(word, target);
}

// "0-9,20"
std::vector<LineRange> RangesOf(const std::string& text) {
  std::vector<LineRange> ranges;
  for (const std::string& part : Split(text, ',')) {
    const Words ends = Split(part, '-');
    ranges.push_back({NumberOf(ends.front()), NumberOf(ends.back())});
  }
  return ranges;
}

// Ink on line 0 up to a last one.
Image InkOn(std::uint32_t colors, std::uint32_t lastLine) {
  Image image;
  image.colors = colors;
  image.lines = {{0, lastLine}};
  return image;
}

const Meanings<Job> kImageWords = {
    {"pha", [](const Word&, Job& j) { j.image = InkOn(kColorsOfPha, 0); }},
    {"all", [](const Word&, Job& j) { j.image = InkOn(kAllColors, 0); }},
    {"solid", [](const Word&, Job& j) { j.image = InkOn(kAllColors, j.height); }},
    {"blank", [](const Word&, Job& j) { j.image = Image(); }},
    {"random", [](const Word&, Job& j) { j.image.random = true; }},
    {"lines", [](const Word& w, Job& j) { j.image.lines = RangesOf(w.value); }},
    {"seed", [](const Word& w, Job& j) { j.image.seed = w.Number(); }},
};

// What the host describes in place of the page.
const Meanings<Job> kDescriptionWords = {
    {"resX", [](const Word& w, Job& j) { j.desc->resX = w.Number(); }},
    {"resY", [](const Word& w, Job& j) { j.desc->resY = w.Number(); }},
    {"height", [](const Word& w, Job& j) { j.desc->height = w.Number(); }},
    {"width", [](const Word& w, Job& j) { j.desc->width = w.Number(); }},
    {"colors", [](const Word& w, Job& j) { j.desc->colors = w.Number(); }},
    {"bits", [](const Word& w, Job& j) { j.desc->bitsPerPixel = w.Number(); }},
    {"undescribed", [](const Word&, Job& j) { j.desc.reset(); }},
};

// A family, a size, a resolution, an image.
void TakeJob(const Words& words, Scenario& scenario) {
  const Words size = words.size() < 4 ? Words{} : Split(words[1], 'x');
  if (size.size() != 2 || (words[0] != "line" && words[0] != "stream"))
    Refuse("a job is such as: line 48x2 1440 pha");
  Job& job = scenario.jobs.emplace_back();
  job.lineFamily = words[0] == "line";
  job.width = NumberOf(size[0]);
  job.height = NumberOf(size[1]);
  job.desc = HostJobDesc{};
  job.desc->resX = NumberOf(words[2]);
  job.desc->resY = 360;
  job.desc->width = job.width;
  job.desc->height = job.height;
  job.desc->colors = 8;
  job.desc->bitsPerPixel = 2;
  job.host = {{HostStep::kStart}, {HostStep::kLines, UINT32_MAX}, {HostStep::kEnd}};
  job.like = {words[0], words[1], words[2]};
  for (std::size_t i = 3; i < words.size(); ++i) {
    const Word word(words[i]);
    const bool describes = kDescriptionWords.contains(word.name);
    Apply(describes ? kDescriptionWords : kImageWords, word, job);
    job.misdescribed |= describes;
    if (!describes) job.like.push_back(words[i]);
  }
}

Job& JobAbove(Scenario& scenario) {
  if (scenario.jobs.empty()) Refuse("this line belongs below a job");
  return scenario.jobs.back();
}

void TakeLike(const Words& words, Scenario& scenario) {
  Scenario good;
  TakeJob(words, good);
  JobAbove(scenario).like = good.jobs[0].like;
}

const std::map<std::string, HostStep> kHostSteps = {
    {"start", {HostStep::kStart}}, {"lines", {HostStep::kLines, UINT32_MAX}},
    {"call", {HostStep::kCall}},   {"write", {HostStep::kWrite, 1}},
    {"rest", {HostStep::kRest}},   {"end", {HostStep::kEnd}},
    {"ask", {HostStep::kAsk}},
};

const Meanings<HostStep> kStepWords = {
    {"bytes", [](const Word& w, HostStep& s) { s.bytes = w.Number(); }},
    {"null", [](const Word&, HostStep& s) { s.null = true; }},
    {"rest", [](const Word& w, HostStep& s) { s.restMs = w.Number(); }},
};

// Such as "start", "lines=100:rest=5", "call=7:null".
void TakeHost(const Words& words, Scenario& scenario) {
  Job& job = JobAbove(scenario);
  job.host.clear();
  for (const std::string& text : words) {
    const Words parts = Split(text, ':');
    const Word word(parts[0]);
    const auto step = kHostSteps.find(word.name);
    if (step == kHostSteps.end()) Refuse("a host does not '" + word.name + "'");
    HostStep& taken = job.host.emplace_back(step->second);
    if (!word.value.empty()) taken.count = word.Number();
    for (std::size_t i = 1; i < parts.size(); ++i) Apply(kStepWords, Word(parts[i]), taken);
  }
}

const Meanings<Scenario> kSystemWords = {
    {"locale", [](const Word& w, Scenario& s) { s.system.localeId = w.Number(); }},
    {"chinese", [](const Word&, Scenario& s) { s.system.localeId = 0x0804; }},
    {"box", [](const Word& w, Scenario& s) { s.system.boxOpenMs = w.Number(); }},
    {"tick", [](const Word& w, Scenario& s) { s.system.startTickMs = w.Number(); }},
    {"seed", [](const Word& w, Scenario& s) { s.system.seed = w.Number(); }},
    {"no-thread", [](const Word&, Scenario& s) { s.system.failThreadStart = true; }},
    {"no-log-folder", [](const Word&, Scenario& s) { s.logFolder = false; }},
};

void TakeSystem(const Words& words, Scenario& scenario) {
  for (const std::string& word : words) Apply(kSystemWords, Word(word), scenario);
}

void TakeMachine(const Words& words, Scenario& scenario) {
  for (const std::string& text : words) {
    const Word word(text);
    const std::string why = qrn::sim::SetMachine(word.name, word.value, &scenario.machine);
    if (!why.empty()) Refuse(why);
  }
}

void TakePrinter(const Words& words, Scenario& scenario) {
  for (const std::string& text : words) {
    std::string why;
    if (!qrn::sim::ParseQuirk(text, &scenario.quirks.emplace_back(), &why)) Refuse(why);
  }
}

const std::map<std::string, void (*)(const Words& words, Scenario& scenario)> kLines = {
    {"job", TakeJob},       {"like", TakeLike},       {"host", TakeHost},
    {"system", TakeSystem}, {"machine", TakeMachine}, {"printer", TakePrinter},
};

void Trim(Words& lines) {
  while (!lines.empty() && lines.back().empty()) lines.pop_back();
}

}  // namespace

bool Understand(Scenario* scenario, std::string* error) {
  try {
    for (const std::string& line : scenario->lines) {
      Words words = Split(line, ' ');
      const auto meaning = kLines.find(words.at(0));
      if (meaning == kLines.end()) Refuse("no line begins with '" + words[0] + "'");
      words.erase(words.begin());
      meaning->second(words, *scenario);
    }
    if (scenario->jobs.empty()) Refuse("there is no job");
    return true;
  } catch (const std::invalid_argument& refused) {
    *error = "'" + scenario->title + "': " + refused.what();
    return false;
  }
}

Scenario GoodOf(const Job& job) {
  Scenario good;
  TakeJob(job.like, good);
  return good;
}

bool Load(const std::filesystem::path& path, File* file, std::string* error) {
  std::ifstream stream(path, std::ios::binary);
  file->path = path;
  *error = "cannot read " + path.string();
  for (std::string line; std::getline(stream, line);) {
    if (line.starts_with("== ")) {
      file->scenarios.emplace_back().title = line.substr(3);
    } else if (file->scenarios.empty()) {
      file->preamble.push_back(line);
    } else if (line.starts_with("  ")) {
      file->scenarios.back().wanted.push_back(line.substr(2));
    } else if (!line.empty()) {
      file->scenarios.back().lines.push_back(line);
    }
  }
  Trim(file->preamble);
  if (!stream.eof()) return false;
  for (Scenario& scenario : file->scenarios) {
    if (!Understand(&scenario, error)) return false;
  }
  return true;
}

bool Save(const File& file) {
  std::ofstream stream(file.path, std::ios::binary);
  for (const std::string& line : file.preamble) stream << line << "\n";
  for (const Scenario& scenario : file.scenarios) {
    stream << "\n== " << scenario.title << "\n";
    for (const std::string& line : scenario.lines) stream << line << "\n";
    for (const std::string& line : scenario.wanted) stream << "  " << line << "\n";
  }
  stream.close();
  return stream.good();
}

}  // namespace scenarios
