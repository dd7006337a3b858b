// The printer's settings from a TOML file; samples/printer.toml documents every key.
#ifndef QRN_TOOLS_PRINT_PAGE_SETTINGS_H_
#define QRN_TOOLS_PRINT_PAGE_SETTINGS_H_

#include <string>

#include "sim/machine/machine.h"

namespace qrn::tool {

// Changes what the file names in *machine. False, and a one-line reason that names the file and the
// key, when it cannot be read, holds a key that is not known, or a value out of range.
bool LoadSettings(const std::string& path, sim::Machine* machine, std::string* error);

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_SETTINGS_H_
