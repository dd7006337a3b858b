#include "print_page/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <sstream>

namespace qrn::tool {
namespace {

constexpr const char* kDescription =
    "Prints a page on the virtual printer through the driver's exports and compares the paper with "
    "the page.\n"
    "Input: CUPS raster (a file, or - for standard input), PDF, PostScript, EPS, PNG, JPEG or "
    "TIFF.\n"
    "A raster with several pages prints several jobs.";

constexpr const char* kFooter =
    "Quirks: pause:at=3,ms=5000   cancel:at=4   unplug:at=5,ms=6000   buffer-full:at=2,count=5\n"
    "        refuse:on=connect,status=4,count=2   refuse:on=swath,at=3,status=7   "
    "(docs/simulator.md)\n"
    "Exit code: 0 all pages printed and equal, 1 not, or input that cannot be read, 2 wrong usage.";

std::string Absolute(const std::string& path) {
  return path.empty() || path == "-" ? path : std::filesystem::absolute(path).string();
}

bool ParseQuirks(const std::vector<std::string>& texts, sim::QuirkScript* quirks,
                 std::string* error) {
  for (const std::string& text : texts) {
    sim::Quirk quirk;
    if (!sim::ParseQuirk(text, &quirk, error)) return false;
    quirks->push_back(quirk);
  }
  return true;
}

}  // namespace

bool ParseSlots(const std::string& text, SlotMap* slots, std::string* error) {
  slots->fill(kBlank);
  std::istringstream stream(text);
  std::string entry;
  for (std::size_t slot = 0; std::getline(stream, entry, ','); ++slot) {
    const bool plane = entry.size() == 1 && entry[0] >= '0' && entry[0] <= '7';
    if (slot >= kSlots || (!plane && entry != "-")) {
      *error = "slots '" + text + "': up to eight of 0..7 or -, separated by commas";
      return false;
    }
    (*slots)[slot] = plane ? entry[0] - '0' : kBlank;
  }
  if (std::count(slots->begin(), slots->end(), kBlank) != static_cast<std::ptrdiff_t>(kSlots))
    return true;
  *error = "slots '" + text + "': every slot is blank";
  return false;
}

std::optional<Options> ParseOptions(int argc, const char* const* argv, int* exitCode) {
  Options options;
  std::string api = "stream", slots = "0,1,2,3";
  std::vector<std::string> quirks;
  CLI::App app(kDescription, "print-page");
  app.footer(kFooter);
  app.add_option("input", options.input, "what to print")->required();
  app.add_option("-r,--resolution", options.resolution,
                 "dots per inch along the carriage: 1080, 1440, 1620 or 2160")
      ->check(CLI::IsMember({1080, 1440, 1620, 2160}))
      ->capture_default_str();
  app.add_option("--api", api, "family of exports: stream or line")
      ->check(CLI::IsMember({"stream", "line"}))
      ->capture_default_str();
  const CLI::Option* slotsOption =
      app.add_option(
             "--slots", slots,
             "page plane (C, M, Y, K = 0..3) that feeds each of the 8 colour slots, - for none")
          ->capture_default_str();
  app.add_option("-s,--settings", options.settingsFile,
                 "the printer's settings, a TOML file (see samples/printer.toml)");
  app.add_option("-o,--output", options.picture,
                 "picture of the printed paper, PNG; page n > 1 adds -n to the name");
  app.add_option("--log-dir", options.logFolder, "folder for the driver's job logs");
  app.add_option("--seed", options.seed, "seed of the scheduling on virtual time")
      ->capture_default_str();
  app.add_flag("--virtual-time", options.virtualTime, "do not wait for the printer's real time");
  app.add_flag("--verify,!--no-verify", options.verify,
               "compare paper and page cell by cell (default)");
  app.add_option("--quirk", quirks, "make the printer misbehave; may be repeated")
      ->allow_extra_args(false);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    *exitCode = app.exit(error) == 0 ? 0 : 2;
    return std::nullopt;
  }
  options.lineApi = api == "line";
  options.slotsNamed = slotsOption->count() != 0;
  std::string error;
  if (!ParseSlots(slots, &options.slots, &error) || !ParseQuirks(quirks, &options.quirks, &error)) {
    std::cerr << "print-page: " << error << "\n";
    *exitCode = 2;
    return std::nullopt;
  }
  for (std::string* path :
       {&options.input, &options.settingsFile, &options.picture, &options.logFolder}) {
    *path = Absolute(*path);
  }
  return options;
}

}  // namespace qrn::tool
