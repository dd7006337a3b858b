// Runs a fuzz target without a fuzzer: every file of the command line, and of the folders there, as
// it is; then a fixed number of mutations of them. The seed and the number of a run alone decide
// its input.
//
//   fuzz_replies [--seed=N] [--runs=N] [--save=FILE] PATH...
//
// --save writes each input before it is run: after a fault the file holds the one at fault.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "fuzz/fuzz_input.h"

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

namespace {

// One to six times a stretch is replaced, often by one as long: by random bytes, or by what another
// input has. The generator's numbers are the same everywhere.
Bytes Mutated(std::mt19937_64& random, const std::vector<Bytes>& corpus) {
  const auto below = [&random](std::uint64_t end) {
    return static_cast<std::ptrdiff_t>(random() % end);
  };
  Bytes input = corpus[random() % corpus.size()];
  for (std::ptrdiff_t left = 1 + below(6); left > 0; --left) {
    Bytes stretch(random() % (1 + random() % 16));
    for (std::uint8_t& byte : stretch) byte = static_cast<std::uint8_t>(random());
    const Bytes& other = corpus[random() % corpus.size()];
    if (below(3) == 0) stretch.assign(other.begin() + below(other.size() + 1), other.end());
    const auto here = input.begin() + below(input.size() + 1);
    const std::ptrdiff_t gone = below(2) == 0 ? std::ssize(stretch) : below(17);
    const auto end = here + std::min(gone, input.end() - here);
    input.insert(input.erase(here, end), stretch.begin(), stretch.end());
  }
  return input;
}

// The files of a folder in the order of their names, which no file system promises.
std::vector<fs::path> FilesOf(const std::string& name) {
  if (!fs::is_directory(name)) return {name};
  std::vector<fs::path> files(fs::directory_iterator(name), fs::directory_iterator{});
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

int main(int argc, char** argv) {
  std::map<std::string, std::string> options = {{"--seed", "1"}, {"--runs", "0"}, {"--save", ""}};
  std::vector<Bytes> corpus;
  const auto run = [&options](const Bytes& input) {
    const std::string& save = options["--save"];
    if (!save.empty()) {
      std::ofstream(save, std::ios::binary)
          .write(reinterpret_cast<const char*>(input.data()), std::ssize(input));
    }
    LLVMFuzzerTestOneInput(input.data(), input.size());
  };
  for (const std::string& argument : std::vector<std::string>(argv + 1, argv + argc)) {
    const std::size_t equals = argument.find('=');
    if (equals != std::string::npos && options.contains(argument.substr(0, equals))) {
      options[argument.substr(0, equals)] = argument.substr(equals + 1);
      continue;
    }
    for (const fs::path& path : FilesOf(argument)) {
      std::printf("%s\n", path.c_str());
      std::fflush(stdout);
      std::ifstream file(path, std::ios::binary);
      if (!file) return 1;
      corpus.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
      run(corpus.back());
    }
  }
  if (corpus.empty()) return 2;
  const unsigned long long seed = std::stoull(options["--seed"]),
                           runs = std::stoull(options["--runs"]);
  std::printf("seed %llu, %llu runs; the input of a fault: repeat with --save=FILE\n", seed, runs);
  std::fflush(stdout);
  for (unsigned long long i = 0; i < runs; ++i) {
    std::mt19937_64 random(seed * 0x100000001B3u + i);
    run(Mutated(random, corpus));
  }
  return 0;
}
