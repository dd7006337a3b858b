// What must not outlive the program: its temporary folders and the programs it runs. Destructors
// see to that, except when a signal ends the program.
#ifndef QRN_TOOLS_PRINT_PAGE_LEFTOVERS_H_
#define QRN_TOOLS_PRINT_PAGE_LEFTOVERS_H_

#include <sys/types.h>

#include <filesystem>
#include <mutex>

namespace qrn::tool {

// While the lock lives, no signal ends the program: what is made is noted before one can.
[[nodiscard]] std::unique_lock<std::mutex> HoldOffSignals();
// Requires: HoldOffSignals
void NoteFolder(const std::filesystem::path& folder);
void NoteChild(pid_t child);

void ForgetFolder(const std::filesystem::path& folder);
void ForgetChild(pid_t child);

// From now on an interrupt, a termination request or a hang-up first ends the noted children and
// removes the noted folders; then it ends the program as it would have. Call it before any other
// thread is started: signals are taken by one thread, all others block them.
void CleanUpOnSignals();

}  // namespace qrn::tool

#endif  // QRN_TOOLS_PRINT_PAGE_LEFTOVERS_H_
