// Runs a fuzz target without a fuzzer: every file of the command line, and of the folders there, as
// it is; then a fixed number of mutations of them. The seed and the number of a run alone decide
// its input.
//
//   fuzz_reply [--seed=N] [--runs=N] [--save=FILE] PATH...
//
// --save writes each input before it is run: after a fault the file holds the one at fault.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "fuzz/fuzz_input.h"

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

namespace {

constexpr std::size_t kInputBytesMax = 8192;

// splitmix64: the same everywhere.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}
  std::uint64_t Next() {
    state_ += 0x9E3779B97F4A7C15u;
    std::uint64_t z = state_;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9u;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBu;
    return z ^ (z >> 31);
  }
  // 0..count - 1; 0 when there is nothing to choose from.
  std::size_t Below(std::size_t count) { return count != 0 ? Next() % count : 0; }

 private:
  std::uint64_t state_;
};

void Mutate(Random& random, const std::vector<Bytes>& corpus, Bytes* input) {
  constexpr std::uint8_t kEdges[] = {0, 1, 2, 7, 0x7F, 0x80, 0xFE, 0xFF};
  const std::size_t at = random.Below(input->size());
  const auto here = input->begin() + static_cast<std::ptrdiff_t>(at);
  const std::size_t span = 1 + random.Below(std::min<std::size_t>(input->size() - at, 16));
  switch (input->empty() ? 3 : random.Below(7)) {
    case 0:
      *here = static_cast<std::uint8_t>(*here ^ (1u << random.Below(8)));
      break;
    case 1:
      *here = kEdges[random.Below(std::size(kEdges))];
      break;
    case 2:
      *here = static_cast<std::uint8_t>(random.Next());
      break;
    case 3:
      input->insert(here, 1 + random.Below(8), static_cast<std::uint8_t>(random.Next()));
      break;
    case 4:
      input->erase(here, here + static_cast<std::ptrdiff_t>(std::min(span, input->size() - at)));
      break;
    case 5: {  // a piece of it once more, somewhere else
      const Bytes piece(here,
                        here + static_cast<std::ptrdiff_t>(std::min(span, input->size() - at)));
      const auto to = static_cast<std::ptrdiff_t>(random.Below(input->size()));
      input->insert(input->begin() + to, piece.begin(), piece.end());
      break;
    }
    default: {  // the rest of another one
      const Bytes& other = corpus[random.Below(corpus.size())];
      input->resize(at);
      input->insert(input->end(),
                    other.begin() + static_cast<std::ptrdiff_t>(std::min(at, other.size())),
                    other.end());
      break;
    }
  }
}

Bytes InputOf(std::uint64_t seed, std::uint64_t run, const std::vector<Bytes>& corpus) {
  Random random(seed * 0x100000001B3u + run);
  Bytes input = corpus[random.Below(corpus.size())];
  for (std::size_t left = 1 + random.Below(6); left > 0; --left) Mutate(random, corpus, &input);
  if (input.size() > kInputBytesMax) input.resize(kInputBytesMax);
  return input;
}

void Run(const Bytes& input, const std::string& save) {
  if (!save.empty()) {
    std::ofstream(save, std::ios::binary)
        .write(reinterpret_cast<const char*>(input.data()),
               static_cast<std::streamsize>(input.size()));
  }
  // Exactly as large as it is, so that reads past it show.
  LLVMFuzzerTestOneInput(input.data(), input.size());
}

// The files in the order of their names, which no file system promises.
std::vector<fs::path> FilesOf(const std::vector<std::string>& names) {
  std::vector<fs::path> files;
  for (const std::string& name : names) {
    if (!fs::is_directory(name)) {
      files.emplace_back(name);
      continue;
    }
    const std::size_t first = files.size();
    for (const auto& entry : fs::directory_iterator(name)) files.push_back(entry.path());
    std::sort(files.begin() + static_cast<std::ptrdiff_t>(first), files.end());
  }
  return files;
}

bool TakeOption(const char* argument, const char* name, std::string* value) {
  const std::size_t length = std::strlen(name);
  if (std::strncmp(argument, name, length) != 0) return false;
  *value = argument + length;
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  std::string seed = "1", runs = "0", save;
  std::vector<std::string> names;
  for (int i = 1; i < argc; ++i) {
    if (TakeOption(argv[i], "--seed=", &seed) || TakeOption(argv[i], "--runs=", &runs) ||
        TakeOption(argv[i], "--save=", &save))
      continue;
    names.emplace_back(argv[i]);
  }
  std::vector<Bytes> corpus;
  for (const fs::path& path : FilesOf(names)) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
      std::fprintf(stderr, "Unable to open '%s'\n", path.c_str());
      return 1;
    }
    corpus.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    std::printf("%s: %zu bytes\n", path.c_str(), corpus.back().size());
    std::fflush(stdout);
    Run(corpus.back(), save);
  }
  if (corpus.empty()) {
    std::fprintf(stderr, "usage: %s [--seed=N] [--runs=N] [--save=FILE] PATH...\n", argv[0]);
    return 2;
  }
  const std::uint64_t seedNumber = std::strtoull(seed.c_str(), nullptr, 10);
  const std::uint64_t runCount = std::strtoull(runs.c_str(), nullptr, 10);
  std::printf("seed %s, %s runs; the input of a fault: repeat with --save=FILE\n", seed.c_str(),
              runs.c_str());
  std::fflush(stdout);
  for (std::uint64_t run = 0; run < runCount; ++run) Run(InputOf(seedNumber, run, corpus), save);
  return 0;
}
