#include "print_page/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <filesystem>
#include <limits>
#include <sstream>

namespace qrn::tool {
namespace {

constexpr const char* kDescription =
    "Prints a page on the virtual printer through the driver's exports and compares the paper with "
    "the page.\n"
    "Input: CUPS raster, PDF, PostScript, EPS, PNG, JPEG or TIFF; a file, a pipe, or - for "
    "standard input.\n"
    "Several pages are several jobs.";

constexpr const char* kFooter =
    "Quirks: refuse:on=connect,count=2,status=4   refuse:on=swath,at=3,status=7   "
    "buffer-full:at=2,count=5\n"
    "        pause:at=3,ms=5000   cancel:at=4   unplug:at=9,ms=6000   (docs/simulator.md)\n"
    "Exit code: 0 all pages printed and equal, 1 not, or something that cannot be read or written, "
    "2 wrong usage.";

bool MakeAbsolute(std::string* path, std::string* error) {
  if (path->empty() || *path == "-") return true;
  std::error_code gone;
  const std::string absolute = std::filesystem::absolute(*path, gone).string();
  if (gone) *error = "'" + *path + "': the current folder is gone";
  *path = absolute;
  return !gone;
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

namespace {

// What the command line says before it is looked at more closely.
struct Given {
  std::string api = "stream", slots = "0,1,2,3,4,5,6,7", seed = "1";
  std::vector<std::string> quirks;
  const CLI::Option* slotsOption = nullptr;
};

bool ParseSeed(const std::string& text, std::uint64_t* seed, std::string* error) {
  const char* end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), end, *seed);
  if (parsed.ec == std::errc() && parsed.ptr == end) return true;
  *error = "--seed: '" + text + "' must be a whole number from 0 to " +
           std::to_string(std::numeric_limits<std::uint64_t>::max());
  return false;
}

std::string CheckPictureName(const std::string& name) {
  const std::string extension = std::filesystem::path(name).extension().string();
  const bool png = extension.size() == 4 && CLI::detail::to_lower(extension) == ".png";
  return png ? "" : "'" + name + "' does not end in .png, and the picture is a PNG file";
}

void AddOptions(CLI::App* app, Options* options, Given* given) {
  app->add_option("input", options->input, "what to print")->required();
  app->add_option("-r,--resolution", options->resolution,
                  "dots per inch along the carriage: 1080, 1440, 1620 or 2160")
      ->check(CLI::IsMember({1080, 1440, 1620, 2160}))
      ->capture_default_str();
  app->add_option("--api", given->api, "family of exports: stream or line")
      ->check(CLI::IsMember({"stream", "line"}))
      ->capture_default_str();
  given->slotsOption = app->add_option(
      "--slots", given->slots,
      "page plane (C, M, Y, K = 0..3) that feeds each of the 8 colour slots, - for none; by "
      "default each its own, as far as the page has them");
  app->add_flag("--partial", options->partial,
                "print the inks that the machine has a nozzle row for, and leave others out");
  app->add_option("-s,--settings", options->settingsFile,
                  "the printer's settings, a TOML file (see samples/printer.toml)");
  app->add_option("-o,--output", options->picture,
                  "picture of the printed paper, PNG; page n > 1 adds -n to the name")
      ->check(CheckPictureName);
  app->add_option("--dpi", options->pictureDpi,
                  "pixels per inch of the picture; by default it is at most 1600 pixels wide")
      ->check(CLI::Range(1, 720));
  app->add_option("--log-dir", options->logFolder, "folder for the driver's job logs");
  app->add_flag("--virtual-time", options->virtualTime,
                "do not wait for the printer's real time; the driver's texts are then English, and "
                "its log is of 2024-02-28");
  app->add_option("--seed", given->seed, "seed of the scheduling on virtual time")
      ->type_name("NUMBER")
      ->capture_default_str();
  app->add_flag("--verify,!--no-verify", options->verify,
                "compare paper and page cell by cell (default)");
  app->add_option("--quirk", given->quirks, "make the printer misbehave; may be repeated")
      ->allow_extra_args(false);
}

void Complete(const Given& given, Options* options) {
  std::string error;
  if (!ParseSlots(given.slots, &options->slots, &error) ||
      !ParseSeed(given.seed, &options->seed, &error) ||
      !ParseQuirks(given.quirks, &options->quirks, &error)) {
    throw CLI::ValidationError(error);
  }
  options->lineApi = given.api == "line";
  options->slotsNamed = given.slotsOption->count() != 0;
}

}  // namespace

std::optional<Options> ParseOptions(int argc, const char* const* argv, int* exitCode) {
  Options options;
  Given given;
  CLI::App app(kDescription, "print-page");
  app.footer(kFooter);
  app.failure_message([](const CLI::App* self, const CLI::Error& error) {
    return "print-page: " + CLI::FailureMessage::simple(self, error);
  });
  AddOptions(&app, &options, &given);
  try {
    app.parse(argc, argv);
    Complete(given, &options);
  } catch (const CLI::Error& error) {
    *exitCode = app.exit(error) == 0 ? 0 : 2;
    if (!std::cout.flush()) {
      std::cerr << "print-page: cannot write to standard output\n";
      *exitCode = 1;
    }
    return std::nullopt;
  }
  std::string error;
  for (std::string* path :
       {&options.input, &options.settingsFile, &options.picture, &options.logFolder}) {
    if (MakeAbsolute(path, &error)) continue;
    std::cerr << "print-page: " << error << "\n";
    *exitCode = 1;
    return std::nullopt;
  }
  return options;
}

}  // namespace qrn::tool
