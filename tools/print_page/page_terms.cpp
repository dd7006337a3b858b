#include "print_page/page_terms.h"

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <limits>
#include <string>

#include "print_page/page.h"
#include "print_page/picture_file.h"
#include "sim/proof/reach.h"

namespace qrn::tool {
namespace {

// What the program may still take, in bytes; the largest number when that is not known.
std::uint64_t FreeMemory() {
  std::uint64_t bytes = std::numeric_limits<std::uint64_t>::max();
  std::ifstream memory("/proc/meminfo");
  for (std::string line; std::getline(memory, line);) {
    unsigned long long kilobytes = 0;
    if (std::sscanf(line.c_str(), "MemAvailable: %llu", &kilobytes) == 1) bytes = kilobytes << 10;
  }
  struct rlimit limit {};
  if (getrlimit(RLIMIT_AS, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY)
    bytes = std::min<std::uint64_t>(bytes, limit.rlim_cur);
  return bytes;
}

// What a page takes besides its planes: on the virtual paper up to a byte for each column of three
// pixels, in both directions of the carriage.
std::uint64_t MemoryNeed(std::uint64_t planeBytes) { return planeBytes + planeBytes * 8 / 3; }

std::string Megabytes(std::uint64_t bytes) { return std::to_string(bytes / 1'000'000) + " MB"; }

// In the driver's arithmetic, on what it gets.
std::string WidthProblem(const RasterPage& page, std::uint32_t resolution,
                         const sim::Machine& machine) {
  const std::uint64_t widthMm = WidenedWidth(page.width) * 254ull / (resolution * 10ull);
  const std::uint32_t mostMm = sim::PrintableMm(machine);
  if (widthMm <= mostMm) return "";
  return "it is " + std::to_string(widthMm) + " mm wide, the machine prints " +
         std::to_string(mostMm) + " mm";
}

// Planes only grow while a page is read, by the lines that have ink.
std::string MemoryProblem(std::uint64_t planeBytes, std::uint64_t freeBytes) {
  if (MemoryNeed(planeBytes) <= freeBytes) return "";
  return "it is too large for memory: it needs more than the " + Megabytes(freeBytes) +
         " that are free";
}

std::string PictureSizeProblem(const RasterPage& page, const Options& options,
                               const sim::Machine& machine) {
  if (options.picture.empty() || !options.verify) return "";
  return sim::PictureSizeProblem(PictureOf(options, machine, page.lines, WidenedWidth(page.width)));
}

std::string SlotProblem(const RasterPage& page, const Options& options) {
  const int missing = options.slotsNamed ? MissingPlane(page, options.slots) : kBlank;
  if (missing == kBlank) return "";
  return "there is no plane " + std::to_string(missing) + " for --slots";
}

}  // namespace

PageTerms TermsOf(const Options& options, const sim::Machine& machine) {
  const auto refusal = [&options, &machine](const RasterPage& page) {
    std::string problem = WidthProblem(page, options.resolution, machine);
    if (problem.empty()) problem = SlotProblem(page, options);
    return problem.empty() ? PictureSizeProblem(page, options, machine) : problem;
  };
  const auto lackOfRoom = [freeBytes = FreeMemory()](std::uint64_t planeBytes) {
    return MemoryProblem(planeBytes, freeBytes);
  };
  return {options.resolution, refusal, lackOfRoom};
}

std::string InkProblem(const Options& options, const sim::Machine& machine,
                       const RasterPage& page) {
  if (options.partial) return "";
  const unsigned printed = sim::PrintedColors(machine);
  const SlotPage slots(page, options.slots);
  std::string missing;
  unsigned count = 0;
  for (int slot = 0; slot < sim::kInks; ++slot) {
    if (!slots.IsInked(slot) || ((printed >> slot) & 1u) != 0) continue;
    missing += (count++ == 0 ? "" : ", ") + std::string(SlotName(slot));
  }
  if (count == 0) return "";
  return "the machine has no nozzle row for ink" + std::string(count == 1 ? " " : "s ") + missing +
         "; --partial leaves " + (count == 1 ? "it" : "them") + " out";
}

}  // namespace qrn::tool
