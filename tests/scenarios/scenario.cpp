#include "scenarios/scenario.h"

#include <algorithm>
#include <charconv>
#include <fstream>
#include <functional>
#include <map>
#include <sstream>
#include <stdexcept>

#include "sim/machine_words.h"

namespace scenarios {
namespace {

constexpr std::uint32_t kPlanesOfPha = 0x99;  // in the driver's own ink order: 0, 3, 4 and 7

[[noreturn]] void Refuse(const std::string& why) { throw std::invalid_argument(why); }

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);) {
    if (!part.empty()) parts.push_back(part);
  }
  return parts;
}

// Decimal, or hexadecimal behind "0x".
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
        value(text.find('=') == std::string::npos ? "" : text.substr(text.find('=') + 1)) {}
  std::uint32_t Number() const { return NumberOf(value); }

  std::string name, value;
};

template <class Target>
using Meanings = std::map<std::string, std::function<void(const Word& word, Target& target)>>;

template <class Target>
void Apply(const Meanings<Target>& meanings, const Word& word, Target& target) {
  const auto meaning = meanings.find(word.name);
  if (meaning == meanings.end()) Refuse("'" + word.name + "' is no word of this line");
  meaning->second(word, target);
}

std::vector<LineRange> RangesOf(const std::string& text) {
  std::vector<LineRange> ranges;
  for (const std::string& part : Split(text, ',')) {
    const std::vector<std::string> ends = Split(part, '-');
    ranges.push_back({NumberOf(ends.front()), NumberOf(ends.back())});
  }
  return ranges;
}

const Meanings<Job>& JobWords() {
  static const Meanings<Job> words = {
      {"pha",
       [](const Word&, Job& j) {
         j.image = {kPlanesOfPha, {{0, 0}}};
       }},
      {"all",
       [](const Word&, Job& j) {
         j.image = {0xFF, {{0, 0}}};
       }},
      {"solid",
       [](const Word&, Job& j) {
         j.image = {0xFF, {{0, j.height - 1}}};
       }},
      {"blank",
       [](const Word&, Job& j) {
         j.image = {0, {}};
       }},
      {"random",
       [](const Word&, Job& j) {
         j.image = {0xFF, {{0, j.height - 1}}, true};
       }},
      {"lines", [](const Word& w, Job& j) { j.image.lines = RangesOf(w.value); }},
      {"seed", [](const Word& w, Job& j) { j.image.seed = w.Number(); }},
      {"resX", [](const Word& w, Job& j) { j.desc->resX = w.Number(); }},
      {"resY", [](const Word& w, Job& j) { j.desc->resY = w.Number(); }},
      {"height", [](const Word& w, Job& j) { j.desc->height = w.Number(); }},
      {"width", [](const Word& w, Job& j) { j.desc->width = w.Number(); }},
      {"colors", [](const Word& w, Job& j) { j.desc->colors = w.Number(); }},
      {"bits", [](const Word& w, Job& j) { j.desc->bitsPerPixel = w.Number(); }},
      {"undescribed", [](const Word&, Job& j) { j.desc.reset(); }},
  };
  return words;
}

const std::vector<HostStep>& GoodHost() {
  static const std::vector<HostStep> host = {
      {HostStep::kStart}, {HostStep::kLines, UINT32_MAX}, {HostStep::kEnd}};
  return host;
}

HostJobDesc GoodDescriptionOf(const Job& job) {
  HostJobDesc desc{};
  desc.resX = job.resolution;
  desc.resY = 360;
  desc.width = job.width;
  desc.height = job.height;
  desc.colors = 8;
  desc.bitsPerPixel = 2;
  return desc;
}

void TakeJob(const std::vector<std::string>& words, Scenario& scenario) {
  if (words.size() < 4) Refuse("a job has a family, a size, a resolution and an image");
  if (words[0] != "line" && words[0] != "stream") Refuse("'" + words[0] + "' is no family");
  Job job;
  job.lineFamily = words[0] == "line";
  const std::vector<std::string> size = Split(words[1], 'x');
  if (size.size() != 2) Refuse("'" + words[1] + "' is no size");
  job.width = NumberOf(size[0]);
  job.height = NumberOf(size[1]);
  job.resolution = NumberOf(words[2]);
  job.desc = GoodDescriptionOf(job);
  for (std::size_t i = 3; i < words.size(); ++i) Apply(JobWords(), Word(words[i]), job);
  job.host = GoodHost();
  scenario.jobs.push_back(std::move(job));
}

const std::map<std::string, HostStep>& HostSteps() {
  static const std::map<std::string, HostStep> steps = {
      {"start", {HostStep::kStart}}, {"lines", {HostStep::kLines, UINT32_MAX}},
      {"call", {HostStep::kCall}},   {"write", {HostStep::kWrite, 1}},
      {"rest", {HostStep::kRest}},   {"end", {HostStep::kEnd}},
      {"ask", {HostStep::kAsk}},
  };
  return steps;
}

const Meanings<HostStep>& StepWords() {
  static const Meanings<HostStep> words = {
      {"bytes", [](const Word& w, HostStep& s) { s.bytes = w.Number(); }},
      {"null", [](const Word&, HostStep& s) { s.null = true; }},
      {"rest", [](const Word& w, HostStep& s) { s.restMs = w.Number(); }},
  };
  return words;
}

// Such as "start", "lines=100:rest=5", "call=7:null".
void TakeHost(const std::vector<std::string>& words, Scenario& scenario) {
  if (scenario.jobs.empty()) Refuse("a host stands below its job");
  Job& job = scenario.jobs.back();
  job.host.clear();
  for (const std::string& text : words) {
    const std::vector<std::string> parts = Split(text, ':');
    const Word word(parts[0]);
    const auto step = HostSteps().find(word.name);
    if (step == HostSteps().end()) Refuse("'" + word.name + "' is nothing that a host does");
    job.host.push_back(step->second);
    if (!word.value.empty()) job.host.back().count = word.Number();
    for (std::size_t i = 1; i < parts.size(); ++i)
      Apply(StepWords(), Word(parts[i]), job.host.back());
  }
}

const Meanings<Scenario>& SystemWords() {
  static const Meanings<Scenario> words = {
      {"locale", [](const Word& w, Scenario& s) { s.system.localeId = w.Number(); }},
      {"chinese", [](const Word&, Scenario& s) { s.system.localeId = 0x0804; }},
      {"box", [](const Word& w, Scenario& s) { s.system.boxOpenMs = w.Number(); }},
      {"tick", [](const Word& w, Scenario& s) { s.system.startTickMs = w.Number(); }},
      {"seed", [](const Word& w, Scenario& s) { s.system.seed = w.Number(); }},
      {"no-thread", [](const Word&, Scenario& s) { s.system.failThreadStart = true; }},
      {"no-log-folder", [](const Word&, Scenario& s) { s.logFolder = false; }},
  };
  return words;
}

void TakeLine(const std::string& line, Scenario& scenario) {
  std::vector<std::string> words = Split(line, ' ');
  const std::string subject = words.at(0);
  words.erase(words.begin());
  std::string why;
  if (subject == "job") {
    TakeJob(words, scenario);
  } else if (subject == "host") {
    TakeHost(words, scenario);
  } else if (subject == "system") {
    for (const std::string& word : words) Apply(SystemWords(), Word(word), scenario);
  } else if (subject == "machine") {
    for (const std::string& text : words) {
      const Word word(text);
      if (why = qrn::sim::SetMachine(word.name, word.value, &scenario.machine); !why.empty())
        Refuse(why);
    }
  } else if (subject == "printer") {
    for (const std::string& text : words) {
      if (!qrn::sim::ParseQuirk(text, &scenario.quirks.emplace_back(), &why)) Refuse(why);
    }
  } else {
    Refuse("no line begins with '" + subject + "'");
  }
}

bool IsTitle(const std::string& line) { return line.starts_with("== "); }

void Trim(std::vector<std::string>& lines) {
  while (!lines.empty() && lines.back().empty()) lines.pop_back();
}

}  // namespace

bool Understand(Scenario* scenario, std::string* error) {
  try {
    for (const std::string& line : scenario->lines) TakeLine(line, *scenario);
    if (scenario->jobs.empty()) Refuse("there is no job");
  } catch (const std::invalid_argument& refused) {
    *error = refused.what();
    return false;
  }
  return true;
}

Scenario GoodRunOf(const Scenario& scenario) {
  Scenario good;
  good.jobs = scenario.jobs;
  for (Job& job : good.jobs) {
    job.desc = GoodDescriptionOf(job);
    job.host = GoodHost();
  }
  return good;
}

bool Load(const std::filesystem::path& path, File* file, std::string* error) {
  std::ifstream stream(path, std::ios::binary);
  file->path = path;
  std::size_t number = 0;
  const auto finish = [&] {
    if (file->scenarios.empty()) return true;
    Trim(file->scenarios.back().wanted);
    if (Understand(&file->scenarios.back(), error)) return true;
    *error = path.filename().string() + ", above line " + std::to_string(number) + ": " + *error;
    return false;
  };
  for (std::string line; std::getline(stream, line);) {
    ++number;
    if (IsTitle(line)) {
      if (!finish()) return false;
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
  if (!stream.eof()) *error = "cannot read " + path.string();
  return stream.eof() && finish();
}

bool Save(const File& file) {
  std::ofstream stream(file.path, std::ios::binary);
  for (const std::string& line : file.preamble) stream << line << "\n";
  for (const Scenario& scenario : file.scenarios) {
    stream << "\n== " << scenario.title << "\n";
    for (const std::string& line : scenario.lines) stream << line << "\n";
    stream << "\n";
    for (const std::string& line : scenario.wanted) stream << "  " << line << "\n";
  }
  stream.close();
  return stream.good();
}

}  // namespace scenarios
