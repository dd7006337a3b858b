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
#include <random>
#include <string>
#include <vector>

#include "fuzz/fuzz_input.h"

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

namespace {

// One to six small changes. The generator's numbers are the same everywhere.
Bytes Mutated(std::mt19937_64& random, const std::vector<Bytes>& corpus) {
  constexpr std::uint8_t kEdges[] = {0, 1, 2, 7, 0x7F, 0x80, 0xFE, 0xFF};
  const auto below = [&random](std::ptrdiff_t count) {
    return static_cast<std::ptrdiff_t>(random() % static_cast<std::uint64_t>(count));
  };
  Bytes input = corpus[random() % corpus.size()];
  for (std::ptrdiff_t left = 1 + below(6); left > 0; --left) {
    if (input.empty()) input.push_back(0);
    const auto here = input.begin() + below(std::ssize(input));
    const std::ptrdiff_t few = 1 + below(std::min<std::ptrdiff_t>(input.end() - here, 16));
    const Bytes& other = corpus[random() % corpus.size()];
    const std::ptrdiff_t kept = std::min(here - input.begin(), std::ssize(other));
    switch (below(5)) {
      case 0:
        *here = static_cast<std::uint8_t>(*here ^ (1u << below(8)));
        break;
      case 1:
        *here = kEdges[below(std::ssize(kEdges))];
        break;
      case 2:
        input.insert(here, static_cast<std::size_t>(few), static_cast<std::uint8_t>(random()));
        break;
      case 3:
        input.erase(here, here + few);
        break;
      default:  // the rest of another one
        input.erase(input.begin() + kept, input.end());
        input.insert(input.end(), other.begin() + kept, other.end());
    }
  }
  return input;
}

void Run(const Bytes& input, const std::string& save) {
  if (!save.empty()) {
    std::ofstream(save, std::ios::binary)
        .write(reinterpret_cast<const char*>(input.data()), std::ssize(input));
  }
  LLVMFuzzerTestOneInput(input.data(), input.size());
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
  std::uint64_t seed = 1, runs = 0;
  std::string save;
  std::vector<Bytes> corpus;
  for (const std::string& argument : std::vector<std::string>(argv + 1, argv + argc)) {
    const std::string value = argument.substr(argument.find('=') + 1);
    if (argument.starts_with("--seed=")) {
      seed = std::stoull(value);
    } else if (argument.starts_with("--runs=")) {
      runs = std::stoull(value);
    } else if (argument.starts_with("--save=")) {
      save = value;
    } else {
      for (const fs::path& path : FilesOf(argument)) {
        std::printf("%s\n", path.c_str());
        std::fflush(stdout);
        std::ifstream file(path, std::ios::binary);
        if (!file) return 1;
        corpus.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
        Run(corpus.back(), save);
      }
    }
  }
  if (corpus.empty()) return 2;
  std::printf("seed %llu, %llu runs; the input of a fault: repeat with --save=FILE\n",
              static_cast<unsigned long long>(seed), static_cast<unsigned long long>(runs));
  std::fflush(stdout);
  for (std::uint64_t run = 0; run < runs; ++run) {
    std::mt19937_64 random(seed * 0x100000001B3u + run);
    Run(Mutated(random, corpus), save);
  }
  return 0;
}
