// Plays scenarios and holds what comes of them against their files. docs/testing.md explains the
// language.
//
//   scenarios [--record | --first] [FILE.txt...] [TITLE...]
//
// Without files, all that are beside this source; with titles, or pieces of them, those alone, and
// their transcripts are printed. --record writes the transcripts into the files; --first stops at
// the first that differs.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "scenarios/play.h"
#include "scenarios/scenario.h"

namespace {

using namespace scenarios;

struct Options {
  bool record = false, first = false;
  std::vector<std::filesystem::path> files;
  std::vector<std::string> titles;
};

Options OptionsOf(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--record") {
      options.record = true;
    } else if (argument == "--first") {
      options.first = true;
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

// The good runs that transcripts are held against, by their jobs.
class GoodRuns {
 public:
  // One of each job; none for a scenario that is a good run itself.
  std::vector<const Run*> Of(const Scenario& scenario) {
    std::vector<const Run*> runs;
    if (scenario.IsGood()) return runs;
    for (const Job& job : scenario.jobs) {
      Run& run = runs_[job.like];
      if (run.empty()) run = PlayApart(GoodOf(job));
      runs.push_back(&run);
    }
    return runs;
  }

 private:
  std::map<std::vector<std::string>, Run> runs_;
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
  if (RecordFields().empty()) {
    std::erase_if(scenario.wanted,
                  [](const std::string& line) { return line.starts_with("record "); });
  }
  const bool same = found == scenario.wanted;
  if (!same && !options.record) {
    ++score.differ;
    std::printf("%s%s\n", HeadOf(scenario).c_str(), Difference(scenario.wanted, found).c_str());
  } else if (!options.titles.empty()) {
    std::printf("%s", HeadOf(scenario).c_str());
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
      if (options.first && score.differ != 0) return 1;
      if (IsAsked(scenario, options)) PlayOne(scenario, options, goodRuns, score);
    }
    if (options.record && !Save(file)) {
      std::fprintf(stderr, "scenarios: cannot write %s\n", path.string().c_str());
      return 2;
    }
  }
  std::printf(
      options.record ? "%d scenarios recorded\n" : "%d scenarios, %d differ from their files\n",
      score.played, score.differ);
  return score.differ != 0 || score.played == 0 ? 1 : 0;
}
