// The command line of print-page.
#ifndef QRN_TOOLS_PRINT_PAGE_OPTIONS_H_
#define QRN_TOOLS_PRINT_PAGE_OPTIONS_H_

#include <cstdint>
#include <optional>
#include <string>

#include "print_page/page.h"
#include "sim/quirks/quirks.h"

namespace qrn::tool {

struct Options {
  std::string input;
  std::uint32_t resolution = 1440;
  bool lineApi = false;
  SlotMap slots{0, 1, 2, 3, 4, 5, 6, 7};
  bool slotsNamed = false;       // by the user, who then means planes that the page has
  std::string settingsFile;      // "" = a machine as it leaves the factory
  std::string picture;           // "" = none
  std::uint32_t pictureDpi = 0;  // 0 = as many as fit into its usual width
  std::string logFolder;         // "" = no job log
  std::uint64_t seed = 1;
  bool virtualTime = false;
  bool verify = true;
  bool partial = false;  // print what the machine has a nozzle row for, though the page has more
  sim::QuirkScript quirks;
};

// The options, or the exit code of a run that ends here (help, or a mistake that was reported on
// standard error). File names are absolute afterwards, except "-".
std::optional<Options> ParseOptions(int argc, const char* const* argv, int* exitCode);

// "0,1,2,3,-,-,-,3": the plane of each slot, "-" = blank, missing ones blank. False, with a reason,
// on anything else and when every slot is blank.
bool ParseSlots(const std::string& text, SlotMap* slots, std::string* error);

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_OPTIONS_H_
