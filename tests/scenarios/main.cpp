// Plays scenarios and holds what comes of them against their files. docs/testing.md tells of the
// language.
//
//   scenarios [--record] [FILE.txt...] [TITLE...]
//
// Without files, all that stand beside this source; with titles, or pieces of them, those alone,
// and their transcripts are printed. --record writes the transcripts into the files.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "scenarios/apart.h"
#include "scenarios/difference.h"
#include "scenarios/play.h"
#include "scenarios/scenario.h"

namespace {

using namespace scenarios;

struct Options {
  bool record = false;
  std::vector<std::filesystem::path> files;
  std::vector<std::string> titles;
};

Options OptionsOf(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--record") {
      options.record = true;
    } else if (argument.ends_with(".txt")) {
      options.files.emplace_back(argument);
    } else {
      options.titles.push_back(argument);
    }
  }
  if (options.files.empty()) {
    for (const auto& entry : std::filesystem::directory_iterator(QRN_SCENARIOS)) {
      if (entry.path().extension() == ".txt" && entry.path().filename() != "CMakeLists.txt")
        options.files.push_back(entry.path());
    }
    std::sort(options.files.begin(), options.files.end());
  }
  return options;
}

// The good runs, by the jobs that they are of.
class GoodRuns {
 public:
  // Null for a scenario that is its own good run.
  const Run* Of(const Scenario& scenario) {
    std::string jobs;
    bool plain = true;
    for (const std::string& line : scenario.lines) {
      if (line.starts_with("job ")) {
        jobs += line + "\n";
      } else {
        plain = false;
      }
    }
    if (plain) return nullptr;
    const auto known = runs_.find(jobs);
    if (known != runs_.end()) return &known->second;
    return &runs_.emplace(jobs, PlayApart(GoodRunOf(scenario))).first->second;
  }

 private:
  std::map<std::string, Run> runs_;
};

std::string HeadOf(const Scenario& scenario) {
  std::string text = "== " + scenario.title + "\n";
  for (const std::string& line : scenario.lines) text += line + "\n";
  return text;
}

bool IsAsked(const Scenario& scenario, const Options& options) {
  return options.titles.empty() ||
         std::any_of(options.titles.begin(), options.titles.end(), [&](const std::string& piece) {
           return scenario.title.find(piece) != std::string::npos;
         });
}

// How many scenarios were played and how many differ from their file.
struct Score {
  int played = 0, differ = 0;
};

void PlayOne(Scenario& scenario, const Options& options, GoodRuns& goodRuns, Score& score) {
  const Run run = PlayApart(scenario);
  std::vector<std::string> found = TranscriptOf(run, goodRuns.Of(scenario));
  ++score.played;
  const bool same = found == scenario.wanted;
  if (!same && !options.record) {
    ++score.differ;
    std::printf("%s\n%s\n", HeadOf(scenario).c_str(), Difference(scenario.wanted, found).c_str());
  } else if (!options.titles.empty()) {
    std::printf("%s\n", HeadOf(scenario).c_str());
    for (const std::string& line : found) std::printf("  %s\n", line.c_str());
    std::printf("\n");
  }
  scenario.wanted = std::move(found);
}

}  // namespace

int main(int argc, char** argv) {
  const Options options = OptionsOf(argc, argv);
  GoodRuns goodRuns;
  Score score;
  for (const std::filesystem::path& path : options.files) {
    File file;
    std::string error;
    if (!Load(path, &file, &error)) {
      std::fprintf(stderr, "scenarios: %s\n", error.c_str());
      return 2;
    }
    for (Scenario& scenario : file.scenarios) {
      if (IsAsked(scenario, options)) PlayOne(scenario, options, goodRuns, score);
    }
    if (options.record && !Save(file)) {
      std::fprintf(stderr, "scenarios: cannot write %s\n", path.string().c_str());
      return 2;
    }
  }
  std::printf("%d scenarios, %d differ from their files\n", score.played, score.differ);
  return score.differ != 0 || score.played == 0 ? 1 : 0;
}
