// Runs another program and waits for it, without a shell.
#ifndef QRN_TOOLS_PRINT_PAGE_CHILD_PROCESS_H_
#define QRN_TOOLS_PRINT_PAGE_CHILD_PROCESS_H_

#include <string>
#include <vector>

namespace qrn::tool {

// False when it could not be started or did not end with 0; *error is then the last line that it
// wrote to its standard error, or says that it is not installed. arguments[0] is looked up in PATH.
bool RunProgram(const std::vector<std::string>& arguments, std::string* error);

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_CHILD_PROCESS_H_
